# Compares the binary interface of a library with the kept description: symbols, layout of the records, values of
# enumerators, order of arguments. With WRITE it makes the description anew. Needs the debug information of the build.
if(WRITE)
    execute_process(COMMAND ${ABIDW} --headers-dir ${SOURCE_DIR}/${HEADERS} --drop-private-types
            --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only --type-id-style hash
            --out-file ${KEPT} ${LIBRARY}
        COMMAND_ERROR_IS_FATAL ANY)
    file(READ "${KEPT}" description)
    string(REPLACE "path='${SOURCE_DIR}/" "path='" description "${description}")
    file(WRITE "${KEPT}" "${description}")
    return()
endif()

function(compare description)
    execute_process(COMMAND ${ABIDIFF} --suppressions ${CMAKE_CURRENT_LIST_DIR}/abi/qt.abignore
            ${description} ${LIBRARY}
        RESULT_VARIABLE result OUTPUT_VARIABLE difference ERROR_VARIABLE difference)
    set(result ${result} PARENT_SCOPE)
    set(difference "${difference}" PARENT_SCOPE)
endfunction()

compare("${KEPT}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "the binary interface is not the one that is kept in ${KEPT}:\n${difference}\n"
        "If that is meant: CONTRIBUTING.md, \"Versions\", says what it takes; then run ./dev abi.")
endif()

file(READ "${KEPT}" description)
if(NOT description MATCHES "${HOLDS}")
    message(FATAL_ERROR "there is no <${HOLDS}> in ${KEPT}")
endif()

# A comparison that ignored too much would pass as well: of a description with a larger class it has to tell.
if(CONTROL)
    string(REGEX REPLACE "(class-decl name='${CONTROL}' size-in-bits=')[0-9]+'" "\\1192'" description "${description}")
    file(WRITE "${WORK_DIR}/other.abi" "${description}")
    compare("${WORK_DIR}/other.abi")
    if(result EQUAL 0 OR NOT difference MATCHES "type size changed from 192")
        message(FATAL_ERROR "another size of ${CONTROL} goes unnoticed:\n${difference}")
    endif()
endif()
