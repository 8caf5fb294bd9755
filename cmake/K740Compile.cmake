# Compiler settings that every target of the project shares, as the interface target k740_compile.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED GLOBAL) # a project that contains this one links it too

set(K740_SANITIZE "" CACHE STRING "Comma-separated sanitizers, such as address,undefined or thread")

add_library(k740_compile INTERFACE)
target_include_directories(k740_compile INTERFACE ${PROJECT_SOURCE_DIR})
target_link_libraries(k740_compile INTERFACE Threads::Threads)
target_compile_options(k740_compile INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 $<$<BOOL:${K740_WERROR}>:-Werror>
  -ffp-contract=off) # the resampler's results must not depend on fused multiply-add
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(k740_compile INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
endif()
if(K740_SANITIZE)
  # Applied to every target of the tree, the packages' own code included where it is compiled here.
  add_compile_options(-fsanitize=${K740_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${K740_SANITIZE})
endif()
