# SPDX-License-Identifier: Apache-2.0

# Finds the packages that are not needed for everything and reports what a missing one leaves out.
#   MQAMOD_HAVE_SQLITE   whether mqam gets SQLite targets
#   MQAMOD_BUILD_TESTS   whether tests and benchmarks are built (from MQAMOD_TESTS)
#   MQAMOD_GTEST_SOURCE  the directory of GoogleTest's sources, if MQAMOD_BUILD_TESTS is on

find_package(Threads REQUIRED)

# The cross build has no SQLite.
set(MQAMOD_HAVE_SQLITE OFF)
if(NOT WIN32 AND NOT MQAMOD_FUZZ)
  find_package(SQLite3 QUIET)
  set(MQAMOD_HAVE_SQLITE ${SQLite3_FOUND})
  if(NOT SQLite3_FOUND)
    message(STATUS "Left out: SQLite targets of mqam (Debian package libsqlite3-dev is not installed)")
  endif()
endif()

# The tests need all of their packages: a suite with silent gaps would prove less than it seems to.
set(missing)
if(NOT MQAMOD_FUZZ AND NOT MQAMOD_TESTS STREQUAL "OFF")
  # GoogleTest is compiled from source, so that it exists for Windows and fits the sanitizers.
  find_path(MQAMOD_GTEST_SOURCE googlemock/CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH
    NO_CMAKE_FIND_ROOT_PATH DOC "the sources of GoogleTest")
  if(NOT MQAMOD_GTEST_SOURCE)
    list(APPEND missing "GoogleTest's sources (Debian package googletest, or -DMQAMOD_GTEST_SOURCE=DIRECTORY)")
  endif()

  set(IBMMQ_DIR ${CMAKE_SOURCE_DIR}/tests/spoolmq/node/node_modules/ibmmq CACHE PATH
    "the npm package ibmmq, which carries IBM's MQI headers")
  if(NOT EXISTS ${IBMMQ_DIR}/src/cmqxc.h)
    list(APPEND missing "IBM's MQI headers (npm package ibmmq: scripts/setup, or -DIBMMQ_DIR=DIRECTORY)")
  endif()

  find_package(Python3 QUIET COMPONENTS Interpreter)
  if(NOT Python3_FOUND)
    list(APPEND missing "Python 3 (Debian package python3)")
  endif()
  if(NOT WIN32 AND NOT MQAMOD_HAVE_SQLITE)
    list(APPEND missing "SQLite (Debian package libsqlite3-dev)")
  endif()
  if(NOT WIN32 AND NOT MQAMOD_SANITIZE)
    find_package(benchmark QUIET)
    if(NOT benchmark_FOUND)
      list(APPEND missing "Google Benchmark (Debian package libbenchmark-dev)")
    endif()
  endif()
endif()

set(MQAMOD_BUILD_TESTS ON)
if(MQAMOD_FUZZ OR NOT MQAMOD_TESTS)
  set(MQAMOD_BUILD_TESTS OFF)
elseif(missing)
  list(JOIN missing "\n     " missing)
  if(NOT MQAMOD_TESTS STREQUAL "AUTO")
    message(FATAL_ERROR "MQAMOD_TESTS is ${MQAMOD_TESTS}, but the tests need packages that are not installed:\n"
      "     ${missing}\nscripts/setup installs them.")
  endif()
  set(MQAMOD_BUILD_TESTS OFF)
  message(STATUS "Left out: tests and benchmarks. scripts/setup installs what they need:\n     ${missing}")
elseif(MQAMOD_TESTS STREQUAL "AUTO" AND DEFINED BUILD_TESTING AND NOT BUILD_TESTING)
  set(MQAMOD_BUILD_TESTS OFF)
endif()
