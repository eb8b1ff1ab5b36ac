#pragma once

#include <Core/VoThrow.h>

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

/// Owns one object. Moves, never copies; converts to a pointer to a base class.
///
/// Dereferencing an empty pointer throws VoNullPointerException with "VoUniquePtr dereferencing nullptr".
template <typename T>
class VoUniquePtr
{
public:
    using element_type = T; ///< Type of the object.

    /// Empty.
    VoUniquePtr() noexcept = default;
    /// Empty.
    VoUniquePtr(std::nullptr_t) noexcept {}
    /// Takes ownership of `object`, which may be null.
    explicit VoUniquePtr(T* object) noexcept
        : m_object(object)
    {
    }
    /// Takes over the object of a standard pointer.
    VoUniquePtr(std::unique_ptr<T>&& other) noexcept
        : m_object(std::move(other))
    {
    }
    /// Takes over the object; `other` is left empty.
    VoUniquePtr(VoUniquePtr&& other) noexcept = default;
    /// Takes over the object of a pointer to a derived class.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoUniquePtr(VoUniquePtr<U>&& other) noexcept
        : m_object(other.release())
    {
    }
    ~VoUniquePtr() = default;
    /// Destroys the object held and takes over the other one.
    VoUniquePtr& operator=(VoUniquePtr&& other) noexcept = default;
    VoUniquePtr(const VoUniquePtr&) = delete;
    VoUniquePtr& operator=(const VoUniquePtr&) = delete;

    /// Makes an object and the pointer that owns it.
    template <typename... Args>
    static VoUniquePtr Make(Args&&... args)
    {
        return VoUniquePtr(new T(std::forward<Args>(args)...));
    }

    T* get() const noexcept { return m_object.get(); }                   ///< The object or null; not checked.
    T* release() noexcept { return m_object.release(); }                 ///< Gives the object up to the caller.
    void reset(T* object = nullptr) noexcept { m_object.reset(object); } ///< Destroys the object and owns another.
    explicit operator bool() const noexcept { return static_cast<bool>(m_object); } ///< True with an object.
    bool isNull() const noexcept { return !m_object; }                              ///< True without an object.
    void swap(VoUniquePtr& other) noexcept { m_object.swap(other.m_object); }       ///< Exchanges the objects.

    T* operator->() const { return &checked(); } ///< The object; checked.
    T& operator*() const { return checked(); }   ///< The object; checked.

private:
    T& checked() const
    {
        if (!m_object)
            vo::detail::ThrowNullPointer("VoUniquePtr dereferencing nullptr");
        return *m_object;
    }

    std::unique_ptr<T> m_object;
};

/// Moves the object into a pointer to `U` if it is one. Otherwise the result is empty and `pointer` keeps its object.
template <typename U, typename T>
VoUniquePtr<U> DynamicCast(VoUniquePtr<T>&& pointer)
{
    U* object = dynamic_cast<U*>(pointer.get());
    if (!object)
        return {};
    pointer.release();
    return VoUniquePtr<U>(object);
}

/// Exchanges the objects.
template <typename T>
void swap(VoUniquePtr<T>& a, VoUniquePtr<T>& b) noexcept
{
    a.swap(b);
}

/// @name Comparisons of the addresses held, and with null
/// @{
/// Same object; two owners agree only when both are empty.
template <typename T, typename U>
bool operator==(const VoUniquePtr<T>& a, const VoUniquePtr<U>& b) noexcept
{
    return a.get() == b.get();
}
/// Other objects.
template <typename T, typename U>
bool operator!=(const VoUniquePtr<T>& a, const VoUniquePtr<U>& b) noexcept
{
    return a.get() != b.get();
}
/// True without an object.
template <typename T>
bool operator==(const VoUniquePtr<T>& pointer, std::nullptr_t) noexcept
{
    return pointer.isNull();
}
/// True with an object.
template <typename T>
bool operator!=(const VoUniquePtr<T>& pointer, std::nullptr_t) noexcept
{
    return !pointer.isNull();
}
/// True without an object.
template <typename T>
bool operator==(std::nullptr_t, const VoUniquePtr<T>& pointer) noexcept
{
    return pointer.isNull();
}
/// True with an object.
template <typename T>
bool operator!=(std::nullptr_t, const VoUniquePtr<T>& pointer) noexcept
{
    return !pointer.isNull();
}
/// @}
