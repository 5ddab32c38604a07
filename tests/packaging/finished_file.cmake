# SPDX-License-Identifier: Apache-2.0

# Reads the headers of a finished program or library and checks what makes a memory error hard to exploit, and on
# Windows its version resource.
#   cmake -DOBJDUMP=... -DFILE=... -DPRODUCT_VERSION=... -P finished_file.cmake
cmake_minimum_required(VERSION 3.21)

function(read_tables variable)
  execute_process(COMMAND ${OBJDUMP} ${ARGN} ${FILE} OUTPUT_VARIABLE tables RESULT_VARIABLE failed)
  if(failed OR NOT tables)
    message(FATAL_ERROR "${OBJDUMP} ${ARGN} cannot read ${FILE}")
  endif()
  set(${variable} "${tables}" PARENT_SCOPE)
endfunction()

function(require tables pattern meaning)
  if(NOT tables MATCHES "${pattern}")
    message(SEND_ERROR "${FILE}: ${meaning}")
  endif()
endfunction()

read_tables(headers -p)
read_tables(sections -h)

if(FILE MATCHES "\\.(dll|exe)$")
  require("${headers}" "\n[ \t]+HIGH_ENTROPY_VA" "no high-entropy address space layout randomisation")
  require("${headers}" "\n[ \t]+DYNAMIC_BASE" "no address space layout randomisation")
  require("${headers}" "\n[ \t]+NX_COMPAT" "data may be executed")
  require("${headers}" "Base Relocation" "no relocations, so it cannot be moved in memory")
  # A section has two lines: its name and place, then its flags. Code must be read-only.
  string(REGEX MATCHALL "\n +[0-9]+ [^\n]*\n[^\n]*CODE[^\n]*" code_sections "${sections}")
  if(NOT code_sections)
    message(SEND_ERROR "${FILE}: the table of sections was not understood")
  endif()
  foreach(section IN LISTS code_sections)
    require("${section}" "READONLY" "a section can be written and executed: ${section}")
  endforeach()

  # The resource contains its texts in UTF-16.
  string(HEX "${PRODUCT_VERSION}" expected)
  string(REGEX REPLACE "(..)" "\\100" expected "${expected}")
  string(HEX "ProductVersion" name)
  string(REGEX REPLACE "(..)" "\\100" name "${name}")
  file(READ ${FILE} contents HEX)
  # The name ends with a NUL and is padded to a multiple of four bytes.
  if(NOT contents MATCHES "${name}(0000)+${expected}0000")
    message(SEND_ERROR "${FILE}: no version resource with product version ${PRODUCT_VERSION}")
  endif()
else()
  require("${headers}" "\n +RELRO " "no RELRO segment")
  require("${headers}" "\n +FLAGS[ _1]*0x[0-9a-f]+" "the dynamic section has no flags")
  read_tables(symbols -T)
  require("${symbols}" "__stack_chk_fail" "no function has a stack protector")
  require("${symbols}" "__[a-z_]+_chk\n" "no call is checked by _FORTIFY_SOURCE")
  # DF_BIND_NOW is 8 in FLAGS, DF_1_NOW is 1 in FLAGS_1.
  if(NOT headers MATCHES "\n +FLAGS +0x[0-9a-f]*[89a-f]\n" OR
     NOT headers MATCHES "\n +FLAGS_1 +0x[0-9a-f]*[13579bdf]\n")
    message(SEND_ERROR "${FILE}: not bound to its libraries when it is loaded (BIND_NOW)")
  endif()
  # A segment has two lines: its type and place, then "... flags rw-".
  string(REGEX MATCHALL "\n +(LOAD|STACK) [^\n]*\n[^\n]*flags [r-][w-][x-]" segments "${headers}")
  list(LENGTH segments count)
  if(count LESS 3)
    message(SEND_ERROR "${FILE}: the table of segments was not understood")
  endif()
  foreach(segment IN LISTS segments)
    if(segment MATCHES "flags .wx" OR segment MATCHES "STACK.*flags ..x")
      message(SEND_ERROR "${FILE}: a segment can be written and executed: ${segment}")
    endif()
  endforeach()
endif()
