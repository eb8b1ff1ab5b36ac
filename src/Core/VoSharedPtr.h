#pragma once

#include <Core/VoThrow.h>
#include <Core/VoUniquePtr.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

/// Shares the ownership of one object; the last owner destroys it. Converts to a pointer to a base class and to and
/// from the standard shared pointer.
///
/// Dereferencing an empty pointer throws VoNullPointerException with "VoSharedPtr dereferencing nullptr". Counting is
/// thread-safe; one pointer object is not.
template <typename T>
class VoSharedPtr
{
public:
    using element_type = T; ///< Type of the object.

    /// Empty.
    VoSharedPtr() noexcept = default;
    /// Empty.
    VoSharedPtr(std::nullptr_t) noexcept {}
    /// Takes ownership of `object`, which may be null.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    explicit VoSharedPtr(U* object)
        : m_object(object)
    {
    }
    /// Shares the object of a standard pointer.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoSharedPtr(std::shared_ptr<U> other) noexcept
        : m_object(std::move(other))
    {
    }
    /// Takes over the object of a single owner.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoSharedPtr(VoUniquePtr<U>&& other)
        : m_object(std::unique_ptr<U>(other.release()))
    {
    }
    /// Shares the object of a pointer to a derived class.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoSharedPtr(const VoSharedPtr<U>& other) noexcept
        : m_object(other.standard())
    {
    }
    /// Takes over the share of a pointer to a derived class.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoSharedPtr(VoSharedPtr<U>&& other) noexcept
        : m_object(std::move(other.m_object))
    {
    }

    /// Makes an object and a pointer that owns it.
    template <typename... Args>
    static VoSharedPtr Make(Args&&... args)
    {
        return VoSharedPtr(std::make_shared<T>(std::forward<Args>(args)...));
    }

    T* get() const noexcept { return m_object.get(); } ///< The object or null; not checked.
    void reset() noexcept { m_object.reset(); }        ///< Gives up this share.
    explicit operator bool() const noexcept { return static_cast<bool>(m_object); } ///< True with an object.
    bool isNull() const noexcept { return !m_object; }                              ///< True without an object.
    long useCount() const noexcept { return m_object.use_count(); }                 ///< Number of owners, 0 when empty.
    void swap(VoSharedPtr& other) noexcept { m_object.swap(other.m_object); }       ///< Exchanges the objects.

    T* operator->() const { return &checked(); } ///< The object; checked.
    T& operator*() const { return checked(); }   ///< The object; checked.

    const std::shared_ptr<T>& standard() const noexcept { return m_object; } ///< The same share as a standard pointer.
    operator std::shared_ptr<T>() const noexcept { return m_object; }        ///< As standard().

    /// The object as a `U`, unchecked.
    template <typename U>
    VoSharedPtr<U> staticCast() const
    {
        return VoSharedPtr<U>(std::static_pointer_cast<U>(m_object));
    }

    /// The object as a `U`, or empty when it is none.
    template <typename U>
    VoSharedPtr<U> dynamicCast() const
    {
        return VoSharedPtr<U>(std::dynamic_pointer_cast<U>(m_object));
    }

private:
    template <typename U>
    friend class VoSharedPtr;

    T& checked() const
    {
        if (!m_object)
            vo::detail::ThrowNullPointer("VoSharedPtr dereferencing nullptr");
        return *m_object;
    }

    std::shared_ptr<T> m_object;
};

/// @name Comparisons of the addresses held
/// @{
/// Same object.
template <typename T, typename U>
bool operator==(const VoSharedPtr<T>& a, const VoSharedPtr<U>& b) noexcept
{
    return a.get() == b.get();
}
/// Other objects.
template <typename T, typename U>
bool operator!=(const VoSharedPtr<T>& a, const VoSharedPtr<U>& b) noexcept
{
    return a.get() != b.get();
}
/// True without an object.
template <typename T>
bool operator==(const VoSharedPtr<T>& pointer, std::nullptr_t) noexcept
{
    return pointer.isNull();
}
/// True with an object.
template <typename T>
bool operator!=(const VoSharedPtr<T>& pointer, std::nullptr_t) noexcept
{
    return !pointer.isNull();
}
/// Ordered by address.
template <typename T>
bool operator<(const VoSharedPtr<T>& a, const VoSharedPtr<T>& b) noexcept
{
    return std::less<T*>()(a.get(), b.get());
}
/// @}

namespace std {
/// Hash of the address held.
template <typename T>
struct hash<VoSharedPtr<T>>
{
    /// Agrees with operator==.
    std::size_t operator()(const VoSharedPtr<T>& pointer) const noexcept { return std::hash<T*>()(pointer.get()); }
};
} // namespace std
