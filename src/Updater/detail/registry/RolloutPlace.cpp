#include <Updater/detail/registry/RolloutPlace.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <string>

namespace vo::updater::detail {

namespace {

constexpr std::size_t NumberLength = 32;

VoString ReadNumber(const VoFilePath& path)
{
    try {
        return ReadDocument(path, NumberLength);
    } catch (const VoFileNotFoundException&) {
    } catch (const VoValidationException&) { // longer: not ours
    }
    return VoString();
}

// Two processes must not make two.
VoString Number()
{
    const VoFilePath path = VoUpdater::InstalledListingDirectory().file("rollout.id");
    VoString number = ReadNumber(path);
    if (number.size() == NumberLength)
        return number;
    VoFileSystem::CreateDirectory(path.parent(), true);
    const VoFileLock lock(path.parent().file("pins.lock"), [] {});
    number = ReadNumber(path);
    if (number.size() != NumberLength) {
        number = VoString::Random(NumberLength, VoString::Lowercase);
        WriteBytes(path, number);
    }
    return number;
}

} // namespace

std::uint64_t RolloutPlace(const VoUUID& versionID)
{
    constexpr std::uint64_t places = ReleaseManifest::WholeShare;
    try {
        const std::string text = Number().toStdString() + versionID.toString().toStdString();
        vo::detail::Sha3 hash;
        hash.add(text.data(), text.size());
        return std::stoull(hash.finish().toString().toStdString().substr(0, 15), nullptr, 16) % places;
    } catch (const VoException&) {
        Log().diagnostic("Number of this installation cannot be had: " + CurrentExceptionText());
        return places - 1;
    }
}

} // namespace vo::updater::detail
