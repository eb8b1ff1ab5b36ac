# Run as a script by ctest: what the built libraries load, all the way down. A program that shows nothing, on a server,
# loads nothing that shows.
cmake_minimum_required(VERSION 3.25)

set(shows "libQt[56](Gui|Widgets|Svg)|libGL|libX11|libxcb|libwayland")

function(shown_by library variable)
    file(GET_RUNTIME_DEPENDENCIES LIBRARIES "${library}" RESOLVED_DEPENDENCIES_VAR found UNRESOLVED_DEPENDENCIES_VAR missing)
    if(missing)
        message(FATAL_ERROR "${library} needs what is not there: ${missing}")
    endif()
    list(FILTER found INCLUDE REGEX "${shows}")
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

shown_by("${CORE}" found)
if(found)
    message(FATAL_ERROR "${CORE} loads ${found}")
endif()
# That the pattern finds what it should.
if(GUI)
    shown_by("${GUI}" found)
    if(NOT found)
        message(FATAL_ERROR "${GUI} loads nothing that shows")
    endif()
endif()
