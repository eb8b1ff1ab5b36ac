#include <Updater/FileContent.h>

#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>

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
