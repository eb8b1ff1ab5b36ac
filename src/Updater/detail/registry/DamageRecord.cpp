#include <Updater/detail/registry/DamageRecord.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileDevice.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/install/FileActions.h>

#include <sstream>
#include <string>

namespace vo::updater::detail {

namespace {

VoFilePath PathOf(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    return VoUpdater::InstalledListingDirectory().file(packageID.toString() + ".damaged");
}

} // namespace

bool HasDamageRecord(const VoUUID& packageID)
{
    return KindOf(PathOf(packageID)) != FileKind::None;
}

VoDeque<VoUUID> DamagedFiles(const VoUUID& packageID)
{
    VoDeque<VoUUID> files;
    const VoFilePath path = PathOf(packageID);
    if (KindOf(path) == FileKind::None)
        return files;
    VoFileDevice device(path);
    if (!device.open(VoIODevice::Read))
        throw VoCannotOpenFileException(device);
    std::istringstream lines(device.readAll().toStdString());
    for (std::string line; std::getline(lines, line);)
        files.pushBack(VoUUID(VoString(line)));
    return files;
}

void RecordDamage(const VoUUID& packageID, const VoDeque<VoUUID>& files)
{
    const VoFilePath path = PathOf(packageID);
    std::string text;
    for (const VoUUID& file : files)
        text += file.toString().toStdString() + "\n";
    VoFileSystem::CreateDirectory(path.parent(), true);
    AtStep(FileStep::WriteDocument, path.path());
    VoAtomicFileWriter writer(path);
    writer.write(text.data(), text.size());
    writer.commit();
}

void ForgetDamage(const VoUUID& packageID)
{
    EraseFile(PathOf(packageID));
}

} // namespace vo::updater::detail
