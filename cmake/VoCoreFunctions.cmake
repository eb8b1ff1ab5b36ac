# Functions of VoCore's own build.

# Compiler settings of every target made here. Users of the installed library get none of them.
function(vocore_target_defaults target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /permissive- /utf-8)
        if(VOCORE_WARNINGS_AS_ERRORS)
            target_compile_options(${target} PRIVATE /WX)
        endif()
    else()
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual)
        if(VOCORE_WARNINGS_AS_ERRORS)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
    if(WIN32)
        # The system's macros min and max would hide the standard's functions.
        target_compile_definitions(${target} PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
    endif()
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)
    if(VOCORE_SANITIZERS)
        target_compile_options(${target} PRIVATE -fsanitize=${VOCORE_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
        target_link_options(${target} PRIVATE -fsanitize=${VOCORE_SANITIZERS})
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # The instrumentation hides initialisations from this warning, in the standard library's headers too.
            target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
        endif()
    endif()
    if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The types of local namespaces seem to stand in headers, for the sources are included.
        target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF UNITY_BUILD_BATCH_SIZE 12)
endfunction()

# vocore_sources([TARGET library] PUBLIC header... PRIVATE file... [QOBJECTS header...])
# Adds the files of one folder of src/ to a library, VoCore unless another is named. PUBLIC headers are installed, enter
# the library's umbrella header and are compiled alone by the header check; PRIVATE ones stay in the tree. QOBJECTS names
# those headers, listed before, that Qt's meta-object compiler must see.
function(vocore_sources)
    cmake_parse_arguments(arg "" "TARGET" "PUBLIC;PRIVATE;QOBJECTS" ${ARGN})
    if(NOT arg_TARGET)
        set(arg_TARGET VoCore)
    endif()
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}/src" "${CMAKE_CURRENT_SOURCE_DIR}")
    target_sources(${arg_TARGET} PRIVATE ${arg_PUBLIC} ${arg_PRIVATE})
    foreach(header IN LISTS arg_PUBLIC)
        set_property(TARGET ${arg_TARGET} APPEND PROPERTY VOCORE_PUBLIC_HEADERS "${folder}/${header}")
    endforeach()
    foreach(header IN LISTS arg_QOBJECTS)
        set_property(TARGET ${arg_TARGET} APPEND PROPERTY VOCORE_QOBJECT_HEADERS "src/${folder}/${header}")
    endforeach()
    if(arg_PUBLIC)
        install(FILES ${arg_PUBLIC} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/VoCore/${folder}" COMPONENT Development)
    endif()
endfunction()

# vocore_public_headers(variable): the public headers of all libraries that are built, as users include them.
function(vocore_public_headers variable)
    set(all)
    foreach(library IN ITEMS VoCore VoCoreGui)
        if(TARGET ${library})
            get_property(headers TARGET ${library} PROPERTY VOCORE_PUBLIC_HEADERS)
            list(APPEND all ${headers})
        endif()
    endforeach()
    set(${variable} "${all}" PARENT_SCOPE)
endfunction()

# Adds what the meta-object compiler makes. Called where the target was made: its rules belong to that directory.
function(vocore_add_meta_objects target)
    get_property(headers TARGET ${target} PROPERTY VOCORE_QOBJECT_HEADERS)
    qt_wrap_cpp(sources ${headers})
    target_sources(${target} PRIVATE ${sources})
    set_source_files_properties(${sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Writes the library's umbrella header (VoCore.h), which includes every public one, so that it cannot go stale.
function(vocore_generate_umbrella_header target)
    get_property(headers TARGET ${target} PROPERTY VOCORE_PUBLIC_HEADERS)
    set(lines "// Made by the build from the list of public headers.\n#pragma once\n\n")
    foreach(header IN LISTS headers)
        string(APPEND lines "#include <${header}>\n")
    endforeach()
    file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/generated/${target}.h" CONTENT "${lines}")
    install(FILES "${PROJECT_BINARY_DIR}/generated/${target}.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/VoCore" COMPONENT Development)
endfunction()

# Install rules of one library: its files, its targets for the CMake package, its pkg-config file.
function(vocore_install_library target)
    set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/VoCore")
    install(TARGETS ${target} EXPORT ${target}Targets
        RUNTIME COMPONENT Runtime
        LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
        ARCHIVE COMPONENT Development)
    install(EXPORT ${target}Targets NAMESPACE VoCore:: DESTINATION "${package_directory}" COMPONENT Development)
    file(RELATIVE_PATH VOCORE_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(REGEX REPLACE "/$" "" VOCORE_PC_TO_PREFIX "${VOCORE_PC_TO_PREFIX}")
    configure_file(packaging/${target}.pc.in "${PROJECT_BINARY_DIR}/${target}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${target}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)
endfunction()

# Gives a program or DLL of Windows what the system asks of its file: the version, and for programs that texts are UTF-8
# and paths may be long.
function(vocore_add_windows_resource target description)
    if(NOT WIN32)
        return()
    endif()
    get_target_property(type ${target} TYPE)
    set(VOCORE_RC_TYPE VFT_DLL)
    set(VOCORE_RC_MANIFEST "")
    if(type STREQUAL "EXECUTABLE")
        set(VOCORE_RC_TYPE VFT_APP)
        set(VOCORE_RC_MANIFEST "1 24 \"${PROJECT_SOURCE_DIR}/packaging/windows.manifest\"")
    endif()
    string(REPLACE "." "," VOCORE_RC_NUMBERS "${PROJECT_VERSION}.0")
    set(VOCORE_RC_DESCRIPTION "${description}")
    set(VOCORE_RC_NAME "${target}")
    configure_file("${PROJECT_SOURCE_DIR}/packaging/windows.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
endfunction()

# The CMake package VoCore, of which the libraries are components.
function(vocore_install_package)
    set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/VoCore")
    get_target_property(type VoCore TYPE)
    string(COMPARE EQUAL "${type}" "SHARED_LIBRARY" VOCORE_IS_SHARED)
    configure_package_config_file(packaging/VoCoreConfig.cmake.in "${PROJECT_BINARY_DIR}/VoCoreConfig.cmake"
        INSTALL_DESTINATION "${package_directory}")
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/VoCoreConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
    install(FILES "${PROJECT_BINARY_DIR}/VoCoreConfig.cmake" "${PROJECT_BINARY_DIR}/VoCoreConfigVersion.cmake"
        DESTINATION "${package_directory}" COMPONENT Development)
endfunction()

# VoCoreInternal: the same objects as a static library, in which the tests reach what the shared one does not export. A
# program links one of the two, never both, for each has the library's single objects. Where the linker does not read the
# list of exports, and in static builds, it is VoCore itself.
function(vocore_add_internal_library)
    get_target_property(type VoCore TYPE)
    if(NOT type STREQUAL "SHARED_LIBRARY" OR WIN32 OR APPLE)
        add_library(VoCoreInternal ALIAS VoCore)
        return()
    endif()
    set(exports "${PROJECT_SOURCE_DIR}/cmake/VoCore.map")
    target_link_options(VoCore PRIVATE "LINKER:--version-script=${exports}")
    set_target_properties(VoCore PROPERTIES LINK_DEPENDS "${exports}")
    # Objects alone would wait for nothing that VoCore makes before it compiles.
    add_library(VoCoreInternal STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:VoCore>)
    set_target_properties(VoCoreInternal PROPERTIES LINKER_LANGUAGE CXX)
    target_compile_features(VoCoreInternal INTERFACE cxx_std_17)
    target_include_directories(VoCoreInternal INTERFACE $<TARGET_PROPERTY:VoCore,INTERFACE_INCLUDE_DIRECTORIES>)
    get_target_property(libraries VoCore LINK_LIBRARIES)
    target_link_libraries(VoCoreInternal PUBLIC ${libraries})
endfunction()

# The target "uninstall": removes what the last installation from this build wrote.
function(vocore_add_uninstall)
    if(PROJECT_IS_TOP_LEVEL AND NOT TARGET uninstall)
        add_custom_target(uninstall
            COMMAND "${CMAKE_COMMAND}" -D "MANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt"
                -P "${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake"
            VERBATIM)
    endif()
endfunction()

# vocore_test(Name [SHARED] SOURCES file... [LIBRARIES target...] [DEFINITIONS definition...])
# Adds one test program of GoogleTest cases, with the shared fixtures and matchers. SHARED: over the library as its users
# link it, for what needs VoCoreGui.
function(vocore_test name)
    cmake_parse_arguments(arg "SHARED" "" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
    set(program VoCore${name}Tests)
    add_executable(${program} ${arg_SOURCES})
    vocore_compile_alone()
    vocore_target_defaults(${program})
    vocore_add_windows_resource(${program} "Tests")
    target_compile_definitions(${program} PRIVATE ${arg_DEFINITIONS})
    target_link_libraries(${program} PRIVATE
        VoCoreTestSupport ${arg_LIBRARIES} $<IF:$<BOOL:${arg_SHARED}>,VoCore::VoCore,VoCoreInternal>)
    if(VOCORE_PRECOMPILE_HEADERS)
        target_precompile_headers(${program} REUSE_FROM VoCoreTestSupport)
    endif()
    add_test(NAME ${name} COMMAND ${program})
endfunction()
