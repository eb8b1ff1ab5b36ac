#include <Updater/detail/registry/DamageRecord.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/FileActions.h>

#include <sstream>
#include <string>

namespace vo::updater::detail {

bool HasDamageRecord(const VoUUID& packageID)
{
    return KindOf(DamageRecordPath(packageID)) != FileKind::None;
}

VoDeque<VoUUID> DamagedFiles(const VoUUID& packageID)
{
    VoDeque<VoUUID> files;
    const VoFilePath path = DamageRecordPath(packageID);
    if (KindOf(path) == FileKind::None)
        return files;
    std::istringstream lines(ReadDocument(path).toStdString());
    for (std::string line; std::getline(lines, line);)
        files.pushBack(VoUUID(VoString(line)));
    return files;
}

void RecordDamage(const VoUUID& packageID, const VoDeque<VoUUID>& files)
{
    const VoFilePath path = DamageRecordPath(packageID);
    std::string text;
    for (const VoUUID& file : files)
        text += file.toString().toStdString() + "\n";
    VoFileSystem::CreateDirectory(path.parent(), true);
    AtStep(FileStep::WriteDocument, path.path());
    WriteBytes(path, VoString(text));
}

void ForgetDamage(const VoUUID& packageID)
{
    EraseFile(DamageRecordPath(packageID));
}

} // namespace vo::updater::detail
