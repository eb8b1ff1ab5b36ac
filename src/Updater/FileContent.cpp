#include <Updater/FileContent.h>

#include <Core/Sha3Hasher.h>
#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <IO/VoIOException.h>
#include <Threading/VoStopFlag.h>
#include <Updater/SourceTree.h>

#include <algorithm>
#include <vector>

namespace vo::updater::detail {

bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum)
{
    try {
        return VoFileSystem::Checksum(path) == checksum;
    } catch (const VoFileException&) {
        return false;
    }
}

bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum, const VoStopFlag& stop)
{
    if (!IsRegularFile(path))
        return false;
    constexpr std::size_t blockSize = 256 * 1024;
    try {
        VoFileInputByteStream stream(path);
        std::vector<char> block(std::min(blockSize, static_cast<std::size_t>(VoFileSystem::FileSize(path)) + 1));
        vo::detail::Sha3 digest;
        while (const std::size_t count = stream.read(block.data(), block.size())) {
            stop.throwIfStopped();
            digest.add(block.data(), count);
        }
        return stream.isOpen() && digest.finish() == checksum;
    } catch (const VoFileException&) {
        return false;
    } catch (const VoIOException&) {
        return false;
    }
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
