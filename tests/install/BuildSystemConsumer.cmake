# The host's three libraries, then the product on top of them, then an application on top of both: each configured,
# built and installed as its owner would, with nothing of this build in reach. Outside the source folder, because CMake
# writes into what it installs only where libraries are that lie elsewhere.
set(temporary "$ENV{TMPDIR}")
if(NOT temporary)
    set(temporary "/tmp")
endif()
string(RANDOM LENGTH 12 suffix)
set(WORK_DIR "${temporary}/kvplandata-system-${suffix}")
set(host "${WORK_DIR}/host")
set(product "${WORK_DIR}/product")

function(build name source prefix)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${source} -B ${WORK_DIR}/build-${name} -G ${GENERATOR}
            -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER} -DCMAKE_BUILD_TYPE=None
            -DCMAKE_INSTALL_PREFIX=${prefix} -DCMAKE_INSTALL_LIBDIR=lib "-DCMAKE_PREFIX_PATH=${host};${product}"
            -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF ${ARGN}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build-${name} OUTPUT_VARIABLE output
        RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${name} does not build:\n${output}")
    endif()
endfunction()

build(host "${SOURCE_DIR}/tests/install/system/host" "${host}" -DKVPLANDATA_PLATFORM_DIR=${SOURCE_DIR}/platform)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK_DIR}/build-host OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

build(product "${SOURCE_DIR}" "${product}" -DKVPLANDATA_PLATFORM=system -DKVPLANDATA_BUILD_TESTS=OFF
    -DKVPLANDATA_BUILD_BENCHMARKS=OFF -DKVPLANDATA_BUILD_BACKEND=OFF -DKVPLANDATA_BUILD_HOSTS=OFF)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK_DIR}/build-product OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE bundled "${product}/*KvNetwork*" "${product}/*KvPublicFun*" "${product}/*KvSoftBase*")
if(bundled)
    message(FATAL_ERROR "installed beside the host's own libraries: ${bundled}")
endif()

build(consumer "${SOURCE_DIR}/tests/install/system/consumer" "${WORK_DIR}/consumer")
execute_process(COMMAND ${WORK_DIR}/build-consumer/consumer COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE "${WORK_DIR}")
