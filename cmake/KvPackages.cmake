# Debian packages, by "./dev package" or cpack -G DEB in a build that has the prefix /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kvplandata)
set(CPACK_PACKAGE_VENDOR "KvPlanData maintainers")
set(KVPLANDATA_PACKAGE_CONTACT "KvPlanData maintainers <root@localhost>" CACHE STRING
    "Whom the packages name as their maintainer")
set(CPACK_PACKAGE_CONTACT "${KVPLANDATA_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/packages")
set(CPACK_OUTPUT_FILE_PREFIX "${CPACK_PACKAGE_DIRECTORY}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "")
foreach(library IN LISTS kv_libraries)
    get_target_property(folder ${library} BINARY_DIR)
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${folder}")
endforeach()

# kv_package(<component and package name> <description> <components it needs>)
macro(kv_package component description)
    string(TOUPPER ${component} kv_upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${kv_upper}_PACKAGE_NAME ${component})
    set(CPACK_COMPONENT_${kv_upper}_DESCRIPTION "${description}")
    set(CPACK_COMPONENT_${kv_upper}_DEPENDS ${ARGN})
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        install(FILES "${kv_debian_dir}/copyright" "${kv_debian_dir}/changelog.gz" "${kv_debian_dir}/changelog.Debian.gz"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${component}" COMPONENT ${component})
    endif()
endmacro()

# What each package has to tell of itself, in Debian's form.
set(kv_debian_dir "${CMAKE_CURRENT_BINARY_DIR}/debian")
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE CHANGELOG.md)
    file(STRINGS LICENSE kv_licence_lines)
    set(LICENSE "")
    foreach(line IN LISTS kv_licence_lines)
        if(line STREQUAL "")
            set(line ".")
        endif()
        string(APPEND LICENSE " ${line}\n")
    endforeach()
    configure_file(packaging/debian/copyright.in "${kv_debian_dir}/copyright" @ONLY)
    configure_file(packaging/debian/changelog.in "${kv_debian_dir}/changelog.Debian" @ONLY)
    configure_file(CHANGELOG.md "${kv_debian_dir}/changelog" COPYONLY)
    foreach(name IN ITEMS changelog changelog.Debian)
        execute_process(COMMAND gzip -9nkf "${kv_debian_dir}/${name}" COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endif()

kv_package(libkvplandata "Schedule data of a construction-modelling application, libraries
Through these libraries a Qt application gets plans, their tasks, progress and
presentation settings from the schedule service.")
kv_package(libkvplandata-dev "Schedule data of a construction-modelling application, for development
Headers, CMake package, pkg-config files and four example programs." libkvplandata)
set(CPACK_DEBIAN_LIBKVPLANDATA_PACKAGE_SECTION libs)
file(WRITE "${kv_debian_dir}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBKVPLANDATA_PACKAGE_CONTROL_EXTRA "${kv_debian_dir}/triggers")
set(CPACK_DEBIAN_LIBKVPLANDATA_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBKVPLANDATA-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBKVPLANDATA-DEV_PACKAGE_DEPENDS "qtbase5-dev")
if(TARGET kvplan)
    kv_package(kvplan "Plans of the schedule service at the command line
Lists, shows, edits, imports and exports plans and reports progress, as
tables for people or as JSON for programs." libkvplandata)
    set(CPACK_DEBIAN_KVPLAN_PACKAGE_SUGGESTS "planviewer") # whose programs draw the simulation
endif()
if(TARGET planviewer)
    kv_package(planviewer "Plans of the schedule service in a window
Shows and edits plans as a task tree with a Gantt chart, plays their
simulation and counts what is done." libkvplandata)
    # Loaded when they are needed, so that nothing links them.
    set(CPACK_DEBIAN_PLANVIEWER_PACKAGE_DEPENDS "qt3d-assimpsceneimport-plugin, qt3d-gltfsceneio-plugin")
endif()
if(TARGET planservice)
    kv_package(planservice "Schedule service of construction projects
Keeps plans, their tasks and progress in a database and serves them over
HTTP, with tokens and rights. Its systemd unit is neither enabled nor started
on installation.")
    set(CPACK_DEBIAN_PLANSERVICE_PACKAGE_DEPENDS "libqt5sql5-sqlite, passwd, procps")
    set(CPACK_DEBIAN_PLANSERVICE_PACKAGE_RECOMMENDS "libqt5sql5-psql")
    set(CPACK_DEBIAN_PLANSERVICE_PACKAGE_SUGGESTS "postgresql-client") # for backups of such databases
    set(CPACK_DEBIAN_PLANSERVICE_PACKAGE_CONTROL_EXTRA
        "${PROJECT_SOURCE_DIR}/packaging/debian/postinst;${PROJECT_SOURCE_DIR}/packaging/debian/prerm")
    set(CPACK_DEBIAN_PLANSERVICE_PACKAGE_CONTROL_STRICT_PERMISSION ON)
endif()
include(CPack)
