#include <Updater/PackageSources.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoNativeName.h>
#include <IO/VoFileByteStream.h>
#include <Updater/VoUpdater.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace vo::updater {

namespace {

constexpr std::size_t LongestRecord = 16384;

VoDirectoryPath RecordDirectory()
{
    return VoUpdater::UpdateSystemDirectory().directory("sources");
}

VoFilePath RecordPath(const VoUUID& packageID)
{
    if (!VoUpdater::IsIdentifier(packageID.toString()))
        throw VoValidationException("Invalid identifier: " + packageID.toString());
    return RecordDirectory().file(packageID.toString() + ".txt");
}

// The folder of the declarations beside which a definition was published
// (FOLDER/packages/PACKAGE/RELEASE/package.xml), or else that of the definition.
std::string PublishedPlace(const VoLocation& definition)
{
    std::string text = definition.withoutUser().toString().toStdString();
    std::replace(text.begin(), text.end(), '\\', '/');
    const auto parent = [](const std::string& path) { return path.substr(0, path.find_last_of('/')); };
    std::string folder = parent(text);
    const std::string packages = parent(parent(folder));
    constexpr std::string_view name = "/packages";
    if (packages.size() <= name.size() || packages.compare(packages.size() - name.size(), name.size(), name) != 0)
        return folder;
    return parent(packages);
}

// None for a text that cannot be a place: the record may have been damaged.
std::optional<VoLocation> PlaceOf(const std::string& text)
{
    if (text.find("://") == std::string::npos) { // recorded paths have backslashes
        const VoFilePath file{VoString(text)};
        return file.isNull() || !file.validLength() ? std::nullopt : std::optional<VoLocation>(file);
    }
    const VoUrl url{VoString(text)};
    const bool isOfWeb = url.isValid() && (url.scheme() == "http" || url.scheme() == "https");
    return isOfWeb ? std::optional<VoLocation>(url) : std::nullopt;
}

} // namespace

VoLocation PackageSource::declared() const
{
    if (!declarations.isNull())
        return declarations;
    return VoLocation::FromText(VoString(PublishedPlace(definition)) + "/declarations.xml");
}

void PackageSources::Record(const VoUUID& packageID, const PackageSource& source)
{
    VoString text = source.definition.withoutUser().toString();
    if (!source.declarations.isNull())
        text += "\n" + source.declarations.withoutUser().toString();
    const auto write = [&] {
        VoFileSystem::CreateDirectory(RecordDirectory(), true);
        VoAtomicFileWriter writer(RecordPath(packageID));
        writer.write(text.c_str(), text.size());
        writer.commit();
    };
    try {
        write();
    } catch (const VoCannotOpenFileException&) {
        // Another process may have forgotten the last package, and the directory with it.
        write();
    }
}

std::optional<PackageSource> PackageSources::Recorded(const VoUUID& packageID)
{
    const VoFilePath path = RecordPath(packageID);
    if (!VoFileSystem::Exists(path))
        return std::nullopt;
    // A longer text is no record of ours.
    std::string text(LongestRecord + 1, '\0');
    VoFileInputByteStream stream(path);
    text.resize(stream.read(text.data(), text.size()));
    if (text.size() > LongestRecord)
        return std::nullopt;
    const std::size_t end = std::min(text.find('\n'), text.size());
    const auto definition = PlaceOf(text.substr(0, end));
    if (!definition)
        return std::nullopt;
    const auto declarations = end < text.size() ? PlaceOf(text.substr(end + 1)) : std::nullopt;
    return PackageSource{*definition, declarations.value_or(VoLocation())};
}

void PackageSources::Forget(const VoUUID& packageID)
{
    VoFileSystem::Remove(RecordPath(packageID));
    // Fails while it holds the records of others, and that is right.
    std::error_code ignored;
    std::filesystem::remove(ToStdPath(RecordDirectory()), ignored);
}

bool PackageSources::IsSamePlace(const VoLocation& a, const VoLocation& b)
{
    if (a.isUrl() != b.isUrl())
        return false;
    const std::string placeA = PublishedPlace(a);
    const std::string placeB = PublishedPlace(b);
    // Two names of one folder, such as a link, are one place.
    return placeA == placeB ||
           (!a.isUrl() && VoFileSystem::Same(VoFilePath(VoString(placeA)), VoFilePath(VoString(placeB))));
}

} // namespace vo::updater
