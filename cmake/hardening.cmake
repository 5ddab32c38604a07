# SPDX-License-Identifier: Apache-2.0

# Makes a memory error in a shipped program or library hard to exploit. compiler.cmake must be included first;
# tests/mqi/finished_files.cmake checks the result in the finished files.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang)$" OR MSVC OR MQAMOD_FUZZ)
  return()
endif()

target_compile_options(project_options INTERFACE -fstack-protector-strong)
if(MINGW)
  target_link_options(project_options INTERFACE
    LINKER:--dynamicbase LINKER:--high-entropy-va LINKER:--nxcompat)
  add_library(stack_protector STATIC ${CMAKE_SOURCE_DIR}/src/platform/stack_protector_windows.cpp)
  target_link_libraries(stack_protector PRIVATE test_options)
  target_link_libraries(project_options INTERFACE stack_protector)
  # There is no _FORTIFY_SOURCE here: the headers of mingw-w64 10 do not know it.
else()
  target_link_options(project_options INTERFACE
    LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  # _FORTIFY_SOURCE needs optimisation, and it hides from the sanitizers what it catches itself.
  if(NOT MQAMOD_SANITIZE AND NOT MQAMOD_COVERAGE)
    target_compile_options(project_options INTERFACE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()
endif()
