#include <Documents/VoZipper.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <Documents/detail/UnzipPlan.h>
#include <Documents/detail/VoZipArchiveInternal.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <vector>

using vo::detail::NativeFile;
using vo::detail::UnzipPlan;

namespace {

constexpr std::size_t BlockSize = std::size_t{64} * 1024;

/// A file and the name that it gets in the archive.
struct Source
{
    VoFilePath file;
    VoFilePath name;
};

std::vector<Source> FilesBelow(const VoFilePath& source, const VoFilePath& archive)
{
    const VoDirectoryPath directory = VoDirectoryPath::FromText(source.path());
    const VoFilePath base = directory.toFilePath();
    std::vector<Source> files;
    std::unordered_set<VoFilePath> names;
    VoFileSystem::ForEachFile(directory, true, false, [&](const VoFilePath& file) {
        if (file.filename() == archive.filename() && VoFileSystem::Same(file, archive))
            return;
        files.push_back({file, file.relative(base)});
        if (!names.insert(files.back().name).second)
            throw VoValidationException("Invalid path in zip archive: " + files.back().name.path());
    });
    return files;
}

std::vector<Source> FilesToZip(const VoFilePath& source, const VoFilePath& archive)
{
    if (VoFileSystem::IsDirectory(source))
        return FilesBelow(source, archive);
    if (!VoFileSystem::Exists(source))
        throw vo::detail::Because(std::make_error_code(std::errc::no_such_file_or_directory),
                                  VoCannotOpenFileException(source));
    return {{source, VoFilePath(source.filename().toString())}};
}

/// A file that is being packed.
class OpenSource
{
public:
    explicit OpenSource(const VoFilePath& path)
        : m_path(path)
    {
        const std::filesystem::path native = vo::detail::ToNative(path);
        std::error_code error;
        m_file = NativeFile::OpenForReading(native, error);
        if (error)
            throw vo::detail::Because(error, VoCannotOpenFileException(path));
        m_size = std::filesystem::file_size(native, error);
        if (error)
            m_size = 0;
    }

    std::uint64_t size() const { return m_size; } // when it was opened; 0 when that cannot be told

    void copyTo(VoZipFile& entry, char* block)
    {
        std::error_code error;
        while (const std::size_t count = m_file.read(block, BlockSize, error))
            entry.writeFrom(block, count);
        if (error)
            throw vo::detail::Completed(VoIOException("Error occurred on reading from file"), m_path.path(),
                                        VoString(error.message()));
    }

private:
    const VoFilePath& m_path;
    NativeFile m_file;
    std::uint64_t m_size = 0;
};

// The directory that must exist for an item.
VoDirectoryPath DirectoryOf(const UnzipPlan::Item& item)
{
    return item.isDirectory ? VoDirectoryPath::FromText(item.target.path()) : item.target.parent();
}

/// Unpacks what a plan says.
class Unpacker
{
public:
    explicit Unpacker(const VoFilePath& directory)
        : m_directory(directory.path())
        , m_block(new char[BlockSize])
    {
    }

    // Links that are there already must not lead a file out of the directory.
    void requireInside(const UnzipPlan& plan, const vo::detail::ZipInput& archive) const
    {
        std::unordered_map<std::string, bool> exists; // by directory
        std::string last;
        for (const UnzipPlan::Item& item : plan.items) {
            const std::string place = DirectoryOf(item).path().toStdString();
            if (place == last) // entries come directory by directory
                continue;
            if (!leadsInside(place, exists))
                throw VoValidationException("Invalid path in zip archive: " +
                                            VoString(std::string(archive.name(item.index))));
            last = place;
        }
    }

    void requireRoom(const UnzipPlan& plan) const
    {
        if (plan.bytes > VoFileSystem::FreeSpace(m_directory))
            throw VoFileException("Not enough disk space to unzip archive", m_directory);
    }

    void makeDirectory(const VoDirectoryPath& directory)
    {
        const std::string& text = directory.path().toStdString();
        if (text == m_lastMade || !m_made.insert(m_lastMade = text).second)
            return;
        VoFileSystem::CreateDirectory(directory, true);
    }

    void write(VoZipFile& entry, const VoFilePath& target)
    {
        makeDirectory(target.parent());
        std::unique_ptr<VoAtomicFileWriter> file;
        try {
            file = std::make_unique<VoAtomicFileWriter>(target);
        } catch (const VoInvalidPathFileException&) { // a directory bears the name
            throw VoCannotOpenFileException(target);
        }
        while (!entry.atEnd())
            file->write(m_block.get(), entry.readInto(m_block.get(), BlockSize));
        file->commit(VoAtomicFileWriter::Durability::LeftToSystem);
    }

private:
    // Follows a directory from the target down, as far as there is anything.
    bool leadsInside(const std::string& place, std::unordered_map<std::string, bool>& exists) const
    {
        for (std::size_t end = place.find('\\', m_directory.path().size()); end != std::string::npos;
             end = place.find('\\', end + 1)) {
            const std::string part = place.substr(0, end);
            const auto [known, isNew] = exists.emplace(part, false);
            if (!isNew && !known->second)
                return true;
            if (!isNew)
                continue;
            const VoFilePath path = VoFilePath::CreateUnchecked(VoString(part));
            std::error_code ignored;
            const auto status = vo::detail::LinkStatus(vo::detail::ToNative(path), ignored);
            known->second = std::filesystem::exists(status);
            if (std::filesystem::is_symlink(status) && !vo::detail::IsInsideCanonical(m_directory, path))
                return false;
        }
        return true;
    }

    VoDirectoryPath m_directory;
    std::unique_ptr<char[]> m_block;
    std::unordered_set<std::string> m_made;
    std::string m_lastMade;
};

} // namespace

void VoZipper::Zip(const VoFilePath& archivePath, const VoFilePath& source)
{
    const std::vector<Source> files = FilesToZip(source, archivePath);
    vo::detail::About(archivePath.path(), [&] {
        VoAtomicFileWriter replacement(archivePath);
        VoZipArchive archive(replacement.temporary(), VoZipArchive::Write);
        archive.internal().path = archivePath;
        const std::unique_ptr<char[]> block(new char[BlockSize]);
        for (const auto& [path, name] : files) {
            OpenSource file(path);
            file.copyTo(*archive.openForWriting(name, VoZipArchive::Default, file.size()).lock(), block.get());
        }
        archive.close();
        replacement.commit();
    });
}

void VoZipper::Unzip(const VoFilePath& archivePath, const VoFilePath& targetDirectory)
{
    if (!targetDirectory.isDirectory())
        throw VoFileException("Cannot unzip as target path is not a directory", targetDirectory, VoFilePath());
    VoZipArchive archive(archivePath, VoZipArchive::Read);
    vo::detail::ZipInput& input = *archive.internal().input;
    if (!input.complete()) // what is missing must not go unnoticed
        throw VoInvalidParameterException("Cannot open zip archive file: Unzip bad zip file in " + archivePath.path());
    const UnzipPlan plan = PlanUnzip(input, targetDirectory);
    Unpacker unpacker(targetDirectory);
    unpacker.requireInside(plan, input);
    unpacker.requireRoom(plan);
    for (const UnzipPlan::Item& item : plan.items) {
        if (item.isDirectory)
            unpacker.makeDirectory(DirectoryOf(item));
        else
            unpacker.write(*archive.openEntry(item.index).lock(), item.target);
    }
}
