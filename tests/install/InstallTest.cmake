# Run as a script by ctest. Fails at the first step whose result is wrong.
cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT result EQUAL 0)
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "${command}\nended with ${result}\n${output}\n${error}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${SCRATCH}")
set(prefix "${SCRATCH}/prefix")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}")

# Private headers stay in the tree.
file(GLOB_RECURSE headers RELATIVE "${prefix}/include/VoCore" "${prefix}/include/VoCore/*.h")
foreach(header IN LISTS headers)
    if(header MATCHES "/detail/")
        message(FATAL_ERROR "${header} is private but installed")
    endif()
endforeach()

if(NOT EXISTS "${prefix}/share/VoCore/schemas/results.xsd")
    message(FATAL_ERROR "the schema of the results file is not installed")
endif()

foreach(page share/man/man1/vo.1 share/man/man1/vo-verify-release.1 share/bash-completion/completions/vo
        share/zsh/site-functions/_vo share/fish/vendor_completions.d/vo.fish)
    if(UNIX AND NOT EXISTS "${prefix}/${page}")
        message(FATAL_ERROR "${page} is not installed")
    endif()
endforeach()

run("${prefix}/bin/vo" --version)
if(NOT output STREQUAL "vo ${VERSION}\n")
    message(FATAL_ERROR "the installed tool says \"${output}\"")
endif()

# The example project: configured against the prefix, with its own settings, built and run.
run("${CMAKE_COMMAND}" -S "${EXAMPLE}" -B "${SCRATCH}/consumer" -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
run("${CMAKE_COMMAND}" --build "${SCRATCH}/consumer")
file(WRITE "${SCRATCH}/folder/abc.txt" "abc")
run("${SCRATCH}/consumer/consumer" "${SCRATCH}/folder" "${SCRATCH}/published/declarations.xml")
set(expected "3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532  abc.txt\n")
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the consumer prints \"${output}\"")
endif()

# A component that there is not is named, with those that there are.
file(WRITE "${SCRATCH}/unknown/CMakeLists.txt"
    "cmake_minimum_required(VERSION 3.25)\nproject(Unknown LANGUAGES CXX)\nfind_package(VoCore REQUIRED COMPONENTS Sound)\n")
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${SCRATCH}/unknown" -B "${SCRATCH}/unknown/build" -G Ninja
    "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_PREFIX_PATH=${prefix}" RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE error)
string(REGEX REPLACE "[ \n]+" " " error "${error}")
if(result EQUAL 0 OR NOT error MATCHES "no component \"Sound\" is installed. there are: Core")
    message(FATAL_ERROR "an unknown component is told as \"${error}\"")
endif()

# The installed tool reads what the consumer published.
run("${prefix}/bin/vo" releases "${SCRATCH}/published/declarations.xml")
if(NOT output MATCHES "Consumer's files  1\\.0\\.0  newest")
    message(FATAL_ERROR "the installed tool says \"${output}\"")
endif()

# The tool itself, whose sources see no header that is not installed.
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/tool" -B "${SCRATCH}/tool" -G Ninja "-DTOOL=${TOOL}" "-DVERSION=${VERSION}"
    "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}" "-DCMAKE_CXX_FLAGS=-O0"
    "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${SCRATCH}/tool")
run("${SCRATCH}/tool/vo/vo" --version)
if(NOT output STREQUAL "vo ${VERSION}\n")
    message(FATAL_ERROR "the tool built against the installed library says \"${output}\"")
endif()

set(static)
if(NOT SHARED)
    set(static --static)
endif()
# pkg-config gives flags that are enough on their own.
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
run(pkg-config --modversion VoCore)
if(NOT output STREQUAL "${VERSION}\n")
    message(FATAL_ERROR "pkg-config gives version \"${output}\"")
endif()
run(pkg-config ${static} --cflags --libs VoCore)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run("${CXX}" -std=c++17 -o "${SCRATCH}/by-pkg-config" "${EXAMPLE}/main.cpp" ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
run("${SCRATCH}/by-pkg-config" "${SCRATCH}/folder" "${SCRATCH}/published/again.xml")
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the consumer built with pkg-config prints \"${output}\"")
endif()

# The component for programs with a display, by both ways.
if(GUI)
    set(gui "${CMAKE_CURRENT_LIST_DIR}/gui")
    run("${CMAKE_COMMAND}" -S "${gui}" -B "${SCRATCH}/gui" -G Ninja "-DCMAKE_CXX_COMPILER=${CXX}"
        "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
    run("${CMAKE_COMMAND}" --build "${SCRATCH}/gui")
    run(pkg-config ${static} --cflags --libs VoCoreGui)
    string(STRIP "${output}" flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run("${CXX}" -std=c++17 -o "${SCRATCH}/gui/by-pkg-config" "${gui}/main.cpp" ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}")
    foreach(program IN ITEMS gui-consumer by-pkg-config)
        run("${SCRATCH}/gui/${program}")
        if(NOT output MATCHES "^Cannot open .*: no graphical application\n$")
            message(FATAL_ERROR "the consumer with a display prints \"${output}\"")
        endif()
    endforeach()
endif()
