#pragma once

#include <Core/VoThrow.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <stdexcept>
#include <utility>

/// What VoDeque, VoList and VoVector share: the standard container `Container` behind checked access, in the library's
/// spelling and in the standard one. `Derived` is the class that the chaining members return.
template <typename Derived, typename Container>
class VoContainerBase
{
public:
    using value_type = typename Container::value_type;           ///< Type of the elements.
    using size_type = std::size_t;                               ///< Type of sizes and indices.
    using difference_type = std::ptrdiff_t;                      ///< Type of distances between iterators.
    using reference = typename Container::reference;             ///< Reference to an element.
    using const_reference = typename Container::const_reference; ///< Reference to a constant element.
    using iterator = typename Container::iterator;               ///< Mutable iterator.
    using const_iterator = typename Container::const_iterator;   ///< Constant iterator.

    /// @name Adding
    /// @{
    void pushBack(const value_type& value) { m_items.push_back(value); }       ///< Appends a copy.
    void pushBack(value_type&& value) { m_items.push_back(std::move(value)); } ///< Appends by move.
    void push_back(const value_type& value) { pushBack(value); }               ///< As pushBack.
    void push_back(value_type&& value) { pushBack(std::move(value)); }         ///< As pushBack.

    /// Appends an element made in place and returns it.
    template <typename... Args>
    reference emplaceBack(Args&&... args)
    {
        return m_items.emplace_back(std::forward<Args>(args)...);
    }

    /// As emplaceBack.
    template <typename... Args>
    reference emplace_back(Args&&... args)
    {
        return emplaceBack(std::forward<Args>(args)...);
    }

    /// Appends a copy and returns the container.
    Derived& operator<<(const value_type& value)
    {
        pushBack(value);
        return self();
    }

    /// Appends by move and returns the container.
    Derived& operator<<(value_type&& value)
    {
        pushBack(std::move(value));
        return self();
    }

    /// Appends all elements of `other`, which may be this container.
    void append(const Derived& other)
    {
        if (&other == &self()) {
            Container copy(m_items);
            m_items.insert(m_items.end(), copy.begin(), copy.end());
            return;
        }
        m_items.insert(m_items.end(), other.begin(), other.end());
    }

    /// Inserts before `position`; returns the new element's position.
    iterator insert(const_iterator position, value_type value) { return m_items.insert(position, std::move(value)); }

    /// Inserts the range before `position`; returns the position of the first new element.
    template <typename Iterator>
    iterator insert(const_iterator position, Iterator first, Iterator last)
    {
        return m_items.insert(position, first, last);
    }
    /// @}

    /// @name Removing
    /// @{
    /// Removes the last element.
    /// @throws VoIndexOutOfBoundsException when there is none
    void popBack()
    {
        requireNotEmpty();
        m_items.pop_back();
    }
    void pop_back() { popBack(); } ///< As popBack.

    iterator erase(const_iterator position) { return m_items.erase(position); } ///< Removes one element.
    /// Removes a range.
    iterator erase(const_iterator first, const_iterator last) { return m_items.erase(first, last); }
    void clear() noexcept { m_items.clear(); } ///< Removes all elements.
    /// @}

    /// @name Elements
    /// The checked accessors throw VoIndexOutOfBoundsException(index, size).
    /// @{
    /// The first element.
    reference front() &
    {
        requireNotEmpty();
        return m_items.front();
    }
    /// The first element.
    const_reference front() const&
    {
        requireNotEmpty();
        return m_items.front();
    }
    /// The first element, moved out of a temporary.
    value_type front() && { return std::move(front()); }
    /// The last element.
    reference back() &
    {
        requireNotEmpty();
        return m_items.back();
    }
    /// The last element.
    const_reference back() const&
    {
        requireNotEmpty();
        return m_items.back();
    }
    /// The last element, moved out of a temporary.
    value_type back() && { return std::move(back()); }
    /// @}

    /// @name Questions
    /// @{
    std::size_t size() const noexcept { return m_items.size(); } ///< Number of elements.
    bool isEmpty() const noexcept { return m_items.empty(); }    ///< True without elements.
    bool empty() const noexcept { return m_items.empty(); }      ///< As isEmpty.

    /// True when some element equals `value` (linear).
    template <typename U>
    bool contains(const U& value) const
    {
        return std::find(begin(), end(), value) != end();
    }
    /// @}

    /// Grows with value-initialised elements or truncates.
    /// @throws VoBadAllocException when they cannot be held
    void resize(std::size_t size)
    {
        Allocated([&] { m_items.resize(size); });
    }
    /// Grows with copies of `value` or truncates.
    /// @throws VoBadAllocException when they cannot be held
    void resize(std::size_t size, const value_type& value)
    {
        Allocated([&] { m_items.resize(size, value); });
    }

    /// @name Iteration
    /// @{
    iterator begin() noexcept { return m_items.begin(); }              ///< First element.
    iterator end() noexcept { return m_items.end(); }                  ///< Past the last element.
    const_iterator begin() const noexcept { return m_items.begin(); }  ///< First element.
    const_iterator end() const noexcept { return m_items.end(); }      ///< Past the last element.
    const_iterator cbegin() const noexcept { return m_items.begin(); } ///< First element.
    const_iterator cend() const noexcept { return m_items.end(); }     ///< Past the last element.
    auto rbegin() noexcept { return m_items.rbegin(); }                ///< Last element, backwards.
    auto rend() noexcept { return m_items.rend(); }                    ///< Before the first element, backwards.
    auto rbegin() const noexcept { return m_items.rbegin(); }          ///< Last element, backwards.
    auto rend() const noexcept { return m_items.rend(); }              ///< Before the first element, backwards.
    /// @}

    /// Exchanges the contents.
    void swap(Derived& other) noexcept { m_items.swap(static_cast<VoContainerBase&>(other).m_items); }

    /// Equal sizes and, position by position, equal elements.
    friend bool operator==(const Derived& a, const Derived& b)
    {
        return static_cast<const VoContainerBase&>(a).m_items == static_cast<const VoContainerBase&>(b).m_items;
    }
    /// Some element or the size differs.
    friend bool operator!=(const Derived& a, const Derived& b) { return !(a == b); }

    /// @cond INTERNAL
protected:
    VoContainerBase() = default;
    explicit VoContainerBase(Container items)
        : m_items(std::move(items))
    {
    }
    ~VoContainerBase() = default;
    VoContainerBase(const VoContainerBase&) = default;
    VoContainerBase(VoContainerBase&&) = default;
    VoContainerBase& operator=(const VoContainerBase&) = default;
    VoContainerBase& operator=(VoContainerBase&&) = default;

    // Does what takes memory for a number of elements that the caller named.
    template <typename Function>
    static auto Allocated(Function&& function) -> decltype(function())
    {
        try {
            return function();
        } catch (const std::bad_alloc&) {
            vo::detail::ThrowBadAlloc("elements of a container");
        } catch (const std::length_error&) {
            vo::detail::ThrowBadAlloc("number of elements of a container");
        }
    }

    void requireNotEmpty() const
    {
        if (m_items.empty())
            vo::detail::ThrowIndexOutOfBounds(0, 0);
    }

    void requireIndex(std::size_t index) const
    {
        if (index >= m_items.size())
            vo::detail::ThrowIndexOutOfBounds(index, m_items.size());
    }

    Container m_items;

private:
    Derived& self() { return static_cast<Derived&>(*this); }
    /// @endcond
};
