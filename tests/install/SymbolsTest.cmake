# Run as a script by ctest: the shared library exports its interface, and of detail namespaces and hidden states only
# what inline functions and templates of public headers need (cmake/VoCore.map).
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${NM}" -D -C --defined-only "${LIBRARY}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," symbols "${symbols}")
string(REGEX REPLACE "[[]|[]]" "|" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")

set(private "${symbols}")
list(FILTER private INCLUDE REGEX "vo::([a-z_]+::)?detail::|Private|Impl")
list(FILTER private EXCLUDE REGEX "VoNotImplementedException")
list(LENGTH private known)
set(detail "vo::(background_task::)?detail::")
list(FILTER private EXCLUDE REGEX
    " (${detail}(Throw|GlobalValueHandle::|AbstractConnection::|BroadcastConnections::|CancelledException|LogFailedWork|Table(To|From)HTML))")
list(FILTER private EXCLUDE REGEX " (vtable|typeinfo|typeinfo name) for ${detail}AbstractConnection$")
list(FILTER private EXCLUDE REGEX "AbstractTaskScheduler::enqueue")
if(private)
    list(JOIN private "\n" private)
    message(FATAL_ERROR "${LIBRARY} exports what is private:\n${private}")
endif()
# That it looked at the library's symbols at all.
if(known EQUAL 0 OR NOT symbols MATCHES "VoString::")
    message(FATAL_ERROR "${LIBRARY} does not export its interface")
endif()
