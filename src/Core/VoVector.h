#pragma once

#include <Core/VoContainerBase.h>

#include <iterator>
#include <type_traits>
#include <vector>

/// A contiguous sequence with checked index access.
///
/// There is no VoVector<bool>: its elements would be neither contiguous nor references; use unsigned char.
template <typename T>
class VoVector : public vo::detail::ContainerBase<VoVector<T>, std::vector<T>>
{
    static_assert(!std::is_same_v<T, bool>, "VoVector<bool> has no contiguous elements; use unsigned char");
    using Base = vo::detail::ContainerBase<VoVector<T>, std::vector<T>>;

public:
    using typename Base::const_reference;
    using typename Base::reference;

    /// Empty.
    VoVector() = default;
    /// Holds copies of the listed values.
    VoVector(std::initializer_list<T> values)
        : Base(std::vector<T>(values))
    {
    }
    /// Holds @p count copies of @p value.
    explicit VoVector(std::size_t count, const T& value = T())
        : Base(std::vector<T>(count, value))
    {
    }
    /// Holds copies of the elements of a range.
    template <typename Iterator, typename = typename std::iterator_traits<Iterator>::iterator_category>
    VoVector(Iterator first, Iterator last)
        : Base(std::vector<T>(first, last))
    {
    }

    void reserve(std::size_t capacity) { this->m_items.reserve(capacity); } ///< Makes room without adding.

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

    T* data() noexcept { return this->m_items.data(); }             ///< The contiguous elements.
    const T* data() const noexcept { return this->m_items.data(); } ///< The contiguous elements.
};
