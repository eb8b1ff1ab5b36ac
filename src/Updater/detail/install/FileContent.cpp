#include <Updater/detail/install/FileContent.h>

#include <Core/VoChecksum.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoStopFlag.h>

#include <algorithm>
#include <memory>
#include <system_error>
#include <vector>

namespace vo::updater::detail {

bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum)
{
    return HasChecksum(path, checksum, VoStopFlag());
}

bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum, const VoStopFlag& stop)
{
    constexpr std::size_t blockSize = 64 * 1024; // larger ones are fetched from the system for each file
    std::error_code error;
    vo::detail::NativeFile file = vo::detail::NativeFile::OpenForReading(vo::detail::ToNative(path), error);
    if (error)
        return false;
    const std::unique_ptr<char[]> block(new char[blockSize]);
    vo::detail::Sha3 digest;
    while (const std::size_t count = file.read(block.get(), blockSize, error)) {
        stop.throwIfStopped();
        digest.add(block.get(), count);
    }
    return !error && digest.finish() == checksum;
}

bool HaveSameContent(const VoFilePath& a, const VoFilePath& b)
{
    if (VoFileSystem::FileSize(a) != VoFileSystem::FileSize(b))
        return false;
    constexpr std::size_t blockSize = 256 * 1024;
    std::vector<char> blockA(blockSize);
    std::vector<char> blockB(blockSize);
    VoFileInputByteStream streamA(a);
    VoFileInputByteStream streamB(b);
    for (;;) {
        const std::size_t countA = streamA.read(blockA.data(), blockSize);
        const std::size_t countB = streamB.read(blockB.data(), blockSize);
        if (countA != countB ||
            !std::equal(blockA.begin(), blockA.begin() + static_cast<std::ptrdiff_t>(countA), blockB.begin()))
            return false;
        if (countA < blockSize)
            return true;
    }
}

} // namespace vo::updater::detail
