# Installs the build into a fresh prefix, configures and builds the consumer
# project against it, and runs its program on the sample scene.
set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE}/tests/package -B ${WORK}/consumer -G Ninja
                        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${FLAGS}
                        -DCMAKE_EXE_LINKER_FLAGS=${FLAGS}
                COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/consumer COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
execute_process(COMMAND ${WORK}/consumer/readme_example ${SOURCE}/samples/scene.dae ${WORK}/copy.dae
                OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "readme_example exited with ${result}")
endif()
if(NOT output STREQUAL "cube: 1 primitives\npyramid: 1 primitives\nground: 1 primitives\n")
  message(FATAL_ERROR "unexpected output:\n${output}")
endif()
message(STATUS "installed package found, example built and run")
