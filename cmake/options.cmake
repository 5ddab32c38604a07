# SPDX-License-Identifier: Apache-2.0

# Declares what a person who configures the build may choose. The presets in CMakePresets.json set most of these.

set(MQAMOD_SANITIZE OFF CACHE STRING
  "sanitizers to build with: OFF, address (with undefined behaviour and the module's invariants), or thread")
set_property(CACHE MQAMOD_SANITIZE PROPERTY STRINGS OFF address thread)
if(NOT MQAMOD_SANITIZE MATCHES "^(OFF|ON|address|thread)$")
  message(FATAL_ERROR "MQAMOD_SANITIZE is \"${MQAMOD_SANITIZE}\"; it takes OFF, address or thread")
endif()

option(MQAMOD_COVERAGE "compile without optimisation and count the branches that are taken" OFF)
option(MQAMOD_MERGE_SOURCES "compile the sources of some layers as one, which hides a missing include" ON)
option(MQAMOD_FUZZ "build only the fuzzers: the module with libFuzzer's instrumentation and sanitizers (clang)" OFF)
option(MQAMOD_WARNINGS_AS_ERRORS "stop at a compiler warning; scripts/test turns this on" OFF)

set(MQAMOD_TESTS AUTO CACHE STRING
  "build tests and benchmarks: ON (their packages must be installed), OFF, or AUTO (if they are installed)")
set_property(CACHE MQAMOD_TESTS PROPERTY STRINGS AUTO ON OFF)
