# The flags of all our own code. Results must be the same bits on every run, so the compiler may
# neither fuse multiply and add by itself nor reorder sums.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Hits do not depend on the folder of the checkout.
find_program(HALCYR_CCACHE ccache)
if(HALCYR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros ${HALCYR_CCACHE})
endif()

add_library(halcyr_flags INTERFACE)
target_compile_options(halcyr_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -ffp-contract=off)
if(HALCYR_SANITIZE)
  target_compile_options(halcyr_flags INTERFACE
    -fsanitize=${HALCYR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(halcyr_flags INTERFACE -fsanitize=${HALCYR_SANITIZE})
endif()

# The tests' own arithmetic is not under test: checks for undefined behaviour in it, most of them in
# the expression templates of the oracles, would double the time to compile.
add_library(halcyr_test_flags INTERFACE)
if(HALCYR_SANITIZE MATCHES undefined)
  target_compile_options(halcyr_test_flags INTERFACE -fno-sanitize=undefined)
endif()

# Sanitizer builds compile the standard headers once a target; the plain build stays without, so that
# each source still names what it includes.
function(halcyr_precompile target)
  if(HALCYR_SANITIZE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
