#include "SourceRecord.h"

#include "CommandError.h"

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <FileSystem/NativePath.h>
#include <FileSystem/SafePath.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Updater/VoUpdater.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace vo::tool {
namespace {

constexpr std::size_t LongestRecord = 8192;

VoDirectoryPath recordDirectory()
{
    return VoUpdater::UpdateSystemDirectory().directory("sources");
}

VoFilePath recordPath(const VoUUID& packageID)
{
    if (!vo::detail::SafeName(packageID.toString()))
        throw VoValidationException("Invalid identifier: " + packageID.toString());
    return recordDirectory().file(packageID.toString() + ".txt");
}

} // namespace

void RecordSource(const VoUUID& packageID, const Location& definition)
{
    const VoFilePath* file = std::get_if<VoFilePath>(&definition);
    const VoString text = file != nullptr ? file->path() : LocationText(definition);
    const auto write = [&] {
        VoFileSystem::CreateDirectory(recordDirectory(), true);
        VoAtomicFileWriter writer(recordPath(packageID));
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

std::optional<Location> RecordedSource(const VoUUID& packageID)
{
    const VoFilePath path = recordPath(packageID);
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

void ForgetSource(const VoUUID& packageID)
{
    VoFileSystem::Remove(recordPath(packageID));
    // Fails while it holds the records of others, and that is right.
    std::error_code ignored;
    std::filesystem::remove(vo::detail::ToNative(recordDirectory()), ignored);
}

} // namespace vo::tool
