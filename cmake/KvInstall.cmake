# Install rules: libraries, headers under include/KvPlanData/, the CMake package "KvPlanData" and
# a pkg-config file for each library.

include(CMakePackageConfigHelpers)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME libkvplandata-dev)
set(kv_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/KvPlanData")
set(kv_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KvPlanData")
set(kv_libraries KvPlanData)
if(KVPLANDATA_PLATFORM STREQUAL "bundled")
    list(APPEND kv_libraries KvNetwork KvPublicFun KvSoftBase)
    foreach(room IN ITEMS network/KvNetwork publicfun/KvPublicFun softbase/KvSoftBase)
        install(DIRECTORY "platform/${room}" DESTINATION "${kv_include_dir}" FILES_MATCHING PATTERN "*.h")
    endforeach()
endif()

# Internal headers (codecs, endpoints, the request frame) stay at home.
install(FILES
    src/model/KvDocument.h src/model/KvDuration.h src/model/KvPlan.h src/model/KvPlanCondition.h
    src/model/KvPlanDataUtils.h src/model/KvPlanNode.h src/model/KvPlanNodeResponse.h
    src/model/KvPlanRecords.h src/model/KvPlanStatistics.h
    DESTINATION "${kv_include_dir}/model")
install(FILES src/plandata/KvPlanData.h DESTINATION "${kv_include_dir}/plandata")
install(FILES src/setting/KvGrowthType.h src/setting/KvPlanSetting.h src/setting/KvTimeLineSet.h
    DESTINATION "${kv_include_dir}/setting")

foreach(library IN LISTS kv_libraries)
    get_target_property(binary_dir ${library} BINARY_DIR)
    install(FILES "${binary_dir}/include/${library}/${library}Export.h" DESTINATION "${kv_include_dir}/${library}")
endforeach()
install(TARGETS ${kv_libraries} EXPORT KvPlanDataTargets
    RUNTIME COMPONENT libkvplandata
    LIBRARY COMPONENT libkvplandata NAMELINK_COMPONENT libkvplandata-dev
    ARCHIVE COMPONENT libkvplandata-dev)

# For builds without CMake. The prefix is found from the file itself, so that an installed tree may be moved.
set(kv_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH kv_pc_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
foreach(library IN LISTS kv_libraries)
    get_target_property(kv_pc_description ${library} DESCRIPTION)
    get_target_property(kv_pc_public ${library} INTERFACE_LINK_LIBRARIES)
    list(FILTER kv_pc_public INCLUDE REGEX "^Qt5::")
    list(TRANSFORM kv_pc_public REPLACE "::" "")
    list(JOIN kv_pc_public " " kv_pc_requires)
    set(kv_pc_private "")
    if(library STREQUAL "KvPlanData" AND KVPLANDATA_PLATFORM STREQUAL "bundled")
        set(kv_pc_private "KvNetwork KvPublicFun KvSoftBase")
    endif()
    configure_file(cmake/library.pc.in "${CMAKE_CURRENT_BINARY_DIR}/${library}.pc" @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${library}.pc" DESTINATION "${kv_pkgconfig_dir}")
endforeach()

install(EXPORT KvPlanDataTargets NAMESPACE KvPlanData:: DESTINATION "${kv_package_dir}")
configure_package_config_file(cmake/KvPlanDataConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfig.cmake"
    INSTALL_DESTINATION "${kv_package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion) # while the major number is 0, each minor version may change the interface
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfigVersion.cmake"
    DESTINATION "${kv_package_dir}")

install(FILES
    examples/CMakeLists.txt examples/edit_and_save.cpp examples/import_schedule.cpp examples/read_plan.cpp
    examples/settings.cpp
    DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples")
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")

# The programs' manual pages and what the shell completes of them. Both come from what the programs say of themselves.
function(kv_document_program program)
    set(page "${CMAKE_CURRENT_BINARY_DIR}/man/${program}.1")
    add_custom_command(OUTPUT "${page}"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/man"
        # A sanitized program is asked for its text here; tests look for its leaks.
        COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0
            ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${program}> -DVERSION=${PROJECT_VERSION}
            "-DIN=${PROJECT_SOURCE_DIR}/packaging/man/${program}.1.in" "-DOUT=${page}"
            -P "${PROJECT_SOURCE_DIR}/cmake/ManualPage.cmake"
        DEPENDS ${program} packaging/man/${program}.1.in cmake/ManualPage.cmake VERBATIM)
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr") # Debian has its manual pages compressed
        add_custom_command(OUTPUT "${page}.gz" COMMAND gzip -9nkf "${page}" DEPENDS "${page}" VERBATIM)
        set(page "${page}.gz")
    endif()
    add_custom_target(${program}_page ALL DEPENDS "${page}")
    install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${program})
    install(FILES packaging/completion/kvplan RENAME ${program}
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT ${program})
endfunction()

if(NOT CMAKE_CROSSCOMPILING AND NOT WIN32)
    foreach(program IN ITEMS kvplan planservice planviewer)
        if(TARGET ${program})
            kv_document_program(${program})
        endif()
    endforeach()
    if(TARGET planservice)
        install(FILES packaging/planservice.service DESTINATION lib/systemd/system COMPONENT planservice)
    endif()
    if(TARGET planviewer)
        install(FILES packaging/planviewer.desktop DESTINATION "${CMAKE_INSTALL_DATADIR}/applications"
            COMPONENT planviewer)
    endif()
    if(PROJECT_IS_TOP_LEVEL)
        include(KvPackages)
    endif()
endif()
