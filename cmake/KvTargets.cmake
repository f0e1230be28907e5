# What every target of this project shares: language level, visibility, warnings, sanitizers.

# Told by the programs' --version.
set(KV_BUILD_FACTS "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}, $<IF:$<CONFIG:>,no build type,$<CONFIG>>, \
${CMAKE_SYSTEM_NAME} ${CMAKE_SYSTEM_PROCESSOR}")

include(GenerateExportHeader)
include(GNUInstallDirs)

function(kv_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON
        INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}"
        AUTOMOC ON)
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
        QT_NO_FOREACH QT_NO_KEYWORDS
        QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8 $<$<BOOL:${KVPLANDATA_WERROR}>:/WX>)
    else()
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${KVPLANDATA_WERROR}>:-Werror>)
        if(KVPLANDATA_SANITIZE)
            target_compile_options(${target} PRIVATE -fsanitize=${KVPLANDATA_SANITIZE} -fno-omit-frame-pointer
                -fno-sanitize-recover=all)
            target_link_options(${target} PRIVATE -fsanitize=${KVPLANDATA_SANITIZE})
        endif()
        if(KVPLANDATA_COVERAGE)
            target_compile_options(${target} PRIVATE --coverage)
            target_link_options(${target} PRIVATE --coverage)
        endif()
    endif()
endfunction()

# The test of the libraries' binary interface reads their types, also where the rest has lines for a debugger alone.
function(kv_describe_types target)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-g>)
    endif()
endfunction()

# One of the product's dynamic libraries: versioned, with a generated export header <name>/<name>Export.h.
function(kv_add_shared_library name)
    cmake_parse_arguments(arg "" "DESCRIPTION" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} SHARED ${arg_SOURCES})
    add_library(KvPlanData::${name} ALIAS ${name})
    kv_target_defaults(${name})
    kv_describe_types(${name})
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        DESCRIPTION "${arg_DESCRIPTION}")
    if(KVPLANDATA_PLATFORM STREQUAL "system") # the host's libraries may be installed anywhere
        set_target_properties(${name} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
    endif()
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    generate_export_header(${name} EXPORT_FILE_NAME "${CMAKE_CURRENT_BINARY_DIR}/include/${name}/${name}Export.h")
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/KvPlanData>)
endfunction()
