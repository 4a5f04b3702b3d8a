# One set of flags for every target. The same input must give the same bytes from any build, so
# contraction into fused multiply-adds is off and nothing here lets the compiler reorder floats.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O2")

add_library(quorel_options INTERFACE)
target_compile_options(quorel_options INTERFACE
  -ffp-contract=off -fno-math-errno -fno-trapping-math
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
target_include_directories(quorel_options INTERFACE ${CMAKE_SOURCE_DIR})
find_package(Threads REQUIRED)
target_link_libraries(quorel_options INTERFACE Threads::Threads)

if(QUOREL_SANITIZE)
  # g++ sees uninitialized values in the code that its sanitizers add; the sanitizers themselves see better.
  # Checks cost more than what the optimizer would save beyond its first level, and compile in half the time.
  set(CMAKE_CXX_FLAGS_RELEASE "-O1")
  target_compile_options(quorel_options INTERFACE
    -fsanitize=${QUOREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(quorel_options INTERFACE -fsanitize=${QUOREL_SANITIZE})
endif()

# quorel_floor(NAME files...): one static library a floor; what it may include it links.
function(quorel_floor name)
  cmake_parse_arguments(FLOOR "" "" "SOURCES;USES" ${ARGN})
  add_library(quorel_${name} STATIC ${FLOOR_SOURCES})
  target_link_libraries(quorel_${name} PUBLIC quorel_options)
  foreach(below ${FLOOR_USES})
    target_link_libraries(quorel_${name} PUBLIC quorel_${below})
  endforeach()
endfunction()
