#pragma once

#include <functional>
#include <memory>

/// Refers to an object that somebody else keeps alive; never null. Assignment makes it refer to another object.
template <typename T>
class VoRef
{
public:
    /// Refers to `object`.
    VoRef(T& object) noexcept
        : m_object(std::addressof(object))
    {
    }
    VoRef(T&&) = delete;

    T& get() const noexcept { return *m_object; }       ///< The object.
    operator T&() const noexcept { return *m_object; }  ///< The object.
    T* operator->() const noexcept { return m_object; } ///< The object.
    T& operator*() const noexcept { return *m_object; } ///< The object.

private:
    T* m_object;
};

/// Refers to a constant object that somebody else keeps alive; never null.
template <typename T>
class VoCRef
{
public:
    /// Refers to `object`.
    VoCRef(const T& object) noexcept
        : m_object(std::addressof(object))
    {
    }
    /// Refers to the same object, which can then not be changed through this reference.
    VoCRef(const VoRef<T>& other) noexcept
        : m_object(std::addressof(other.get()))
    {
    }
    VoCRef(const T&&) = delete;

    const T& get() const noexcept { return *m_object; }       ///< The object.
    operator const T&() const noexcept { return *m_object; }  ///< The object.
    const T* operator->() const noexcept { return m_object; } ///< The object.
    const T& operator*() const noexcept { return *m_object; } ///< The object.

private:
    const T* m_object;
};
