#pragma once

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Subsystem/VoLogging.h>

#include <functional>
#include <utility>

namespace vo::detail {

/// A listener whose exceptions are logged in a category, a literal: what it is told has been done already, and who did
/// it cannot take it back.
template <typename T>
std::function<void(T)> Guarded(const char* category, std::function<void(T)> callback)
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    return [category, callback = std::move(callback)](T value) {
        try {
            callback(value);
        } catch (...) {
            logging::Logger::Get(category).error("Exception in listener: " + CurrentExceptionText());
        }
    };
}

} // namespace vo::detail
