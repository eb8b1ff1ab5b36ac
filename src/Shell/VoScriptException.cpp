#include <Shell/VoScriptException.h>

#include <Core/VoExceptionText.h>

namespace {

VoString TextOf(const std::exception_ptr& cause)
{
    try {
        std::rethrow_exception(cause);
    } catch (...) {
        return vo::CurrentExceptionText();
    }
}

} // namespace

VOCORE_DEFINE_EXCEPTION(VoScriptException, "VoScriptException")

VoScriptException::VoScriptException(const VoString& script, std::size_t line, const std::exception_ptr& cause)
    : VoException(script + ", line " + VoString(line) + ": " + TextOf(cause))
    , m_script(script)
    , m_line(line)
    , m_cause(cause)
{
}
