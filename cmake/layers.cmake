# A layer is a folder of src/ built as one static library that sees the headers of the layers it USES and no
# others: every layer has an include directory of its own that holds nothing but a link to its folder, so an
# include that points the wrong way does not compile.
function(mqamod_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;USES" ${ARGN})
  set(include_dir ${CMAKE_BINARY_DIR}/layers/${name})
  file(MAKE_DIRECTORY ${include_dir})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${name} ${include_dir}/${name} SYMBOLIC)
  list(TRANSFORM LAYER_SOURCES PREPEND ${name}/)
  add_library(mqamod_${name} STATIC ${LAYER_SOURCES})
  target_include_directories(mqamod_${name} PUBLIC ${include_dir})
  target_compile_options(mqamod_${name} PRIVATE -fno-exceptions -fno-rtti)
  target_link_libraries(mqamod_${name} PRIVATE project_options)
  foreach(used IN LISTS LAYER_USES)
    target_link_libraries(mqamod_${name} PUBLIC mqamod_${used})
  endforeach()
endfunction()
