#include <Updater/detail/files/FileActions.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/detail/files/HeldTree.h>

#include <atomic>
#include <filesystem>
#include <system_error>

namespace vo::updater::detail {

namespace fs = std::filesystem;
using vo::detail::ToNative;

namespace {

StepObserver& Observer()
{
    static auto& observer = *new StepObserver; // outlives all static objects
    return observer;
}

std::atomic<bool> observed{false};

// Both names are in one directory, so nothing is ever copied.
void Rename(const VoFilePath& from, const VoFilePath& to, const char* failure, const VoFilePath& place)
{
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(from, error);
    if (!error)
        held.folder.rename(held.name, held.siblingName(to), error);
    if (error)
        throw vo::detail::Because(error,
                                  VoFileException(failure + VoString(error.message()) + ": " + place.path(), place));
}

} // namespace

void SetStepObserver(StepObserver observer)
{
    observed = false;
    Observer() = std::move(observer);
    observed = static_cast<bool>(Observer());
}

void AtStep(FileStep step, const VoString& path)
{
    if (observed)
        Observer()(step, path);
}

VoFilePath AsFile(const VoDirectoryPath& directory)
{
    const VoString& text = directory.path();
    return VoFilePath::CreateUnchecked(text.substring(0, text.size() - 1).toString());
}

VoDirectoryPath AsDirectory(const VoFilePath& file)
{
    return VoDirectoryPath(file.path() + "\\");
}

FileKind KindOf(const VoFilePath& path, Links links)
{
    const bool isFollowed = links == Links::Followed;
    const fs::path native = ToNative(path);
    std::error_code error;
    switch ((isFollowed ? vo::detail::TargetStatus(native, error) : vo::detail::LinkStatus(native, error)).type()) {
    case fs::file_type::none:
        if (!vo::detail::MeansMissing(error))
            throw vo::detail::Because(
                error, VoFileException((isFollowed ? "exists: " : "status: ") + VoString(error.message()), path));
        return FileKind::None;
    case fs::file_type::not_found:
        return FileKind::None;
    case fs::file_type::regular:
        return FileKind::File;
    case fs::file_type::directory:
        return FileKind::Directory;
    default:
        return FileKind::Other;
    }
}

void MakeDirectory(const VoDirectoryPath& directory)
{
    AtStep(FileStep::MakeDirectory, directory.path());
    std::error_code error;
    vo::detail::RequireValidLength(directory);
    const HeldPlace held = HeldPlace::Of(AsFile(directory), error);
    if (!error)
        held.folder.makeDirectory(held.name, error);
    if (error == std::errc::file_exists && VoFileSystem::IsDirectory(directory))
        return;
    if (error)
        throw vo::detail::Because(
            error, VoFileException("Cannot create directory: " + VoString(error.message()) + ": " + directory.path(),
                                   directory.path()));
}

vo::detail::NativeFile MakeFile(const VoFilePath& path, std::error_code& error)
{
    const HeldPlace held = HeldPlace::Of(path, error);
    return error ? vo::detail::NativeFile() : held.folder.createNew(held.name, error);
}

bool EraseFile(const VoFilePath& path)
{
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(path, error);
    // In a folder that is held no call takes a directory for a file, so those are told by what fails: of the files of a
    // package nearly all are there and go.
    FileKind kind = held.folder.isOpen() ? FileKind::File : KindOf(path);
    if (kind == FileKind::None || kind == FileKind::Directory)
        return kind == FileKind::None;
    AtStep(FileStep::EraseFile, path.path());
    if (!error)
        held.folder.removeFile(held.name, error);
    if (!error || vo::detail::MeansMissing(error))
        return true;
    kind = KindOf(path);
    if (kind != FileKind::None && kind != FileKind::Directory)
        throw vo::detail::Because(
            error, VoFileException("Cannot remove file: " + VoString(error.message()) + ": " + path.path(), path));
    return kind == FileKind::None;
}

bool EraseDirectoryIfEmpty(const VoDirectoryPath& directory)
{
    // What the path leads to need not be what is held: the removal itself decides.
    const bool isThere = KindOf(AsFile(directory)) == FileKind::Directory;
    if (isThere)
        AtStep(FileStep::EraseDirectory, directory.path());
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(AsFile(directory), error);
    if (!isThere && !held.folder.isOpen())
        return true;
    if (!error)
        held.folder.removeDirectory(held.name, error);
    // A link or a file in its place is somebody's.
    if (!error || vo::detail::MeansMissing(error) || error == std::errc::not_a_directory)
        return true;
    if (error == std::errc::directory_not_empty || error == std::errc::file_exists)
        return false;
    throw vo::detail::Because(
        error, VoFileException("Cannot remove directory: " + VoString(error.message()) + ": " + directory.path(),
                               directory.path()));
}

void PutInPlace(const VoFilePath& built, const VoFilePath& place)
{
    AtStep(FileStep::PutInPlace, place.path());
    Rename(built, place, "Cannot replace file: ", place);
}

void MoveAside(const VoFilePath& place, const VoFilePath& aside)
{
    AtStep(FileStep::MoveAside, place.path());
    Rename(place, aside, "Cannot replace file: ", place);
}

void MoveBack(const VoFilePath& aside, const VoFilePath& place)
{
    AtStep(FileStep::MoveBack, place.path());
    Rename(aside, place, "Cannot restore file: ", place);
}

void CopyPermissions(const VoFilePath& model, const VoFilePath& file)
{
    if (KindOf(model) != FileKind::File)
        return;
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(model, error);
    if (!error)
        held.folder.copyPermissions(held.name, held.siblingName(file), error);
}

void RequireFreeSpace(const VoDirectoryPath& directory, std::uint64_t bytes)
{
    const std::uint64_t available = bytes == 0 ? 0 : VoFileSystem::FreeSpace(directory);
    if (available == 0 || available >= bytes)
        return;
    throw VoFileException("Not enough disk space: " + VoString(bytes) + " bytes needed, " + VoString(available) +
                              " available in " + directory.path(),
                          directory.path());
}

} // namespace vo::updater::detail
