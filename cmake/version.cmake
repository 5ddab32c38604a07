# SPDX-License-Identifier: Apache-2.0

# Puts versions into the finished files: a header for the programs and a version resource for Windows.
#
# There are three version strings. The product's is PROJECT_VERSION. The other two are the module's own, in
# src/diag/module_id.h: the module version goes into the banner and the help, the code version into the banner and
# the answer to the ID request. Hosts know both, so they are fixed, and they differ by design. Their first two numbers
# are the level of the interface, which the product's version must have as well.

configure_file(${CMAKE_CURRENT_LIST_DIR}/product_version.h.in ${CMAKE_BINARY_DIR}/generated/product_version.h @ONLY)
# Targets that see the headers that CMake writes link this.
add_library(generated_headers INTERFACE)
target_include_directories(generated_headers INTERFACE ${CMAKE_BINARY_DIR}/generated)

# mqamod_read_module_version(variable name) reads one of the version strings of src/diag/module_id.h.
function(mqamod_read_module_version variable name)
  set(header ${CMAKE_SOURCE_DIR}/src/diag/module_id.h)
  set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(STRINGS ${header} line REGEX "${name}\\[\\] = \"[0-9.]+\"")
  string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" version "${line}")
  if(NOT version MATCHES "^[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+$")
    message(FATAL_ERROR "${header}: ${name} was not found, or it is not four numbers: \"${line}\"")
  endif()
  if(NOT version MATCHES "^${PROJECT_VERSION_MAJOR}\\.${PROJECT_VERSION_MINOR}\\.")
    message(FATAL_ERROR "${name} is ${version}, which is another interface level than the product's ${PROJECT_VERSION}")
  endif()
  set(${variable} ${version} PARENT_SCOPE)
endfunction()
mqamod_read_module_version(MQAMOD_MODULE_VERSION kModuleVersion)
mqamod_read_module_version(MQAMOD_CODE_VERSION kCodeVersion)

# mqamod_resource_numbers(variable version) turns a version into the form of a resource: "16.20.00.04" into "16,20,0,4".
function(mqamod_resource_numbers variable version)
  string(REPLACE "." ";" numbers ${version})
  list(APPEND numbers 0 0 0)
  list(SUBLIST numbers 0 4 numbers)
  # A leading zero would make a number octal.
  list(TRANSFORM numbers REPLACE "^0+([0-9])" "\\1")
  list(JOIN numbers "," numbers)
  set(${variable} ${numbers} PARENT_SCOPE)
endfunction()

# mqamod_version_resource(target description [FILE_VERSION version]) gives a program or library for Windows a version
# resource. Its file version is the product's if none is given.
function(mqamod_version_resource target RC_DESCRIPTION)
  if(NOT WIN32)
    return()
  endif()
  cmake_parse_arguments(RC "" "FILE_VERSION" "" ${ARGN})
  if(NOT RC_FILE_VERSION)
    set(RC_FILE_VERSION ${PROJECT_VERSION})
  endif()
  get_target_property(type ${target} TYPE)
  get_target_property(RC_NAME ${target} OUTPUT_NAME)
  if(NOT RC_NAME)
    set(RC_NAME ${target})
  endif()
  if(type STREQUAL "EXECUTABLE")
    set(RC_FILE_TYPE VFT_APP)
    set(RC_FILE_NAME ${RC_NAME}.exe)
  else()
    set(RC_FILE_TYPE VFT_DLL)
    set(RC_FILE_NAME ${RC_NAME}.dll)
  endif()
  mqamod_resource_numbers(RC_FILE_NUMBERS ${RC_FILE_VERSION})
  mqamod_resource_numbers(RC_PRODUCT_NUMBERS ${PROJECT_VERSION})
  configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_BINARY_DIR}/generated/${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_BINARY_DIR}/generated/${target}.rc)
endfunction()
