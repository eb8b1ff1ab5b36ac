// A folder becomes a release, the release an installation, and the next release an update.

#include <Core/VoExceptionText.h>
#include <Core/VoUniquePtr.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/InstallationPlan.h>
#include <Updater/InstalledPackages.h>
#include <Updater/PackageBuilder.h>
#include <Updater/UpdatePackageBuilder.h>
#include <Updater/VerificationReport.h>
#include <Updater/VoUpdater.h>

#include <iostream>

using namespace vo::updater;

namespace {

constexpr std::uint64_t ChunkSize = 1 << 20; // bytes
constexpr int CompressionLevel = 6;

void write(const VoFilePath& file, const VoString& content)
{
    VoAtomicFileWriter writer(file);
    writer.write(content.c_str(), content.size());
    writer.commit();
}

VoUUID publishFirst(const VoDirectoryPath& source, const VoFilePath& declarations)
{
    //! [publish]
    PackageBuilder builder(VoUpdater::GenerateID(), "Tour", VoVersion(1, 0, 0, VoVersion::Release), ChunkSize,
                           CompressionLevel);
    builder.add(source, declarations);
    builder.finalise(declarations); // the declarations last, so that clients see a release whole or not at all
    return builder.packageID();
    //! [publish]
}

VoFilePath newestDefinition(const VoUUID& package, const VoFilePath& declarations)
{
    //! [newest]
    const auto released = AdvertisedPackages::Open(declarations); // a VoUrl does as well
    return released->newestPackage(package).definition(declarations).file();
    //! [newest]
}

void publishNext(const VoUUID& package, const VoDirectoryPath& source, const VoFilePath& declarations)
{
    //! [next]
    const auto base = AdvertisedPackageListing::Open(newestDefinition(package, declarations));
    UpdatePackageBuilder builder(*base, VoVersion(1, 1, 0, VoVersion::Release), ChunkSize, CompressionLevel);
    builder.add(source, declarations);
    builder.finalise(declarations);
    //! [next]
}

void install(const VoFilePath& definition, const VoDirectoryPath& target)
{
    //! [install]
    const InstallationPlan plan = InstalledPackages::Plan(definition, target); // before a byte moves
    std::cout << plan.version << ": " << plan.addedFiles << " added, " << plan.modifiedFiles << " changed, "
              << plan.unchangedFiles << " as they are\n";
    InstalledPackages::Install(definition, target, VoStopFlag());
    //! [install]
}

void checkAndRepair(const VoUUID& package, const VoFilePath& definition)
{
    //! [verify]
    const VerificationReport report = InstalledPackages::Verify(package, VoStopFlag());
    std::cout << report.filesChecked << " checked, " << report.missing.size() << " missing\n";
    if (!report.isIntact())
        InstalledPackages::Repair(definition, VoStopFlag());
    std::cout << InstalledPackages::Verify(package, VoStopFlag()).isIntact() << '\n';
    //! [verify]
}

void tour(const VoTemporaryDir& scratch)
{
    const VoDirectoryPath source = scratch.path().directory("source");
    const VoDirectoryPath target = scratch.path().directory("installed");
    const VoFilePath declarations = scratch.path().file("published\\declarations.xml");
    VoFileSystem::CreateDirectory(source);
    VoFileSystem::CreateDirectory(declarations.parent());
    VoUpdater::OverrideUpdateSystemDirectory(scratch.path().directory("updates")); // else the user's own

    write(source.file("program.txt"), "first");
    write(source.file("help.txt"), "help");
    const VoUUID package = publishFirst(source, declarations);
    install(newestDefinition(package, declarations), target);

    write(source.file("program.txt"), "second");
    publishNext(package, source, declarations);
    install(newestDefinition(package, declarations), target);

    VoFileSystem::Remove(target.file("help.txt"));
    checkAndRepair(package, newestDefinition(package, declarations));
    //! [uninstall]
    InstalledPackages::Uninstall(package); // its files and folders, and nothing else that lies there
    //! [uninstall]
    std::cout << VoFileSystem::Exists(target) << '\n';
}

} // namespace

int main()
{
    try {
        tour(VoTemporaryDir());
        return 0;
    } catch (...) {
        std::cerr << vo::CurrentExceptionText() << '\n';
        return 1;
    }
}

/* Prints:
1.0.0.0: 2 added, 0 changed, 0 as they are
1.1.0.0: 0 added, 1 changed, 1 as they are
2 checked, 1 missing
1
0
*/
