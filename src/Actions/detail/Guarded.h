#pragma once

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Subsystem/VoLogging.h>

#include <functional>
#include <utility>

namespace vo::detail {

/// A listener whose exceptions are logged: what it is told has been done already, and who did it cannot take it back.
template <typename T>
std::function<void(T)> Guarded(std::function<void(T)> callback)
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    return [callback = std::move(callback)](T value) {
        try {
            callback(value);
        } catch (...) {
            logging::Logger::Get("actions").error("Exception in listener: " + CurrentExceptionText());
        }
    };
}

} // namespace vo::detail
