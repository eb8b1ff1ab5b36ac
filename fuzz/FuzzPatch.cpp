#include "Fuzz.h"

#include <Updater/detail/files/FilePatch.h>

#include <algorithm>

using namespace vo::fuzz;
using namespace vo::updater::detail;

namespace {

constexpr std::size_t MadeSize = 4096;

std::string Applied(const VoFilePath& before, const VoFilePath& patch, std::size_t size)
{
    std::string made;
    ApplyPatch(before, patch, size, [&](const char* bytes, std::size_t count) {
        made.append(bytes, count);
        Require(made.size() <= size, "a patch makes no more than was asked for");
    });
    Require(made.size() == size, "a patch that fits makes as much as was asked for");
    return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    // As a patch of somebody's, of the old content that the seeds take.
    std::string old;
    for (int i = 0; i < 600; ++i)
        old += static_cast<char>('a' + i * i % 23);
    const VoFilePath before = scratch.write("before", reinterpret_cast<const std::uint8_t*>(old.data()), old.size());
    const VoFilePath patch = scratch.write("patch", data, size);
    for (const std::size_t made : {std::size_t{700}, MadeSize})
        Allow([&] { Applied(before, patch, made); });

    // As two contents, in small windows.
    const std::size_t cut = size == 0 ? 0 : std::min<std::size_t>(data[0] * size / 255, size);
    const VoFilePath first = scratch.write("first", data, cut);
    const VoFilePath second = scratch.write("second", data + cut, size - cut);
    MakePatch(first, second, patch, [] {}, {256, 100});
    Require(Applied(first, patch, size - cut) == scratch.read(second), "a patch makes the new content");
    return 0;
}
