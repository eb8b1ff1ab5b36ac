#include "Fuzz.h"

#include <Core/VoChecksum.h>
#include <Core/detail/Sha3Batch.h>

#include <QtCore/QByteArray>

#include <algorithm>
#include <cstring>
#include <vector>

using namespace vo::fuzz;

namespace {

// By turns a byte that says how long a message is, and the message, as far as the input has it; its last byte says in
// what pieces they are read.
std::vector<std::string> Messages(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string> messages;
    while (size > 0) {
        const std::size_t length = std::min<std::size_t>(*data * 5U, size - 1);
        messages.emplace_back(reinterpret_cast<const char*>(data + 1), length);
        data += 1 + length;
        size -= 1 + length;
    }
    return messages;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::string> messages = Messages(data, size);
    const std::size_t piece = size == 0 ? 1 : 1 + data[size - 1];
    for (const std::size_t lanes : vo::detail::Sha3Batch::Available()) {
        std::vector<std::size_t> places(messages.size());
        std::size_t done = 0;
        vo::detail::Sha3Batch(lanes).hash(
            messages.size(),
            [&](std::size_t message, char* room, std::size_t roomSize) {
                const std::string& text = messages[message];
                const std::size_t count = std::min({roomSize, piece, text.size() - places[message]});
                std::memcpy(room, text.data() + places[message], count);
                places[message] += count;
                return count;
            },
            [&](std::size_t message, const VoChecksum& digest) {
                ++done;
                Require(digest == VoChecksum(QByteArray::fromStdString(messages[message])), "the framework's digest");
            });
        Require(done == messages.size(), "a digest for each message");
    }
    return 0;
}
