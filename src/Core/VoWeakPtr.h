#pragma once

#include <Core/VoSharedPtr.h>

#include <memory>
#include <type_traits>
#include <utility>

/// Refers to an object that VoSharedPtr owners keep alive, without keeping it alive itself.
///
/// `operator->` locks the object for the duration of the expression and throws VoNullPointerException with "VoSharedPtr
/// dereferencing nullptr" when it is gone.
template <typename T>
class VoWeakPtr
{
public:
    /// Refers to nothing.
    VoWeakPtr() noexcept = default;
    /// Refers to the object of `owner`.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoWeakPtr(const VoSharedPtr<U>& owner) noexcept
        : m_object(owner.standard())
    {
    }
    /// Refers to the object of a standard owner.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoWeakPtr(const std::shared_ptr<U>& owner) noexcept
        : m_object(owner)
    {
    }
    /// Refers to the object of a pointer to a derived class.
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    VoWeakPtr(const VoWeakPtr<U>& other) noexcept
        : m_object(other.lock().standard())
    {
    }

    VoSharedPtr<T> lock() const noexcept { return VoSharedPtr<T>(m_object.lock()); } ///< An owner, or empty when gone.
    bool expired() const noexcept { return m_object.expired(); }                     ///< True when the object is gone.
    void reset() noexcept { m_object.reset(); }                                      ///< Refers to nothing from now on.
    void swap(VoWeakPtr& other) noexcept { m_object.swap(other.m_object); }          ///< Exchanges the targets.

    /// The object, kept alive until the end of the full expression; checked.
    VoSharedPtr<T> operator->() const { return lock(); }

private:
    std::weak_ptr<T> m_object;
};
