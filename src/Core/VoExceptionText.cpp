#include <Core/VoExceptionText.h>

#include <Core/VoException.h>
#include <Core/VoString.h>

#include <exception>

namespace vo {

VoString CurrentExceptionText()
{
    const std::exception_ptr current = std::current_exception();
    if (!current)
        return VoString();
    try {
        std::rethrow_exception(current);
    } catch (const VoException& e) {
        return e.message();
    } catch (const VoExceptionInterface& e) {
        return VoString(e.what());
    } catch (const std::exception& e) {
        return VoString(e.what());
    } catch (...) {
        return VoString("Unknown exception");
    }
}

} // namespace vo
