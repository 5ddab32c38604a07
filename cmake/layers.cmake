# SPDX-License-Identifier: Apache-2.0

# A layer is a directory of sources that is built as one static library and sees the headers of the layers in USES and
# no others. Each layer has an include directory of its own in the build tree that contains only a link to its source
# directory, so an include that points the wrong way does not compile.

# mqamod_layer(name SOURCES files... USES layers...) adds a directory of src/. Its headers are included as
# "name/file.h".
function(mqamod_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;USES" ${ARGN})
  set(include_dir ${CMAKE_BINARY_DIR}/layers/${name})
  file(MAKE_DIRECTORY ${include_dir})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${name} ${include_dir}/${name} SYMBOLIC)
  list(TRANSFORM LAYER_SOURCES PREPEND ${name}/)
  add_library(mqamod_${name} STATIC ${LAYER_SOURCES})
  target_include_directories(mqamod_${name} PUBLIC ${include_dir})
  target_link_libraries(mqamod_${name} PRIVATE project_options module_options)
  foreach(used IN LISTS LAYER_USES)
    target_link_libraries(mqamod_${name} PUBLIC mqamod_${used})
  endforeach()
endfunction()

# Compiles the headers of the standard library that the programs include most once for all layers of the programs.
# scripts/lint and scripts/nightly do without them, which finds an include that is missing.
function(mqamod_app_headers)
  find_package(Threads REQUIRED)
  file(WRITE ${CMAKE_BINARY_DIR}/app_headers.cpp "// Makes the headers that the layers of the programs share.\n")
  add_library(app_headers OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/app_headers.cpp)
  target_link_libraries(app_headers PRIVATE project_options Threads::Threads)
  target_precompile_headers(app_headers PRIVATE
    <algorithm> <array> <charconv> <chrono> <cstdint> <cstring> <filesystem> <fstream> <functional> <iostream> <map>
    <memory> <optional> <sstream> <string> <string_view> <vector>)
endfunction()

# app_layer(app name [OBJECT] [MERGE] [SOURCES files...] [USES layers...] [LIBS targets...]): a layer of a program, the
# directory apps/APP/NAME, called from apps/APP/CMakeLists.txt. Includes name it as "APP/NAME/header.h". It sees the
# headers of the layers of its own app in USES and of the targets in LIBS, and of what those see. The target is
# APP_NAME: a static library, with OBJECT an object library, without SOURCES an interface library of headers. With MERGE
# the sources are compiled as one, because a header that all of them include takes longer to compile than they do.
function(app_layer app name)
  cmake_parse_arguments(LAYER "OBJECT;MERGE" "" "SOURCES;USES;LIBS" ${ARGN})
  set(include_dir ${CMAKE_BINARY_DIR}/layers/${app}_${name})
  file(MAKE_DIRECTORY ${include_dir}/${app})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${name} ${include_dir}/${app}/${name} SYMBOLIC)
  set(target ${app}_${name})
  list(TRANSFORM LAYER_USES PREPEND ${app}_)
  if(NOT LAYER_SOURCES)
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${include_dir})
    target_link_libraries(${target} INTERFACE ${LAYER_USES} ${LAYER_LIBS})
    return()
  endif()
  list(TRANSFORM LAYER_SOURCES PREPEND ${name}/)
  if(LAYER_OBJECT)
    add_library(${target} OBJECT ${LAYER_SOURCES})
  else()
    add_library(${target} STATIC ${LAYER_SOURCES})
  endif()
  target_include_directories(${target} PUBLIC ${include_dir})
  target_link_libraries(${target} PRIVATE project_options PUBLIC ${LAYER_USES} ${LAYER_LIBS})
  target_precompile_headers(${target} REUSE_FROM app_headers)
  if(LAYER_MERGE AND MQAMOD_MERGE_SOURCES)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
  endif()
endfunction()
