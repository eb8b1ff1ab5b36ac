#include <Updater/detail/registry/PackageRecords.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/registry/DamageRecord.h>
#include <Updater/detail/registry/RegistryFile.h>
#include <Updater/detail/registry/SharedRegistry.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace vo::updater::detail {

VoDeque<VoUUID> PackagesWith(std::initializer_list<std::string_view> suffixes)
{
    VoDeque<VoUUID> result;
    const VoDirectoryPath directory = VoUpdater::InstalledListingDirectory();
    if (!VoFileSystem::IsDirectory(directory))
        return result;
    VoFileSystem::ForEachFile(directory, false, false, [&](const VoFilePath& path) {
        const std::string_view name = Bytes(path).substr(Bytes(directory).size());
        for (const std::string_view suffix : suffixes) {
            if (name.size() <= suffix.size() || name.substr(name.size() - suffix.size()) != suffix)
                continue;
            const VoUUID id{VoString(std::string(name.substr(0, name.size() - suffix.size())))};
            const bool isKnown =
                std::any_of(result.begin(), result.end(), [&id](const VoUUID& known) { return known == id; });
            if (!isKnown && IsSafeIdentifier(id) && id != VoUUID("packages"))
                result.pushBack(id);
        }
    });
    return result;
}

VoString NameOf(const VoUUID& packageID)
{
    for (const VoFilePath& path : {ListingPath(packageID), RemovedListingPath(packageID)}) {
        try {
            if (VoFileSystem::Exists(path))
                return InstalledPackageListing::Open(path)->name();
        } catch (const VoException&) {
            // Reading it has logged why; such a package is still known by its ID.
        }
    }
    for (const auto phase : {InstallationJournal::Phase::Pending, InstallationJournal::Phase::Placed}) {
        try {
            if (const auto notes = JournalOf(packageID).read(phase))
                return notes->result.name();
        } catch (const VoException&) {
        }
    }
    return VoString();
}

InstallationJournal JournalOf(const VoUUID& packageID)
{
    return InstallationJournal::OfListing(ListingPath(packageID));
}

VoUniquePtr<InstalledPackageListing> FindInstalled(const VoUUID& packageID)
{
    if (!IsSafeIdentifier(packageID))
        return {}; // the run refuses the advert
    const VoFilePath path = ListingPath(packageID);
    // Installed, though the record is still that of the release before.
    if (const auto placed = JournalOf(packageID).read(InstallationJournal::Phase::Placed))
        return VoUniquePtr<InstalledPackageListing>::Make(std::move(placed->result));
    if (!VoFileSystem::Exists(path))
        return {};
    VoString reason = "it is that of another package";
    try {
        VoUniquePtr<InstalledPackageListing> listing = OpenInstalled(path);
        if (listing->packageID().toString() == packageID.toString())
            return listing;
    } catch (...) {
        reason = CurrentExceptionText();
    }
    Log().warning("Installed listing " + path.path() + " cannot be used, so nothing counts as installed: " + reason);
    return {};
}

bool IsUnfinished(const VoUUID& packageID, const InstalledPackageListing* installed)
{
    if (JournalOf(packageID).exists() || HasDamageRecord(packageID) ||
        KindOf(RemovedListingPath(packageID)) != FileKind::None || VoFileSystem::Exists(StagingPath(packageID)))
        return true;
    // As it stands on disk: another process may have ended what this one knows of.
    VoString whyNot;
    const VoUniquePtr<Registry> registry = ReadRegistry(VoUpdater::InstalledPackagesPath(), whyNot);
    if (!registry)
        return true;
    const auto* entry = registry->find(packageID);
    if (!entry || !installed)
        return entry || installed;
    return installed->version().toString() != entry->second.toString();
}

// Two files cannot be replaced at once: the attributes of the release that the listing is of count.
VoUniquePtr<InstalledPackageListing> OpenInstalled(const VoFilePath& listing)
{
    VoUniquePtr<InstalledPackageListing> installed = InstalledPackageListing::Open(listing);
    for (const VoFilePath& record : {AttributesRecordPath(listing), NextAttributesRecordPath(listing)}) {
        if (installed->attributes() || KindOf(record) == FileKind::None)
            continue;
        auto attributes =
            std::make_shared<ReleaseAttributes>(ReleaseAttributes::Parse(ReadDocument(record), record.path()));
        if (attributes->versionID == installed->versionID())
            installed->setAttributes(std::move(attributes));
    }
    return installed;
}

void WriteInstalled(const InstalledPackageListing& listing, const VoFilePath& path)
{
    const VoFilePath record = AttributesRecordPath(path);
    const VoFilePath next = NextAttributesRecordPath(path);
    const bool hasAttributes = listing.attributes() && !listing.attributes()->isEmpty();
    if (hasAttributes) {
        AtStep(FileStep::WriteDocument, next.path());
        WriteBytes(next, listing.attributes()->toDocument());
    }
    AtStep(FileStep::WriteDocument, path.path());
    listing.write(path);
    try {
        if (hasAttributes)
            PutInPlace(next, record);
        else
            EraseAttributes(path);
    } catch (const VoException& exception) {
        Log().warning("Former attributes are left: " + record.path() + ": " + exception.message());
    }
}

void EraseAttributes(const VoFilePath& listing)
{
    EraseFile(AttributesRecordPath(listing));
    EraseFile(NextAttributesRecordPath(listing));
}

bool RecordInstalled(const InstalledPackageListing& listing)
{
    const VoFilePath path = ListingPath(listing.packageID());
    VoFileSystem::CreateDirectory(path.parent(), true);
    WriteInstalled(listing, path);
    return SharedRegistry::Get().set(listing.packageID(), listing.version());
}

} // namespace vo::updater::detail
