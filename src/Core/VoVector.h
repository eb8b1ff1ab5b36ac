#pragma once

#include <Core/VoContainerBase.h>

#include <iterator>
#include <type_traits>
#include <vector>

/// A contiguous sequence with checked index access.
///
/// There is no VoVector<bool>: its elements would be neither contiguous nor references; use unsigned char.
template <typename T>
class VoVector : public VoContainerBase<VoVector<T>, std::vector<T>>
{
    static_assert(!std::is_same_v<T, bool>, "VoVector<bool> has no contiguous elements; use unsigned char");
    using Base = VoContainerBase<VoVector<T>, std::vector<T>>;

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
    /// Holds `count` copies of `value`.
    /// @throws VoBadAllocException when they cannot be held
    explicit VoVector(std::size_t count, const T& value = T())
        : Base(Base::Allocated([&] { return std::vector<T>(count, value); }))
    {
    }
    /// Holds copies of the elements of a range.
    template <typename Iterator, typename = typename std::iterator_traits<Iterator>::iterator_category>
    VoVector(Iterator first, Iterator last)
        : Base(std::vector<T>(first, last))
    {
    }

    /// Makes room without adding.
    /// @throws VoBadAllocException when it cannot be had
    void reserve(std::size_t capacity)
    {
        Base::Allocated([&] { this->m_items.reserve(capacity); });
    }

    /// The element at `index`; of a temporary container it is moved out.
    /// @throws VoIndexOutOfBoundsException (index, size) beyond the end
    reference at(std::size_t index) &
    {
        this->requireIndex(index);
        return this->m_items[index];
    }
    /// @copydoc at(std::size_t)&
    const_reference at(std::size_t index) const&
    {
        this->requireIndex(index);
        return this->m_items[index];
    }
    /// @copydoc at(std::size_t)&
    T at(std::size_t index) && { return std::move(at(index)); }
    reference operator[](std::size_t index) & { return at(index); }            ///< As at.
    const_reference operator[](std::size_t index) const& { return at(index); } ///< As at.
    T operator[](std::size_t index) && { return std::move(at(index)); }        ///< As at.

    T* data() noexcept { return this->m_items.data(); }             ///< The contiguous elements.
    const T* data() const noexcept { return this->m_items.data(); } ///< The contiguous elements.
};
