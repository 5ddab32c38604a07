# SPDX-License-Identifier: Apache-2.0

# Runs smashed_stack twice: the first time it stays within its array and returns, the second time it writes past the end
# and must not return.
#   cmake -DPROGRAM=... -P smashed_stack.cmake
cmake_minimum_required(VERSION 3.21)

execute_process(COMMAND ${PROGRAM} 16 OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT output MATCHES "^returned after 16 bytes")
  message(FATAL_ERROR "within the array: it ended with ${result}\n${output}${error}")
endif()

execute_process(COMMAND ${PROGRAM} 64 OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE result)
if(result EQUAL 0 OR output MATCHES "returned" OR NOT error MATCHES "stack smashing detected")
  message(FATAL_ERROR "past the array: it ended with ${result}\n${output}${error}")
endif()
