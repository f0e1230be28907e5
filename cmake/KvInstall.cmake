# Install rules: libraries, headers under include/KvPlanData/ and the CMake package "KvPlanData".

include(CMakePackageConfigHelpers)

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
install(TARGETS ${kv_libraries} EXPORT KvPlanDataTargets)

install(EXPORT KvPlanDataTargets NAMESPACE KvPlanData:: DESTINATION "${kv_package_dir}")
configure_package_config_file(cmake/KvPlanDataConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfig.cmake"
    INSTALL_DESTINATION "${kv_package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion) # while the major number is 0, each minor version may change the interface
install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KvPlanDataConfigVersion.cmake"
    DESTINATION "${kv_package_dir}")
