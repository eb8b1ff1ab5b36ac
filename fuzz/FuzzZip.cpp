#include "Fuzz.h"

#include <Core/VoDeque.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <Documents/VoZipper.h>
#include <Documents/detail/UnzipPlan.h>
#include <Documents/detail/VoZipArchiveInternal.h>

#include <filesystem>

using namespace vo::fuzz;

namespace {

constexpr std::uint64_t MostBytes = 1 << 20; // what a small input unpacks to is bounded by its claims alone

std::uint64_t readSome(VoZipArchive& archive, const VoFilePath& name, std::uint64_t most)
{
    std::uint64_t count = 0;
    const auto entry = archive.open(name);
    const std::uint64_t claimed = archive.internal().input->remaining();
    while (!entry->atEnd() && count < most) {
        const std::size_t taken = entry->read(10000).size();
        Require(taken > 0, "a read before the end gives bytes or throws");
        count += taken;
    }
    Require(count <= claimed, "no entry gives more than it claims");
    return count;
}

void requirePlanInside(VoZipArchive& archive, const VoFilePath& target)
{
    const vo::detail::UnzipPlan plan = vo::detail::PlanUnzip(*archive.internal().input, target);
    for (const auto& item : plan.items)
        Require(target.isAncestor(item.target), "everything is unpacked below the target");
    if (plan.bytes > MostBytes)
        throw VoValidationException("too much for a short run");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    const VoFilePath file = scratch.write("a.zip", data, size);
    const VoDirectoryPath target = scratch.directory().directory("deep").directory("out");
    Allow([&] {
        VoZipArchive archive(file, VoZipArchive::Read);
        std::uint64_t count = 0;
        for (const VoFilePath& name : archive.paths())
            if (count < MostBytes)
                Allow([&] { count += readSome(archive, name, MostBytes - count); });
        requirePlanInside(archive, target.toFilePath());
        VoZipper::Unzip(file, target.toFilePath());
    });
    const auto deep = vo::detail::ToNative(scratch.directory().directory("deep"));
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(deep, ignored))
        Require(entry.path().filename() == "out", "nothing appears outside of the target");
    std::filesystem::remove_all(deep, ignored);
    return 0;
}
