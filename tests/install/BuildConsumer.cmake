# Builds and runs the consumer: against the installed package (WAY=package), which is then the only copy it can
# find, or with the source tree inside its own (WAY=subdirectory).
file(REMOVE_RECURSE "${WORK_DIR}")

if(WAY STREQUAL "package")
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix --config ${CONFIG}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    set(where -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix)
    foreach(internal IN ITEMS KvPlanCodec.h KvRequestFrame.h)
        file(GLOB_RECURSE found "${WORK_DIR}/prefix/${internal}")
        if(found)
            message(FATAL_ERROR "an internal header was installed: ${found}")
        endif()
    endforeach()
else()
    set(where -DKVPLANDATA_SOURCE_DIR=${SOURCE_DIR})
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
        -DCMAKE_BUILD_TYPE=${CONFIG} -DCMAKE_CXX_COMPILER=${CXX} ${where}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK_DIR}/build/consumer COMMAND_ERROR_IS_FATAL ANY)
