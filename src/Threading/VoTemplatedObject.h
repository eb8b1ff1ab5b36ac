#pragma once

#include <Core/VoExport.h>
#include <Core/VoObject.h>

#include <utility>

/// A value of any type as an object of the library, so that it can be shared and watched by weak pointers.
template <typename T>
class VOCORE_TEMPLATE_EXPORT VoTemplatedObject : public VoObject
{
public:
    /// Holds a default value.
    VoTemplatedObject() = default;

    /// Holds `value`.
    explicit VoTemplatedObject(T value)
        : m_value(std::move(value))
    {
    }

    const T& value() const noexcept { return m_value; } ///< The value held.
    T& value() noexcept { return m_value; }             ///< The value held.

    /// Replaces the value held.
    void setValue(T value) { m_value = std::move(value); }

private:
    T m_value{};
};
