#pragma once

#include <LogCapture.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/AdvertisedPackageListing.h>

#include <QtCore/QByteArray>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>

namespace vo::test {

inline std::string ReadBytes(const VoFilePath& path)
{
    std::ifstream stream(vo::detail::ToNative(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

inline void WriteBytes(const VoFilePath& path, const std::string& bytes)
{
    const auto native = vo::detail::ToNative(path);
    std::filesystem::create_directories(native.parent_path());
    std::ofstream(native, std::ios::binary) << bytes;
}

inline VoChecksum ChecksumOf(const std::string& bytes)
{
    return VoChecksum(QByteArray(bytes.data(), static_cast<int>(bytes.size())));
}

inline VoDownloadSize Bytes(std::int64_t count)
{
    return VoDownloadSize(count);
}

/// Files by their paths with "/".
using Files = Tree;

/// A directory for one test, removed with all it holds.
class UpdaterTest : public testing::Test
{
protected:
    VoDirectoryPath directory(const char* name) const { return m_scratch.path().directory(name); }
    VoFilePath file(const char* name) const { return m_scratch.path().appended(VoFilePath(name)); }

    /// The files below a directory, without the directories.
    static Files FilesBelow(const VoDirectoryPath& directory)
    {
        Files found = TreeOf(vo::detail::ToNative(directory));
        for (auto entry = found.begin(); entry != found.end();)
            entry = entry->first.back() == '/' ? found.erase(entry) : std::next(entry);
        return found;
    }

    LogCapture log;

private:
    VoTemporaryDir m_scratch;
};

/// A file listing of one piece (or none when empty), which need not belong to a chunk that exists.
inline vo::updater::AdvertisedFileListing FileListing(const char* id, const char* target, const std::string& content,
                                                      const char* chunkID = "chunk")
{
    VoDeque<vo::updater::ChunkReferenceListing> pieces;
    if (!content.empty())
        pieces.pushBack({VoUUID(chunkID), 0, content.size(), 0});
    return {VoFilePath(target), pieces, VoUUID(id), ChecksumOf(content),
            Bytes(static_cast<std::int64_t>(content.size()))};
}

inline vo::updater::ChunkListing Chunk(const char* id, std::int64_t size = 100)
{
    return {VoUUID(id), ChecksumOf(id), Bytes(size), VoFilePath("chunks\\" + VoString(id) + ".vochk")};
}

inline vo::updater::AdvertisedPackageListing
Package(const char* packageID, const char* versionID,
        std::initializer_list<vo::updater::AdvertisedFileListing> files = {},
        std::initializer_list<vo::updater::ChunkListing> chunks = {})
{
    vo::updater::AdvertisedPackageListing package(VoUUID(packageID), VoUUID(versionID), "Examples",
                                                  VoVersion(1, 2, 3, VoVersion::Release));
    for (const auto& file : files)
        package.add(file);
    for (const auto& chunk : chunks)
        package.add(chunk);
    return package;
}

} // namespace vo::test
