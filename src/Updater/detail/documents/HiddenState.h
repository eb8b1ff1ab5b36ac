#pragma once

#include <memory>

// The hidden state of the updater's values: a move takes it away without allocating, and an object without state reads
// as one with default state.

namespace vo::updater::detail {

template <typename T>
const T& Read(const std::unique_ptr<T>& state)
{
    static const T& empty = *new T; // outlives all static objects
    return state ? *state : empty;
}

template <typename T>
T& Write(std::unique_ptr<T>& state)
{
    if (!state)
        state = std::make_unique<T>();
    return *state;
}

template <typename T>
std::unique_ptr<T> Copy(const std::unique_ptr<T>& state)
{
    return state ? std::make_unique<T>(*state) : nullptr;
}

} // namespace vo::updater::detail
