# Installs the build into a folder of its own, then builds and runs a small outside project against
# it, once through find_package and once through pkg-config, and looks at what the library exports.
#   cmake -DBUILD=<build folder> -DSOURCE=<this folder> -DWORK=<scratch> -P run.cmake
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE}/consumer -B ${WORK}/consumer -DCMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer)

file(GLOB_RECURSE pc ${WORK}/prefix/halcyr.pc)
cmake_path(GET pc PARENT_PATH pcfolder)
set(ENV{PKG_CONFIG_PATH} ${pcfolder})
execute_process(COMMAND pkg-config --cflags --libs halcyr
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags)
run(c++ -std=c++20 ${SOURCE}/consumer/consumer.cpp ${flags} -o ${WORK}/consumer-pc)
cmake_path(GET pcfolder PARENT_PATH libfolder)
set(ENV{LD_LIBRARY_PATH} ${libfolder})
run(${WORK}/consumer-pc)

file(GLOB library ${libfolder}/libhalcyr.so)
execute_process(COMMAND readelf -d ${library} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
if(NOT dynamic MATCHES "soname: \\[libhalcyr\\.so\\.[0-9]+\\]")
  message(FATAL_ERROR "the soname carries no version:\n${dynamic}")
endif()
# Names that an application can call: our classes, the functions of the low layers and the solver's
# small classes. Type information of the standard library may be emitted too.
execute_process(COMMAND nm -D --defined-only -C ${library}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
set(ours 0)
foreach(symbol IN LISTS symbols)
  if(symbol MATCHES " [TDBRVWu] (.*)$")
    set(name "${CMAKE_MATCH_1}")
    if(name MATCHES "^(non-virtual thunk to |virtual thunk to |vtable for |typeinfo for |typeinfo name for |guard variable for )?(Hy::|Kit|Dyn|Dyns|Dync|Col|ls[VT]|body_|add_non_inertial|jacobi|[a-z_]*(solver|matrix|stepper|kiro|kitreal|lcp|jacobian|mass_matrix|box|hash|keller)|vbChol|bvbCholRRT|LCPMatrix|WorldStepper|StableStepper|Malloc|Update|TetraMassProp|buildInertiaTensor|calculateCRC32)")
      math(EXPR ours "${ours} + 1")
    elseif(NOT name MATCHES "^(non-virtual thunk to |vtable for |typeinfo for |typeinfo name for |void |bool |int |unsigned |auto )?.*(std::|__gnu_cxx::)" AND NOT name MATCHES "^(_init|_fini)$")
      list(APPEND strangers "${name}")
    endif()
  endif()
endforeach()
if(strangers)
  list(JOIN strangers "\n  " text)
  message(FATAL_ERROR "exported but not public:\n  ${text}")
endif()
if(ours LESS 100)
  message(FATAL_ERROR "only ${ours} public names are exported")
endif()
message(STATUS "${ours} public names exported")
