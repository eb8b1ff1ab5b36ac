#pragma once

#include <Core/VoContainerBase.h>

#include <deque>
#include <iterator>
#include <memory>
#include <utility>

/// @cond INTERNAL
namespace vo::detail {

// A std::deque that is made with its first element. The standard one takes half a kilobyte when it is empty and may
// throw when it is moved, so that vectors would copy it.
template <typename T>
class LazyDeque
{
    using Items = std::deque<T>;

public:
    using value_type = T;
    using reference = typename Items::reference;
    using const_reference = typename Items::const_reference;
    using iterator = typename Items::iterator;
    using const_iterator = typename Items::const_iterator;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    LazyDeque() noexcept = default;
    template <typename... Args>
    explicit LazyDeque(std::in_place_t, Args&&... args)
        : m_items(std::make_unique<Items>(std::forward<Args>(args)...))
    {
    }
    LazyDeque(const LazyDeque& other)
        : m_items(other.empty() ? nullptr : std::make_unique<Items>(*other.m_items))
    {
    }
    LazyDeque(LazyDeque&& other) noexcept = default;
    LazyDeque& operator=(const LazyDeque& other)
    {
        if (this != &other)
            *this = LazyDeque(other);
        return *this;
    }
    LazyDeque& operator=(LazyDeque&& other) noexcept = default;
    ~LazyDeque() = default;

    template <typename V>
    void push_back(V&& value)
    {
        own().push_back(std::forward<V>(value));
    }
    template <typename V>
    void push_front(V&& value)
    {
        own().push_front(std::forward<V>(value));
    }
    template <typename... Args>
    reference emplace_back(Args&&... args)
    {
        return own().emplace_back(std::forward<Args>(args)...);
    }
    // The iterators of an empty sequence may be those of no deque at all.
    iterator insert(const_iterator position, T&& value)
    {
        return own().insert(m_items->empty() ? m_items->cbegin() : position, std::move(value));
    }
    template <typename Iterator>
    iterator insert(const_iterator position, Iterator first, Iterator last)
    {
        return own().insert(m_items->empty() ? m_items->cbegin() : position, first, last);
    }
    void pop_back() { m_items->pop_back(); }
    void pop_front() { m_items->pop_front(); }
    iterator erase(const_iterator position) { return m_items->erase(position); }
    iterator erase(const_iterator first, const_iterator last) { return m_items ? m_items->erase(first, last) : end(); }
    void clear() noexcept
    {
        if (m_items)
            m_items->clear();
    }
    void resize(std::size_t size) { own().resize(size); }
    void resize(std::size_t size, const T& value) { own().resize(size, value); }

    reference front() { return m_items->front(); }
    const_reference front() const { return std::as_const(*m_items).front(); }
    reference back() { return m_items->back(); }
    const_reference back() const { return std::as_const(*m_items).back(); }
    reference operator[](std::size_t index) { return (*m_items)[index]; }
    const_reference operator[](std::size_t index) const { return std::as_const(*m_items)[index]; }

    std::size_t size() const noexcept { return m_items ? m_items->size() : 0; }
    bool empty() const noexcept { return !m_items || m_items->empty(); }

    iterator begin() noexcept { return m_items ? m_items->begin() : iterator(); }
    iterator end() noexcept { return m_items ? m_items->end() : iterator(); }
    const_iterator begin() const noexcept { return m_items ? m_items->cbegin() : const_iterator(); }
    const_iterator end() const noexcept { return m_items ? m_items->cend() : const_iterator(); }
    reverse_iterator rbegin() noexcept { return reverse_iterator(end()); }
    reverse_iterator rend() noexcept { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }

    void swap(LazyDeque& other) noexcept { m_items.swap(other.m_items); }

    friend bool operator==(const LazyDeque& a, const LazyDeque& b)
    {
        return a.empty() || b.empty() ? a.empty() == b.empty() : *a.m_items == *b.m_items;
    }

private:
    Items& own()
    {
        if (!m_items)
            m_items = std::make_unique<Items>();
        return *m_items;
    }

    std::unique_ptr<Items> m_items;
};

} // namespace vo::detail
/// @endcond

/// The library's sequence container: a double-ended queue with checked index access.
///
/// Adding at either end keeps references to the other elements valid. An empty one takes no memory of its own. A value:
/// copies copy the elements, a moved-from one is empty, and moving never throws. Not synchronised.
template <typename T>
class VoDeque : public VoContainerBase<VoDeque<T>, vo::detail::LazyDeque<T>>
{
    using Items = vo::detail::LazyDeque<T>;
    using Base = VoContainerBase<VoDeque<T>, Items>;

public:
    using typename Base::const_reference;
    using typename Base::reference;

    /// Empty.
    VoDeque() = default;
    /// Holds copies of the listed values.
    VoDeque(std::initializer_list<T> values)
        : Base(Items(std::in_place, values))
    {
    }
    /// Holds `count` copies of `value`.
    /// @throws VoBadAllocException when they cannot be held
    explicit VoDeque(std::size_t count, const T& value = T())
        : Base(Base::Allocated([&] { return Items(std::in_place, count, value); }))
    {
    }
    /// Holds copies of the elements of a range.
    template <typename Iterator, typename = typename std::iterator_traits<Iterator>::iterator_category>
    VoDeque(Iterator first, Iterator last)
        : Base(Items(std::in_place, first, last))
    {
    }

    void pushFront(const T& value) { this->m_items.push_front(value); }       ///< Prepends a copy.
    void pushFront(T&& value) { this->m_items.push_front(std::move(value)); } ///< Prepends by move.
    void push_front(const T& value) { pushFront(value); }                     ///< As pushFront.
    void push_front(T&& value) { pushFront(std::move(value)); }               ///< As pushFront.

    /// Removes the first element.
    /// @throws VoIndexOutOfBoundsException when there is none
    void popFront()
    {
        this->requireNotEmpty();
        this->m_items.pop_front();
    }
    void pop_front() { popFront(); } ///< As popFront.

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
};
