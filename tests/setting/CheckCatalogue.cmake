# Whether a catalogue holds the labels of the sources, no more and no less, and a translation of each.
# SOURCES: folders, with "|" between them.
string(REPLACE "|" ";" SOURCES "${SOURCES}")
get_filename_component(name "${CATALOGUE}" NAME)
file(COPY "${CATALOGUE}" DESTINATION "${WORK_DIR}")
execute_process(COMMAND "${LUPDATE}" -silent -locations none -no-obsolete ${SOURCES} -ts "${WORK_DIR}/${name}"
    OUTPUT_QUIET ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(READ "${CATALOGUE}" kept)
file(READ "${WORK_DIR}/${name}" updated)
if(NOT kept STREQUAL updated)
    message(FATAL_ERROR "${name} is not what the sources say; build the target update_translations")
endif()
if(kept MATCHES "unfinished" OR NOT kept MATCHES "<translation>")
    message(FATAL_ERROR "${name} has labels without a translation")
endif()
