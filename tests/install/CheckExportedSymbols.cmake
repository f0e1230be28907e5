# Compares what the library exports with the kept list. A symbol more is a leak, a symbol less breaks hosts.
execute_process(COMMAND ${NM} --dynamic --demangle --defined-only --format=posix ${LIBRARY}
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [A-Za-z] [0-9a-f]+( [0-9a-f]+)?\n" "\n" symbols "${output}")
string(REPLACE "\n" ";" symbols "${symbols}")
list(REMOVE_ITEM symbols "")
list(REMOVE_DUPLICATES symbols)
list(SORT symbols)

file(STRINGS "${KEPT}" kept)
list(SORT kept)

set(leaked ${symbols})
list(REMOVE_ITEM leaked ${kept})
set(missing ${kept})
list(REMOVE_ITEM missing ${symbols})
if(leaked OR missing)
    list(JOIN leaked "\n  " leaked)
    list(JOIN missing "\n  " missing)
    message(FATAL_ERROR "exported but not in ${KEPT}:\n  ${leaked}\nin the list but not exported:\n  ${missing}")
endif()
