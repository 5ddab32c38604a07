# SPDX-License-Identifier: Apache-2.0

# Defines how everything is compiled and linked. A target gets its flags by linking one of these interface targets:
#   project_options  the programs and libraries that we ship: warnings, hardening, sanitizers, coverage
#   module_options   what the access module adds to them: no exceptions, no run-time type information
#   test_options     tests and their doubles: warnings only
# Tests are compiled without optimisation and without sanitizers, because most of what they cost is their compilation.
# They are linked with the sanitizers' run-time library, so memory that a test lends to the module is still guarded, by
# the sanitizers' allocator and the module's own instrumentation.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Without this, executables are compiled as position-independent code but may be linked at a fixed address.
include(CheckPIESupported)
check_pie_supported()

add_library(test_options INTERFACE)
add_library(project_options INTERFACE)
add_library(module_options INTERFACE)
target_link_libraries(project_options INTERFACE test_options)

if(CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang|AppleClang)$" AND NOT MSVC)
  target_compile_options(test_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -fvisibility=hidden $<$<BOOL:${MQAMOD_WARNINGS_AS_ERRORS}>:-Werror>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports overlapping copies in every operator+(const char*, std::string&&). The sanitizer build reports
    # real ones.
    target_compile_options(test_options INTERFACE -Wno-restrict)
  endif()
  target_compile_options(module_options INTERFACE -fno-exceptions -fno-rtti)
elseif(MSVC)
  message(WARNING "mqamod has only been built with GCC and Clang. The flags for MSVC are untried.")
  target_compile_options(test_options INTERFACE
    /W4 /permissive- /utf-8 /Zc:__cplusplus $<$<BOOL:${MQAMOD_WARNINGS_AS_ERRORS}>:/WX>)
  target_compile_definitions(test_options INTERFACE NOMINMAX _CRT_SECURE_NO_WARNINGS)
else()
  message(WARNING "mqamod has only been built with GCC and Clang. "
    "${CMAKE_CXX_COMPILER_ID} gets no warning, hardening or sanitizer flags.")
endif()

if(MINGW)
  # This makes "%ld", "%zu" and "%lld" mean on Windows what they mean on Linux.
  target_compile_definitions(test_options INTERFACE __USE_MINGW_ANSI_STDIO=1)
  target_link_options(test_options INTERFACE -static)
endif()

# The sanitizers' run-time library has to be linked into every program, so these link options are on test_options.
if(MQAMOD_SANITIZE STREQUAL "thread")
  # The tests start threads of their own, so they are instrumented as well.
  target_compile_options(test_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(test_options INTERFACE -fsanitize=thread)
elseif(MQAMOD_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(project_options INTERFACE MQAMOD_CHECK_INVARIANTS)
  target_link_options(test_options INTERFACE -fsanitize=address,undefined)
endif()
if(MQAMOD_COVERAGE)
  target_compile_options(project_options INTERFACE --coverage -O0)
  # Assertions would add branches that no test can take.
  target_compile_definitions(project_options INTERFACE MQAMOD_COVERAGE)
  target_link_options(test_options INTERFACE --coverage)
endif()
if(MQAMOD_FUZZ)
  target_compile_options(project_options INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(project_options INTERFACE MQAMOD_CHECK_INVARIANTS)
endif()
