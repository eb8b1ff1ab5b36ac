#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace vo::test {

/// Bytes of an alphabet, or any; the same for the same state of the engine.
inline std::string RandomBytes(std::mt19937& random, std::size_t size, const std::string& alphabet = {})
{
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = alphabet.empty() ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
    return bytes;
}

/// Bytes of so many different values, the same for the same seed: all of them compress badly, few compress well.
inline std::string Noise(std::size_t size, unsigned seed, unsigned values = 256)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() % values);
    return bytes;
}

} // namespace vo::test
