#pragma once

#include <Core/VoContainerBase.h>

#include <deque>
#include <iterator>

/// The library's sequence container: a double-ended queue with checked index access.
///
/// Adding at either end keeps references to the other elements valid. A value: copies copy the elements. Not
/// synchronised.
template <typename T>
class VoDeque : public vo::detail::ContainerBase<VoDeque<T>, std::deque<T>>
{
    using Base = vo::detail::ContainerBase<VoDeque<T>, std::deque<T>>;

public:
    using typename Base::const_reference;
    using typename Base::reference;

    /// Empty.
    VoDeque() = default;
    /// Holds copies of the listed values.
    VoDeque(std::initializer_list<T> values)
        : Base(std::deque<T>(values))
    {
    }
    /// Holds @p count copies of @p value.
    explicit VoDeque(std::size_t count, const T& value = T())
        : Base(std::deque<T>(count, value))
    {
    }
    /// Holds copies of the elements of a range.
    template <typename Iterator, typename = typename std::iterator_traits<Iterator>::iterator_category>
    VoDeque(Iterator first, Iterator last)
        : Base(std::deque<T>(first, last))
    {
    }

    void pushFront(const T& value) { this->m_items.push_front(value); }       ///< Prepends a copy.
    void pushFront(T&& value) { this->m_items.push_front(std::move(value)); } ///< Prepends by move.
    void push_front(const T& value) { pushFront(value); }                     ///< As pushFront.
    void push_front(T&& value) { pushFront(std::move(value)); }               ///< As pushFront.

    /// Removes the first element. Throws VoIndexOutOfBoundsException when there is none.
    void popFront()
    {
        this->requireNotEmpty();
        this->m_items.pop_front();
    }
    void pop_front() { popFront(); } ///< As popFront.

    /// The element at @p index. Throws VoIndexOutOfBoundsException(index, size) beyond the end.
    reference at(std::size_t index)
    {
        this->requireIndex(index);
        return this->m_items[index];
    }
    /// @copydoc at(std::size_t)
    const_reference at(std::size_t index) const
    {
        this->requireIndex(index);
        return this->m_items[index];
    }
    reference operator[](std::size_t index) { return at(index); }             ///< As at.
    const_reference operator[](std::size_t index) const { return at(index); } ///< As at.
};
