# Installs the library from its build tree into a temporary prefix, then
# configures, builds and runs a small consumer project against that prefix
# with find_package(AlgoLogic CONFIG REQUIRED), as an integrator would.

foreach(var ALGOLOGIC_BINARY_DIR CONSUMER_SOURCE_DIR WORK_DIR CMAKE_GENERATOR)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "${var} is not set")
    endif()
endforeach()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run_step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "step failed (${result}): ${ARGN}")
    endif()
endfunction()

run_step(${CMAKE_COMMAND} --install ${ALGOLOGIC_BINARY_DIR} --prefix ${prefix})
run_step(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${WORK_DIR}/build
         -G ${CMAKE_GENERATOR} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release
         "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
run_step(${CMAKE_COMMAND} --build ${WORK_DIR}/build)

find_program(consumer algologic_consumer PATHS ${WORK_DIR}/build NO_DEFAULT_PATH)
if(NOT consumer)
    message(FATAL_ERROR "the consumer executable was not built")
endif()
run_step(${consumer})
