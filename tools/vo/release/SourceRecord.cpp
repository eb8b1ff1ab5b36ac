#include <vo/release/SourceRecord.h>

#include <vo/line/CommandError.h>

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

namespace vo::tool {
namespace {

constexpr std::size_t LongestRecord = 8192;

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

/// The folder of the declarations beside which a definition was published
/// (FOLDER/packages/PACKAGE/RELEASE/package.xml), or else that of the definition.
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

} // namespace

void RecordSource(const VoUUID& packageID, const VoLocation& definition)
{
    const VoString text = definition.withoutUser().toString();
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

std::optional<VoLocation> RecordedSource(const VoUUID& packageID)
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
    try {
        // Recorded paths have backslashes, so that "://" tells a URL here too.
        if (text.find("://") != std::string::npos)
            return TypedLocation("record", VoString(std::move(text)));
    } catch (const UsageError&) {
        return std::nullopt;
    }
    const VoFilePath definition{VoString(std::move(text))};
    if (definition.isNull() || !definition.validLength())
        return std::nullopt;
    return definition;
}

bool IsSamePlace(const VoLocation& a, const VoLocation& b)
{
    if (a.isUrl() != b.isUrl())
        return false;
    const std::string placeA = PublishedPlace(a);
    const std::string placeB = PublishedPlace(b);
    // Two names of one folder, such as a link, are one place.
    return placeA == placeB ||
           (!a.isUrl() && VoFileSystem::Same(VoFilePath(VoString(placeA)), VoFilePath(VoString(placeB))));
}

void ForgetSource(const VoUUID& packageID)
{
    VoFileSystem::Remove(RecordPath(packageID));
    // Fails while it holds the records of others, and that is right.
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::u8path(NativeName(RecordDirectory()).toStdString()), ignored);
}

} // namespace vo::tool
