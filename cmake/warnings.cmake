# One place for how everything is compiled: language level, warnings as errors, sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# What is tested links project_options, tests link test_options. A test is compiled without optimisation and, where the rest
# is sanitized, without sanitizers: what it costs is its compilation. The memory that it lends to the module is guarded all
# the same, by the sanitizers' allocator and the module's own instrumentation.
add_library(test_options INTERFACE)
add_library(project_options INTERFACE)
target_link_libraries(project_options INTERFACE test_options)
target_compile_options(test_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fvisibility=hidden)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlapping copies in every operator+(const char*, std::string&&); the sanitizer build sees real ones.
  target_compile_options(test_options INTERFACE -Wno-restrict)
endif()
if(WIN32)
  # "%ld", "%zu" and "%lld" mean on Windows what they mean on Linux.
  target_compile_definitions(test_options INTERFACE __USE_MINGW_ANSI_STDIO=1)
  add_link_options(-static)
endif()
if(MQAMOD_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(project_options INTERFACE MQAMOD_CHECK_INVARIANTS)
  add_link_options(-fsanitize=address,undefined)
endif()
if(MQAMOD_COVERAGE)
  target_compile_options(project_options INTERFACE --coverage -O0)
  add_link_options(--coverage)
endif()
if(MQAMOD_FUZZ)
  target_compile_options(project_options INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(project_options INTERFACE MQAMOD_CHECK_INVARIANTS)
endif()
