#include "Fuzz.h"

#include <Core/VoByteArray.h>

#include <cstring>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    VoByteArray bytes;
    bytes.resize(size);
    if (size > 0)
        std::memcpy(bytes.data(), data, size);
    // A prefix that promises much is refused by the installer before it gets here.
    if (size < 4 || data[0] == 0)
        Allow([&] { bytes.decompress(); });

    const VoByteArray packed = bytes.compress(size % 11 == 10 ? -1 : static_cast<int>(size % 11));
    Require(packed.decompress() == bytes, "what was compressed comes back");
    return 0;
}
