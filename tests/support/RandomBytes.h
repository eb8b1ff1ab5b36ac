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

} // namespace vo::test
