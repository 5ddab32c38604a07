# SPDX-License-Identifier: Apache-2.0

# mqamod_split_debug_symbols(target) moves the debug symbols of a finished file into a file of its own next to it,
# FILE.debug, where debuggers find it by the link that stays in the file. Only optimised builds are shipped, so only
# their files are split.
function(mqamod_split_debug_symbols target)
  if(NOT CMAKE_OBJCOPY OR NOT CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo" OR MQAMOD_SANITIZE OR MQAMOD_COVERAGE
     OR MQAMOD_FUZZ)
    return()
  endif()
  set(file $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-unneeded --add-gnu-debuglink=${file}.debug ${file}
    VERBATIM)
  set_property(GLOBAL APPEND PROPERTY MQAMOD_SPLIT_TARGETS ${target})
endfunction()
