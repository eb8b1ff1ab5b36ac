#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoNativeName.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageBuilder.h>
#include <Updater/UpdatePackageBuilder.h>

#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// @file
/// What publishing and installing a tree cost without the library, and a publisher that packs in the order of paths.
///
///     VoCoreRoadFloorBenchmark publish TREE CHUNKS     compresses the files' bytes in chunks of 4 MB, and digests both
///     VoCoreRoadFloorBenchmark install TREE CHUNKS TO  uncompresses the chunks, digests, writes files of the tree's
///                                                      sizes, and digests these again
///     VoCoreRoadFloorBenchmark changed OLD NEW         prints the bytes of the changed files, compressed alone
///     VoCoreRoadFloorBenchmark sorted DECLARATIONS SIZE VERSION TREE [DEFINITION]
///                                                      publishes in chunks of SIZE in the order of paths, after
///                                                      the given release

namespace fs = std::filesystem;

namespace {

constexpr std::size_t chunkSize = 4 << 20;

std::vector<std::string> Files(const fs::path& tree)
{
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        if (entry.is_regular_file())
            files.push_back(entry.path().lexically_relative(tree).generic_string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string Read(const fs::path& file)
{
    std::ifstream in(file, std::ios_base::binary);
    std::string bytes(static_cast<std::size_t>(fs::file_size(file)), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

void Digest(const char* data, std::size_t size)
{
    QCryptographicHash hash(QCryptographicHash::Sha3_256);
    hash.addData(data, static_cast<int>(size));
    hash.result();
}

QByteArray Compressed(const std::string& chunk)
{
    return qCompress(reinterpret_cast<const uchar*>(chunk.data()), static_cast<int>(chunk.size()), 6);
}

fs::path ChunkName(const fs::path& chunks, int number)
{
    char name[16];
    std::snprintf(name, sizeof name, "%06d", number);
    return chunks / name;
}

void Publish(const fs::path& tree, const fs::path& chunks)
{
    fs::create_directories(chunks);
    std::string chunk;
    int number = 0;
    const auto write = [&] {
        const QByteArray bytes = Compressed(chunk);
        Digest(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        std::ofstream(ChunkName(chunks, number++), std::ios_base::binary).write(bytes.constData(), bytes.size());
        chunk.clear();
    };
    for (const std::string& name : Files(tree)) {
        const std::string bytes = Read(tree / name);
        Digest(bytes.data(), bytes.size());
        for (std::size_t i = 0; i < bytes.size();) {
            const std::size_t count = std::min(chunkSize - chunk.size(), bytes.size() - i);
            chunk.append(bytes, i, count);
            i += count;
            if (chunk.size() == chunkSize)
                write();
        }
    }
    if (!chunk.empty())
        write();
}

void Install(const fs::path& tree, const fs::path& chunks, const fs::path& target)
{
    QByteArray chunk;
    int position = 0;
    int number = 0;
    for (const std::string& name : Files(tree)) {
        fs::create_directories((target / name).parent_path());
        std::ofstream out(target / name, std::ios_base::binary);
        QCryptographicHash hash(QCryptographicHash::Sha3_256);
        for (auto left = static_cast<std::int64_t>(fs::file_size(tree / name)); left > 0;) {
            if (position == chunk.size()) {
                const std::string bytes = Read(ChunkName(chunks, number++));
                chunk = qUncompress(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()));
                position = 0;
            }
            const int count = static_cast<int>(std::min<std::int64_t>(left, chunk.size() - position));
            hash.addData(chunk.constData() + position, count);
            out.write(chunk.constData() + position, count);
            position += count;
            left -= count;
        }
        hash.result();
    }
    for (const std::string& name : Files(tree)) {
        const std::string bytes = Read(target / name);
        Digest(bytes.data(), bytes.size());
    }
}

void Changed(const fs::path& old, const fs::path& fresh)
{
    std::string bytes;
    for (const std::string& name : Files(fresh)) {
        const std::string content = Read(fresh / name);
        if (!fs::exists(old / name) || Read(old / name) != content)
            bytes += content;
    }
    std::size_t size = 0;
    for (std::size_t i = 0; i < bytes.size(); i += chunkSize)
        size += static_cast<std::size_t>(Compressed(bytes.substr(i, chunkSize)).size());
    std::printf("%zu\n", size);
}

void PublishSorted(char** arguments, int count)
{
    using namespace vo::updater;
    const auto path = [&](int i) { return vo::FromStdPath(fs::absolute(arguments[i])); };
    const VoVersion version = VoVersion::Deserialize(arguments[4]);
    const auto size = static_cast<std::uint64_t>(std::atoll(arguments[3]));
    std::unique_ptr<AbstractPackageBuilder> builder;
    if (count > 6)
        builder = std::make_unique<UpdatePackageBuilder>(*AdvertisedPackageListing::Open(path(6)), version, size, 6);
    else
        builder = std::make_unique<PackageBuilder>(VoUUID("sorted"), "sorted", version, size, 6);
    builder->add(VoDirectoryPath(VoString(fs::absolute(arguments[5]).string() + "/")));
    builder->finalise(path(2));
}

} // namespace

int main(int count, char** arguments)
{
    const std::string command = count > 1 ? arguments[1] : "";
    if (command == "publish" && count == 4)
        Publish(arguments[2], arguments[3]);
    else if (command == "install" && count == 5)
        Install(arguments[2], arguments[3], arguments[4]);
    else if (command == "changed" && count == 4)
        Changed(arguments[2], arguments[3]);
    else if (command == "sorted" && (count == 6 || count == 7))
        PublishSorted(arguments, count);
    else
        return 2;
    return 0;
}
