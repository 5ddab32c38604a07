# SPDX-License-Identifier: Apache-2.0

# Fails if a pattern in the ALONE filter of a test program matches none of its tests: after a rename, the test that the
# pattern meant would share a process with others, and nothing else would say so.
#   cmake -DPROGRAM=... -DFILTER=... -P alone_filter.cmake
cmake_minimum_required(VERSION 3.21)

string(REPLACE ":" ";" patterns "${FILTER}")
if(NOT patterns)
  message(FATAL_ERROR "the filter is empty")
endif()
foreach(pattern IN LISTS patterns)
  execute_process(COMMAND ${PROGRAM} --gtest_list_tests --gtest_filter=${pattern}
    OUTPUT_VARIABLE tests ERROR_VARIABLE error RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "listing the tests of ${pattern} ended with ${result}\n${tests}${error}")
  endif()
  # A suite begins its line; each of its tests is indented.
  if(NOT "${tests}" MATCHES "\n  [A-Za-z]")
    message(FATAL_ERROR "the pattern ${pattern} matches no test; write the new name in the ALONE filter")
  endif()
endforeach()
