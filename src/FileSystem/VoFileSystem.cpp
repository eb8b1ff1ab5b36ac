#include <FileSystem/VoFileSystem.h>

#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Callback.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>
#include <FileSystem/detail/PathText.h>
#include <FileSystem/detail/TemporaryName.h>

#include <QtCore/QStandardPaths>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;
using vo::detail::LinkStatus;
using vo::detail::MeansMissing;
using vo::detail::RemoveNative;
using vo::detail::RenameNative;
using vo::detail::TargetStatus;

namespace {

// The one translation of the system's and the standard library's failures.
template <typename Path>
[[noreturn]] void Fail(const char* operation, const std::error_code& error, const Path& path)
{
    throw vo::detail::Because(error, VoFileException(operation + VoString(": ") + VoString(error.message()), path));
}

[[noreturn]] void Fail(const char* prefix, const std::error_code& error, const VoFilePath& from, const VoFilePath& to)
{
    throw vo::detail::Because(error, VoFileException(prefix + VoString(error.message()), from, to));
}

template <typename Operation>
auto Guarded(Operation operation)
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        throw VoInvalidCallException(VoString(e.what()));
    }
}

template <typename Path>
fs::file_status Status(const Path& path, const char* operation)
{
    std::error_code error;
    const fs::file_status status = TargetStatus(vo::detail::ToNative(path), error);
    if (error && !MeansMissing(error))
        Fail(operation, error, path);
    return error ? fs::file_status(fs::file_type::not_found) : status;
}

template <typename Path>
bool ExistsImpl(const Path& path)
{
    return !path.isNull() && Guarded([&] { return fs::exists(Status(path, "exists")); });
}

template <typename Path>
bool IsDirectoryImpl(const Path& path)
{
    return !path.isNull() && Guarded([&] { return fs::is_directory(Status(path, "status")); });
}

// Without the separator at its end, which would make the system follow a link and miss names that are new.
template <typename Path>
fs::path NativeName(const Path& path)
{
    fs::path native = vo::detail::ToNative(path);
    return native.has_filename() || !native.has_relative_path() ? native : native.parent_path();
}

template <typename Path>
bool RemoveImpl(const Path& path)
{
    return Guarded([&] {
        std::error_code error;
        const bool removed = RemoveNative(NativeName(path), error);
        if (error && !MeansMissing(error))
            Fail("remove", error, path);
        return removed && !error;
    });
}

// True for what stands for a whole volume, in whatever words: "\", "C:\", "\tmp\..".
bool IsVolume(const VoDirectoryPath& directory, const fs::path& native)
{
    const std::string_view text = vo::detail::Bytes(directory.path());
    if (vo::detail::AnchorLength(text) >= text.size())
        return true;
    std::error_code error;
    if (fs::is_symlink(LinkStatus(native, error)))
        return false; // only the link is removed
    const fs::path real = vo::detail::RealPath(native, error);
    return !error && !real.has_relative_path();
}

enum class CopyPurpose
{
    Duplicate,  // the source stays
    Replacement // the source goes: its time is kept, and the copy has reached the disk before
};

// In blocks of our own: the standard library's copy may take a disk that becomes full on the way for the end of the
// file.
void CopyContent(vo::detail::NativeFile& from, vo::detail::NativeFile& to, std::error_code& error)
{
    const std::unique_ptr<char[]> block(new char[vo::detail::FileBlockSize]);
    for (;;) {
        const std::size_t count = from.read(block.get(), vo::detail::FileBlockSize, error);
        if (error || count == 0)
            return;
        to.write(block.get(), count, error);
        if (error)
            return;
    }
}

// Some volumes have no permissions or times to set; that does not spoil a copy.
void CopyAttributes(const fs::path& from, const fs::path& to, CopyPurpose purpose)
{
    std::error_code unknown;
    const fs::file_status status = fs::status(from, unknown);
    std::error_code ignored;
    if (!unknown)
        fs::permissions(to, status.permissions(), ignored);
    if (purpose == CopyPurpose::Duplicate)
        return;
    const fs::file_time_type time = fs::last_write_time(from, unknown);
    if (!unknown)
        fs::last_write_time(to, time, ignored);
}

// Puts a finished file in its place, or removes it when there was an error or that fails.
std::error_code Place(const fs::path& finished, const fs::path& target, std::error_code error)
{
    if (!error)
        RenameNative(finished, target, error);
    std::error_code ignored;
    if (error)
        RemoveNative(finished, ignored);
    return error;
}

// Copies a regular file to a name beside the target and renames it, so that the target is whole or as it was.
std::error_code CopyWhole(const fs::path& from, const fs::path& to, CopyPurpose purpose)
{
    std::error_code error;
    vo::detail::NativeFile source = vo::detail::NativeFile::OpenForReading(from, error);
    if (error)
        return error;
    vo::detail::NativeFile copy;
    fs::path beside;
    error = vo::detail::MakeUnderNewName([&] {
        beside = vo::detail::SiblingPath(to);
        std::error_code made;
        copy = vo::detail::NativeFile::CreateNew(beside, vo::detail::NewFileAccess::OwnerAtFirst, made);
        return made;
    });
    if (error)
        return error;
    CopyContent(source, copy, error);
    if (!error)
        CopyAttributes(from, beside, purpose);
    if (!error && purpose == CopyPurpose::Replacement)
        copy.sync(error);
    std::error_code closing;
    copy.close(closing);
    return Place(beside, to, error ? error : closing);
}

std::error_code CopyLink(const fs::path& from, const fs::path& to)
{
    fs::path beside;
    const std::error_code error = vo::detail::MakeUnderNewName([&] {
        beside = vo::detail::SiblingPath(to);
        std::error_code made;
        fs::copy_symlink(from, beside, made);
        return made;
    });
    return error ? error : Place(beside, to, {});
}

// Moves a file or a link to another volume.
std::error_code MoveByCopy(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    const fs::file_status status = LinkStatus(from, error);
    if (error)
        return error;
    if (fs::is_directory(status))
        return std::make_error_code(std::errc::cross_device_link);
    error = fs::is_symlink(status) ? CopyLink(from, to) : CopyWhole(from, to, CopyPurpose::Replacement);
    if (error)
        return error;
    std::error_code ignored; // not every volume can do that
    vo::detail::SyncDirectory(to.parent_path(), ignored);
    RemoveNative(from, error);
    return error;
}

// Whether a directory holds a name in just this spelling.
bool IsListed(const fs::path& name, std::error_code& error)
{
    const fs::path directory = name.has_parent_path() ? name.parent_path() : fs::path(".");
    fs::directory_iterator iterator(directory, error);
    for (; !error && iterator != fs::directory_iterator(); iterator.increment(error))
        if (iterator->path().filename() == name.filename())
            return true;
    return false;
}

// Renaming one name of a file to another name of the same file succeeds and does nothing. The source's name goes all
// the same, unless the two are one: by way of links to directories, or on a volume that ignores case.
std::error_code RemoveOtherName(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    if (!fs::exists(LinkStatus(from, error)))
        return {};
    const fs::path here(".");
    const bool areInOneDirectory = fs::equivalent(from.has_parent_path() ? from.parent_path() : here,
                                                  to.has_parent_path() ? to.parent_path() : here, error);
    if (error || (areInOneDirectory && from.filename() == to.filename()) || !IsListed(from, error))
        return error;
    if (fs::equivalent(from, to, error) && !error)
        RemoveNative(from, error);
    return error;
}

bool IsOlder(const fs::path& file, const fs::path& than)
{
    std::error_code error;
    const fs::file_time_type a = fs::last_write_time(file, error);
    if (error)
        return true; // a link that leads nowhere has no time
    const fs::file_time_type b = fs::last_write_time(than, error);
    return !error && a < b;
}

// What keeps a file from being copied, whatever is at the target; the words are those of opening it.
std::error_code Uncopyable(const fs::path& from)
{
    std::error_code error;
    const fs::file_status status = TargetStatus(from, error);
    if (error || fs::is_regular_file(status))
        return error;
    return std::make_error_code(fs::is_directory(status) ? std::errc::is_a_directory
                                                         : std::errc::operation_not_supported);
}

// False when the target is to be left as it is; an error when the copy is refused.
bool DecideCopy(const fs::path& from, const fs::path& to, VoFileSystem::CopyOptions options, std::error_code& error)
{
    error = Uncopyable(from);
    if (error)
        return true;
    std::error_code ignored;
    if (!fs::exists(LinkStatus(to, ignored)))
        return true;
    if (fs::is_directory(TargetStatus(to, ignored))) {
        error = std::make_error_code(std::errc::is_a_directory);
        return true;
    }
    if (options == VoFileSystem::SkipExisting)
        return false;
    const bool replaces = options == VoFileSystem::OverwriteExisting || options == VoFileSystem::UpdateExisting;
    if (!replaces || fs::equivalent(from, to, ignored))
        error = std::make_error_code(std::errc::file_exists);
    return error || options != VoFileSystem::UpdateExisting || IsOlder(to, from);
}

// One name in a directory, as read before anything is delivered.
struct Entry
{
    fs::path name;
    bool isDirectory;
};

// The iterator has mostly been told already what a name stands for; but on Windows it takes links for what they lead to.
bool IsDirectoryItself(const fs::directory_entry& entry, std::error_code& error)
{
    if (entry.is_symlink(error) || !entry.is_directory(error))
        return false;
    return fs::path::preferred_separator == '/' || fs::is_directory(LinkStatus(entry.path(), error));
}

std::vector<Entry> ReadDirectory(const VoFilePath& directory, bool mayHaveVanished)
{
    return Guarded([&] {
        std::vector<Entry> entries;
        std::error_code error;
        const fs::path native = vo::detail::ToNative(directory);
        if (native.empty()) // what systems say of it differs
            Fail("directory_iterator", std::make_error_code(std::errc::no_such_file_or_directory), directory);
        fs::directory_iterator iterator(native, error);
        while (!error && iterator != fs::directory_iterator()) {
            std::error_code looked; // what has vanished is a file, and missed when its turn comes
            const bool isDirectory = IsDirectoryItself(*iterator, looked);
            if (looked && !MeansMissing(looked))
                Fail("status", looked, directory);
            entries.push_back({iterator->path().filename(), isDirectory});
            iterator.increment(error);
        }
        if (error && !(mayHaveVanished && MeansMissing(error)))
            Fail("directory_iterator", error, directory);
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.name.native() < b.name.native(); });
        return entries;
    });
}

bool IsStillThere(const VoFilePath& path)
{
    return Guarded([&] {
        std::error_code error;
        return LinkStatus(vo::detail::ToNative(path), error).type() != fs::file_type::not_found;
    });
}

template <typename Deliver>
void Walk(const VoFilePath& directory, bool recursive, bool inside, const Deliver& deliver)
{
    for (const Entry& entry : ReadDirectory(directory, inside)) {
        VoFilePath path = vo::detail::ChildFromNative(directory, entry.name);
        if (!IsStillThere(path))
            continue;
        if (!entry.isDirectory) {
            deliver(path, false);
            continue;
        }
        path = VoFilePath::CreateUnchecked(path.path() + "\\");
        deliver(path, true);
        if (recursive)
            Walk(path, recursive, true, deliver);
    }
}

VoString Environment(const char* name)
{
    // The bytes as they are where names are bytes; the framework's text would pass through the locale.
    if constexpr (fs::path::preferred_separator == '/') {
        const QByteArray bytes = qgetenv(name);
        return VoString(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    } else {
        return VoString(qEnvironmentVariable(name));
    }
}

VoDirectoryPath AsDirectory(VoString text)
{
    VoFilePath path(std::move(text));
    return path.isNull() || path.isDirectory() ? VoDirectoryPath(path.path()) : VoDirectoryPath(path.path() + "\\");
}

VoDirectoryPath PlaceOr(const char* variable, QStandardPaths::StandardLocation standard)
{
    const VoString value = Environment(variable);
    return AsDirectory(value.isEmpty() ? VoString(QStandardPaths::writableLocation(standard)) : value);
}

std::atomic<VoFileSystem::Opener> opener = nullptr;

void Open(const VoFilePath& path)
{
    const VoFileSystem::Opener open = opener;
    if (!open)
        throw VoInvalidCallException("Cannot open " + path.path() + ": no desktop services are installed");
    open(path);
}

} // namespace

bool VoFileSystem::Exists(const VoFilePath& path)
{
    return ExistsImpl(path);
}

bool VoFileSystem::Exists(const VoAbstractPath& path)
{
    return ExistsImpl(path);
}

bool VoFileSystem::Exists(const VoString& path)
{
    return ExistsImpl(VoFilePath(path));
}

bool VoFileSystem::Exists(const VoStringView& path)
{
    return ExistsImpl(VoFilePath(path.toString()));
}

bool VoFileSystem::Exists(const char* path)
{
    return ExistsImpl(VoFilePath(path));
}

bool VoFileSystem::IsDirectory(const VoFilePath& path)
{
    return IsDirectoryImpl(path);
}

bool VoFileSystem::IsDirectory(const VoAbstractPath& path)
{
    return IsDirectoryImpl(path);
}

std::uint64_t VoFileSystem::FileSize(const VoFilePath& path)
{
    return Guarded([&] {
        std::error_code error;
        const fs::path native = vo::detail::ToNative(path);
        const bool isDirectory = fs::is_directory(TargetStatus(native, error));
        const std::uintmax_t size = isDirectory ? 0 : fs::file_size(native, error);
        if (isDirectory)
            error = std::make_error_code(std::errc::is_a_directory);
        if (error && MeansMissing(error))
            throw VoFileNotFoundException(path);
        if (error)
            Fail("file_size", error, path);
        return static_cast<std::uint64_t>(size);
    });
}

bool VoFileSystem::Same(const VoFilePath& a, const VoFilePath& b)
{
    if (!Exists(a) || !Exists(b))
        return false;
    return Guarded([&] {
        std::error_code error;
        const bool same = fs::equivalent(vo::detail::ToNative(a), vo::detail::ToNative(b), error);
        if (error)
            Fail("equivalent: ", error, a, b);
        return same;
    });
}

VoChecksum VoFileSystem::Checksum(const VoFilePath& path)
{
    return VoChecksum(path);
}

std::uint64_t VoFileSystem::FreeSpace(const VoDirectoryPath& directory)
{
    return Guarded([&] {
        fs::path place = NativeName(directory);
        std::error_code error;
        if (place.is_relative())
            place = fs::current_path(error) / place;
        while (!error && !fs::exists(place, error) && place.has_relative_path())
            place = place.parent_path();
        if (!error) {
            const fs::space_info space = fs::space(place, error);
            if (!error)
                return static_cast<std::uint64_t>(space.available);
        }
        Fail("space", error, directory);
    });
}

bool VoFileSystem::Remove(const VoFilePath& path)
{
    return RemoveImpl(path);
}

bool VoFileSystem::Remove(const VoAbstractPath& path)
{
    return RemoveImpl(path);
}

std::uint64_t VoFileSystem::RemoveAll(const VoDirectoryPath& directory)
{
    return Guarded([&] {
        const fs::path native = NativeName(directory);
        if (IsVolume(directory, native))
            throw VoInvalidCallException("Cannot remove root directory: " + directory.path());
        std::error_code error;
        const std::uintmax_t removed = vo::detail::RemoveTree(native, error);
        if (error && !MeansMissing(error))
            Fail("remove_all", error, directory);
        return error ? 0 : static_cast<std::uint64_t>(removed);
    });
}

bool VoFileSystem::CreateDirectory(const VoDirectoryPath& path, bool createParents)
{
    vo::detail::RequireValidLength(path);
    return Guarded([&] {
        std::error_code error;
        const fs::path native = NativeName(path);
        const bool created =
            createParents ? fs::create_directories(native, error) : fs::create_directory(native, error);
        if (error)
            Fail(createParents ? "create_directories" : "create_directory", error, path);
        return created;
    });
}

bool VoFileSystem::CopyFile(const VoFilePath& from, const VoFilePath& to, CopyOptions options)
{
    vo::detail::RequireValidLength(from);
    vo::detail::RequireValidLength(to);
    return Guarded([&] {
        const fs::path source = vo::detail::ToNative(from);
        const fs::path target = vo::detail::ToNative(to);
        std::error_code error;
        if (!DecideCopy(source, target, options, error))
            return false;
        if (!error)
            error = CopyWhole(source, target, CopyPurpose::Duplicate);
        if (error)
            Fail("", error, from, to);
        return true;
    });
}

void VoFileSystem::MoveFile(const VoFilePath& from, const VoFilePath& to)
{
    vo::detail::RequireValidLength(from);
    vo::detail::RequireValidLength(to);
    Guarded([&] {
        const fs::path source = NativeName(from);
        const fs::path target = NativeName(to);
        std::error_code error;
        RenameNative(source, target, error);
        if (error == std::errc::cross_device_link)
            error = MoveByCopy(source, target);
        else if (!error)
            error = RemoveOtherName(source, target);
        if (error)
            Fail("rename: ", error, from, to);
    });
}

void VoFileSystem::SyncDirectory(const VoDirectoryPath& directory)
{
    Guarded([&] {
        std::error_code error;
        vo::detail::SyncDirectory(vo::detail::ToNative(directory), error);
        if (error)
            Fail("sync", error, directory);
    });
}

void VoFileSystem::ForEachFile(const VoDirectoryPath& directory, bool recursive, bool includeDirectories,
                               const std::function<void(const VoFilePath&)>& callback)
{
    vo::detail::RequireCallback(callback);
    Walk(VoFilePath(directory), recursive, false, [&](const VoFilePath& path, bool isDirectory) {
        if (!isDirectory || includeDirectories)
            callback(path);
    });
}

void VoFileSystem::ForEachDirectory(const VoDirectoryPath& directory, bool recursive,
                                    const std::function<void(const VoDirectoryPath&)>& callback)
{
    vo::detail::RequireCallback(callback);
    Walk(VoFilePath(directory), recursive, false, [&](const VoFilePath& path, bool isDirectory) {
        if (isDirectory)
            callback(VoDirectoryPath(path.path()));
    });
}

std::uint64_t VoFileSystem::NumberFiles(const VoDirectoryPath& directory, bool recursive, bool includeDirectories)
{
    std::uint64_t number = 0;
    ForEachFile(directory, recursive, includeDirectories, [&](const VoFilePath&) { ++number; });
    return number;
}

VoDirectoryPath VoFileSystem::TempDirectory()
{
    return Guarded([] {
        std::error_code error;
        const fs::path path = fs::temp_directory_path(error);
        if (error)
            Fail("temp_directory_path", error, VoFilePath());
        return AsDirectory(vo::detail::FromNative(path).path());
    });
}

VoDirectoryPath VoFileSystem::Directory(DirectoryIdentifier identifier)
{
    switch (identifier) {
    case ApplicationData:
        return PlaceOr("VOAPPDATAPATH", QStandardPaths::AppDataLocation);
    case Documents:
        return PlaceOr("VODOCSPATH", QStandardPaths::DocumentsLocation);
    case Logs:
        return Directory(ApplicationData).directory("logs");
    }
    throw VoInvalidParameterException("Unknown directory identifier: " + VoString(static_cast<int>(identifier)));
}

void VoFileSystem::OpenFile(const VoFilePath& path)
{
    Open(path);
}

void VoFileSystem::OpenDirectory(const VoDirectoryPath& path)
{
    Open(VoFilePath::CreateUnchecked(VoString(path.path())));
}

VoFileSystem::Opener VoFileSystem::SetOpener(Opener open) noexcept
{
    return opener.exchange(open);
}
