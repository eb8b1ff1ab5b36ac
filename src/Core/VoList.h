#pragma once

#include <Core/VoContainerBase.h>

#include <list>

/// A linked list in the interface of VoDeque, without index access. References stay valid until their element is
/// removed.
template <typename T>
class VoList : public VoContainerBase<VoList<T>, std::list<T>>
{
    using Base = VoContainerBase<VoList<T>, std::list<T>>;

public:
    /// Empty.
    VoList() = default;
    /// Holds copies of the listed values.
    VoList(std::initializer_list<T> values)
        : Base(std::list<T>(values))
    {
    }

    void pushFront(const T& value) { this->m_items.push_front(value); }       ///< Prepends a copy.
    void pushFront(T&& value) { this->m_items.push_front(std::move(value)); } ///< Prepends by move.

    /// Removes the first element.
    /// @throws VoIndexOutOfBoundsException when there is none
    void popFront()
    {
        this->requireNotEmpty();
        this->m_items.pop_front();
    }
};
