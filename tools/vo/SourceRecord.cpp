#include "SourceRecord.h"

#include <Core/VoException.h>
#include <Core/VoUUID.h>
#include <FileSystem/SafePath.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Updater/VoUpdater.h>

#include <string>

namespace vo::tool {
namespace {

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

void RecordSource(const VoUUID& packageID, const VoFilePath& definition)
{
    VoFileSystem::CreateDirectory(recordDirectory(), true);
    VoAtomicFileWriter writer(recordPath(packageID));
    writer.write(definition.path().c_str(), definition.path().size());
    writer.commit();
}

std::optional<VoFilePath> RecordedSource(const VoUUID& packageID)
{
    const VoFilePath path = recordPath(packageID);
    if (!VoFileSystem::Exists(path))
        return std::nullopt;
    // A longer text than any path is no record of ours.
    std::string text(VoFilePath::MaximumLength + 1, '\0');
    VoFileInputByteStream stream(path);
    text.resize(stream.read(text.data(), text.size()));
    const VoFilePath definition{VoString(std::move(text))};
    if (definition.isNull() || !definition.validLength())
        return std::nullopt;
    return definition;
}

void ForgetSource(const VoUUID& packageID)
{
    VoFileSystem::Remove(recordPath(packageID));
    if (VoFileSystem::IsDirectory(recordDirectory()) && VoFileSystem::NumberFiles(recordDirectory(), false, true) == 0)
        VoFileSystem::Remove(recordDirectory());
}

} // namespace vo::tool
