# Builds and runs the consumer: against the installed package (WAY=package), which is then the only copy it can
# find, with a compiler alone and what pkg-config says of the installed libraries (WAY=pkgconfig), or with the source
# tree inside its own (WAY=subdirectory).
file(REMOVE_RECURSE "${WORK_DIR}")

if(NOT WAY STREQUAL "subdirectory")
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

if(WAY STREQUAL "pkgconfig")
    # The tree is moved first: what pkg-config says has to come from where the files are now.
    file(RENAME "${WORK_DIR}/prefix" "${WORK_DIR}/moved")
    file(GLOB_RECURSE description "${WORK_DIR}/moved/KvPlanData.pc")
    get_filename_component(folder "${description}" DIRECTORY)
    get_filename_component(libraries "${folder}" DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} "${folder}")
    set(packages KvPlanData KvNetwork KvPublicFun KvSoftBase)
    execute_process(COMMAND pkg-config --cflags --libs ${packages}
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    foreach(package IN LISTS packages)
        execute_process(COMMAND pkg-config --modversion ${package}
            OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        if(NOT version STREQUAL VERSION)
            message(FATAL_ERROR "${package} says it is ${version}, not ${VERSION}")
        endif()
    endforeach()
    execute_process(COMMAND ${CXX} -std=c++17 ${CONSUMER_DIR}/main.cpp -o ${WORK_DIR}/consumer ${flags}
        COMMAND_ERROR_IS_FATAL ANY)
    set(ENV{LD_LIBRARY_PATH} "${libraries}")
    execute_process(COMMAND ${WORK_DIR}/consumer COMMAND_ERROR_IS_FATAL ANY)
    return()
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
        -DCMAKE_BUILD_TYPE=${CONFIG} -DCMAKE_CXX_COMPILER=${CXX} ${where}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK_DIR}/build/consumer COMMAND_ERROR_IS_FATAL ANY)

if(WAY STREQUAL "package")
    # What a person is to run has a manual page; programs of programs stay out of the way.
    file(GLOB programs RELATIVE "${WORK_DIR}/prefix/bin" "${WORK_DIR}/prefix/bin/*")
    foreach(program IN LISTS programs)
        file(GLOB page "${WORK_DIR}/prefix/share/man/man1/${program}.1*")
        if(NOT page)
            message(FATAL_ERROR "${program} is among the commands, without a manual page")
        endif()
    endforeach()
    # Works where it is, with the libraries of its own prefix.
    if(EXISTS "${WORK_DIR}/prefix/bin/planviewer")
        execute_process(COMMAND "${WORK_DIR}/prefix/${LIBEXEC}/planviewer/planviewer-model"
            RESULT_VARIABLE result ERROR_VARIABLE said)
        if(NOT said MATCHES "^usage: planviewer-model FILE\n")
            message(FATAL_ERROR "planviewer's reader of models ended with ${result} and said: ${said}")
        endif()
        # Takes the place of kvplan, which looks for it from its own folder.
        execute_process(COMMAND "${CMAKE_COMMAND}" -E env --unset=DISPLAY --unset=WAYLAND_DISPLAY
                --unset=QT_QPA_PLATFORM "${WORK_DIR}/prefix/bin/kvplan" simulate plan frames --server http://127.0.0.1:1/
            RESULT_VARIABLE result ERROR_VARIABLE said)
        if(NOT result EQUAL 6 OR NOT said MATCHES "there is no display server")
            message(FATAL_ERROR "what draws the simulation ended with ${result} and said: ${said}")
        endif()
    endif()

    # The installed examples are a project of their own.
    file(GLOB_RECURSE example "${WORK_DIR}/prefix/read_plan.cpp")
    get_filename_component(examples "${example}" DIRECTORY)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${examples} -B ${WORK_DIR}/examples -G ${GENERATOR}
            -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_COMPILER=${CXX} ${where}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/examples COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${WORK_DIR}/examples/read_plan http://127.0.0.1:1/ P
        OUTPUT_VARIABLE said RESULT_VARIABLE result)
    if(NOT result EQUAL 1 OR NOT said MATCHES "no plans: cannot reach http://127.0.0.1:1: ")
        message(FATAL_ERROR "the example without a service ended with ${result} and said: ${said}")
    endif()
endif()
