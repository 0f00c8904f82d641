# A layer is a folder with include/ and src/, built as objects. It sees the headers of the layers
# that it names and no others, so that an include in the wrong direction does not compile.
function(halcyr_add_layer name folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/src/*.cpp)
  if(NOT sources) # a layer may consist of headers alone
    set(sources ${CMAKE_CURRENT_BINARY_DIR}/empty_${name}.cpp)
    file(CONFIGURE OUTPUT ${sources} CONTENT "")
  endif()
  add_library(halcyr_${name} OBJECT ${sources})
  target_include_directories(halcyr_${name}
    PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/include
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/src)
  target_link_libraries(halcyr_${name} PRIVATE halcyr_flags)
  halcyr_precompile(halcyr_${name} <algorithm> <cmath> <memory> <string> <vector>)
  set(HALCYR_${name}_INCLUDE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/include PARENT_SCOPE)
  foreach(lower IN LISTS ARGN)
    target_include_directories(halcyr_${name} PUBLIC ${HALCYR_${lower}_INCLUDE})
  endforeach()
endfunction()

# The one shared library, made of the objects of all layers.
function(halcyr_add_library)
  find_package(Threads REQUIRED)
  add_library(halcyr SHARED)
  add_library(Halcyr::halcyr ALIAS halcyr)
  foreach(layer IN LISTS ARGN)
    target_sources(halcyr PRIVATE $<TARGET_OBJECTS:halcyr_${layer}>)
    target_include_directories(halcyr PUBLIC $<BUILD_INTERFACE:${HALCYR_${layer}_INCLUDE}>)
  endforeach()
  target_include_directories(halcyr PUBLIC $<INSTALL_INTERFACE:include>)
  target_link_libraries(halcyr PRIVATE Threads::Threads $<BUILD_INTERFACE:halcyr_flags>)
  target_compile_features(halcyr PUBLIC cxx_std_20)
  set_target_properties(halcyr PROPERTIES
    LINKER_LANGUAGE CXX VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

# A module stands above the library, as a shared library of its own in a folder of its own.
function(halcyr_add_module name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/src/*.cpp)
  add_library(halcyr_${name} SHARED ${sources})
  add_library(Halcyr::${name} ALIAS halcyr_${name})
  target_include_directories(halcyr_${name} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/${name}/include> $<INSTALL_INTERFACE:include>)
  target_link_libraries(halcyr_${name} PUBLIC halcyr PRIVATE $<BUILD_INTERFACE:halcyr_flags>)
  set_target_properties(halcyr_${name} PROPERTIES
    EXPORT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
