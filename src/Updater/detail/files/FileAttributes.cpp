#include <Updater/detail/files/FileAttributes.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/HeldTree.h>

#include <atomic>
#include <filesystem>
#include <system_error>

namespace vo::updater::detail {

namespace {

std::atomic<int> overridden{-1}; // 0 or 1: whether links are copied

} // namespace

std::optional<VoString> ReadLink(const VoFilePath& path)
{
    if (KindOf(path) != FileKind::Other)
        return std::nullopt;
    const std::filesystem::path native = vo::detail::ToNative(path);
    std::error_code error;
    const std::filesystem::path to = std::filesystem::read_symlink(native, error);
    if (error == std::errc::invalid_argument || vo::detail::MeansMissing(error))
        return std::nullopt; // a pipe or a device, or gone meanwhile
    if (error)
        throw vo::detail::Because(error, VoFileException("read_symlink: " + VoString(error.message()), path));
    try {
        return vo::detail::FromNative(to).path();
    } catch (const VoInvalidPathFileException&) {
        return VoString(); // none that a release can have
    }
}

void MakeLink(const VoFilePath& path, const VoString& to)
{
    AtStep(FileStep::MakeLink, path.path());
    const std::filesystem::path way = vo::detail::ToNative(VoFilePath::CreateUnchecked(VoString(to)));
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(path, error);
    if (!error)
        held.folder.makeLink(way, held.name, error);
    if (error == std::errc::file_exists && EraseFile(path)) // left by a run that was killed
        held.folder.makeLink(way, held.name, error);
    if (error)
        throw vo::detail::Because(
            error, VoFileException("Cannot make link: " + VoString(error.message()) + ": " + path.path(), path));
}

void SetExecutable(const VoFilePath& path, bool isExecutable)
{
    AtStep(FileStep::SetExecutable, path.path());
    std::error_code error;
    const HeldPlace held = HeldPlace::Of(path, error);
    if (!error)
        held.folder.setExecutable(held.name, isExecutable, error);
    if (error)
        throw vo::detail::Because(
            error,
            VoFileException("Cannot change permissions: " + VoString(error.message()) + ": " + path.path(), path));
}

bool LinksAreCopies() noexcept
{
    const int forced = overridden;
    return forced < 0 ? SystemCopiesLinks() : forced == 1;
}

void OverrideLinks(std::optional<bool> areCopies) noexcept
{
    overridden = areCopies ? static_cast<int>(*areCopies) : -1;
}

} // namespace vo::updater::detail
