#pragma once

#include <Core/VoException.h>

#include <cstddef>
#include <utility>
#include <vector>

/// The last values of a series: up to a capacity, then each new one takes the place of the oldest.
template <typename T>
class VoSampleRing
{
public:
    /// An empty ring of at most `capacity` values.
    explicit VoSampleRing(std::size_t capacity)
        : m_capacity(capacity)
    {
    }

    /// Adds the newest value.
    /// @throws VoBufferOverflowException when the capacity is 0
    void add(T value)
    {
        if (m_capacity == 0)
            throw VoBufferOverflowException();
        if (m_values.size() < m_capacity) {
            m_values.push_back(std::move(value));
            return;
        }
        m_values[m_oldest] = std::move(value);
        m_oldest = (m_oldest + 1) % m_capacity;
    }

    std::size_t size() const noexcept { return m_values.size(); } ///< The number of values held.

    /// The value added first of those held.
    /// @throws VoBufferUnderflowException when there is none
    const T& oldest() const
    {
        requireValue();
        return m_values[m_oldest];
    }

    /// The value added last.
    /// @throws VoBufferUnderflowException when there is none
    const T& newest() const
    {
        requireValue();
        return m_values[(m_oldest + m_values.size() - 1) % m_values.size()];
    }

private:
    void requireValue() const
    {
        if (m_values.empty())
            throw VoBufferUnderflowException();
    }

    std::size_t m_capacity;
    std::size_t m_oldest = 0;
    std::vector<T> m_values;
};
