#include <Updater/detail/operations/StagedReleases.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFileSystem.h>
#include <Time/VoTimePoint.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/VoStagedReleaseException.h>
#include <Updater/VoUntrustedReleaseException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/registry/RegistryFile.h>
#include <Updater/detail/registry/ReleaseProof.h>
#include <XML/VoXMLStreamLoader.h>

#include <string_view>
#include <utility>

namespace vo::updater::detail {

namespace {

constexpr const char* StagedTag = "staged";
constexpr const char* ProofTag = "proof";
constexpr const char* BeforeTag = "before";
constexpr const char* OverAttribute = "over";
constexpr const char* OverVersionAttribute = "overVersion";
constexpr const char* OverDirectoryAttribute = "overDirectory";
constexpr const char* BytesAttribute = "bytes";
constexpr const char* AttributesAttribute = "attributesChecksum";
constexpr const char* RefuseForeignAttribute = "refuseForeignFiles";
constexpr const char* RefuseOtherAttribute = "refuseOtherDirectory";
constexpr const char* RefuseOlderAttribute = "refuseOlder";
constexpr const char* OtherPublisherAttribute = "otherPublisher";
constexpr std::string_view RecordSuffix = ".xml";

VoDirectoryPath Root()
{
    return VoUpdater::UpdateSystemDirectory().directory("staged");
}

VoFilePath RecordPath(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    return Root().file(packageID.toString() + ".xml");
}

VoDirectoryPath PackageFolder(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    return Root().directory(packageID.toString());
}

VoFilePath LockPath(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    VoFileSystem::CreateDirectory(Root(), true);
    return Root().file(packageID.toString() + ".lock");
}

VoFilePath StagedLockPath()
{
    VoFileSystem::CreateDirectory(VoUpdater::UpdateSystemDirectory(), true);
    return VoUpdater::UpdateSystemDirectory().file("staged.lock");
}

VoChecksum DigestOf(const VoString& bytes)
{
    vo::detail::Sha3 hash;
    hash.add(bytes.c_str(), bytes.size());
    return hash.finish();
}

// Notes the digest; nothing to say is no document.
VoChecksum KeepDocument(const VoFilePath& path, const VoString& document)
{
    if (document.size() > LargestDocument) // nobody would read it again
        throw VoValidationException("Document larger than allowed: " + path.path());
    if (document.isEmpty()) {
        EraseFile(path);
    } else {
        AtStep(FileStep::WriteDocument, path.path());
        WriteBytes(path, document);
    }
    return DigestOf(document);
}

[[noreturn]] void FailDamaged(const VoFilePath& path)
{
    throw VoStagedReleaseException("Staged release is damaged, stage it again: " + path.path());
}

VoString ReadKept(const VoFilePath& path, const VoChecksum& digest)
{
    VoString document;
    try {
        document = ReadDocument(path);
    } catch (const VoFileNotFoundException&) {
        // the digest tells whether there was one
    }
    if (DigestOf(document) != digest)
        FailDamaged(path);
    return document;
}

// What is not flagged is refused: the cautious reading of a record of ours.
bool ReadFlag(VoXMLStreamElementLoader& element, const char* name)
{
    return element.attribute(name) != "no";
}

void WriteFlag(VoXMLElementWriter& element, const char* name, bool isSet)
{
    element.writeAttribute(name, isSet ? "yes" : "no");
}

std::shared_ptr<const ReleaseProof> ReadProof(VoXMLStreamElementLoader& element)
{
    auto proof = std::make_shared<ReleaseProof>();
    proof->versionID = ReadAttribute<VoUUID>(element, attribute::VersionID);
    proof->from = ReadAttribute<VoVersion>(element, attribute::From);
    proof->expires = ReadAttribute<VoTimePoint>(element, attribute::Expires);
    proof->isOtherPublisher = element.attribute(OtherPublisherAttribute) == "yes";
    bool hasPin = false;
    element.processChildren([&](VoXMLStreamElementLoader& child) {
        const VoString name = child.name();
        if (name == tag::Pin) {
            proof->pin = TrustPin(child);
            hasPin = true;
        } else if (name == BeforeTag) {
            proof->before = TrustPin(child);
        }
    });
    if (!hasPin)
        throw VoValidationException("it does not say who published the release");
    return proof;
}

void WriteProof(VoXMLElementWriter& parent, const ReleaseProof& proof)
{
    const auto element = parent.createElement(ProofTag);
    WriteAttribute(*element, attribute::VersionID, proof.versionID);
    WriteAttribute(*element, attribute::From, proof.from);
    WriteAttribute(*element, attribute::Expires, proof.expires);
    WriteFlag(*element, OtherPublisherAttribute, proof.isOtherPublisher);
    WriteChild(*element, tag::Pin, proof.pin);
    if (proof.before)
        WriteChild(*element, BeforeTag, *proof.before);
}

std::optional<StagedRelease> Load(const VoFilePath& path, const VoUUID& packageID)
{
    if (KindOf(path) == FileKind::None)
        return std::nullopt;
    VoXMLStreamLoader loader;
    loader.addGlobalRule(StagedTag, Build<StagedRelease>);
    const auto staged = DynamicCast<StagedRelease>(LoadDocument(loader, path, VoString()));
    if (!staged)
        throw VoValidationException("it is another document");
    if (staged->packageID() != packageID)
        throw VoValidationException("it is of another package");
    return *staged;
}

void EraseFolder(const VoDirectoryPath& folder)
{
    if (!VoFileSystem::Exists(folder))
        return;
    AtStep(FileStep::EraseDirectory, folder.path());
    VoFileSystem::RemoveAll(folder);
}

void EraseOtherFolders(const StagedRelease& staged)
{
    VoDeque<VoDirectoryPath> others;
    VoFileSystem::ForEachDirectory(PackageFolder(staged.packageID()), false, [&](const VoDirectoryPath& folder) {
        if (Bytes(folder) != Bytes(staged.folder()))
            others.pushBack(folder);
    });
    for (const VoDirectoryPath& folder : others)
        EraseFolder(folder);
}

} // namespace

StagedRelease::StagedRelease(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed)
    : AbstractPackage(advert.packageID(), advert.versionID(), advert.name(), advert.version())
{
    RequireSafeIdentifier(packageID());
    RequireSafeIdentifier(versionID()); // is going to be a folder's name
    if (!installed)
        return;
    installedVersionID = installed->versionID();
    installedVersion = installed->version();
    installedBefore = installed->installationDirectory();
}

StagedRelease::StagedRelease(VoXMLStreamElementLoader& element)
    : AbstractPackage(element)
    , directory(ReadAttribute<VoDirectoryPath>(element, attribute::Directory))
    , definition(ReadAttribute<VoLocation>(element, attribute::Origin))
    , installedVersionID(ReadAttribute<VoUUID>(element, OverAttribute))
    , installedVersion(ReadAttribute<VoVersion>(element, OverVersionAttribute))
    , installedBefore(ReadAttribute<VoDirectoryPath>(element, OverDirectoryAttribute))
    , digest(ReadAttribute<VoChecksum>(element, attribute::Checksum))
    , attributesDigest(ReadAttribute<VoChecksum>(element, AttributesAttribute))
    , files(ReadNumber(element, tag::Files))
    , bytes(ReadNumber(element, BytesAttribute))
{
    RequireSafeIdentifier(packageID());
    RequireSafeIdentifier(versionID());
    options.refuseForeignFiles = ReadFlag(element, RefuseForeignAttribute);
    options.refuseOtherDirectory = ReadFlag(element, RefuseOtherAttribute);
    options.refuseOlder = ReadFlag(element, RefuseOlderAttribute);
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() == ProofTag)
            options.proof = ReadProof(child);
    });
}

void StagedRelease::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Directory, directory);
    WriteAttribute(element, attribute::Origin, definition.withoutUser());
    WriteAttribute(element, OverAttribute, installedVersionID);
    WriteAttribute(element, OverVersionAttribute, installedVersion);
    WriteAttribute(element, OverDirectoryAttribute, installedBefore);
    WriteAttribute(element, attribute::Checksum, digest);
    WriteAttribute(element, AttributesAttribute, attributesDigest);
    WriteNumber(element, tag::Files, files);
    WriteNumber(element, BytesAttribute, bytes);
    WriteFlag(element, RefuseForeignAttribute, options.refuseForeignFiles);
    WriteFlag(element, RefuseOtherAttribute, options.refuseOtherDirectory);
    WriteFlag(element, RefuseOlderAttribute, options.refuseOlder);
    AbstractPackage::writeAttributes(element);
}

void StagedRelease::writeElements(VoXMLElementWriter& element) const
{
    if (options.proof)
        WriteProof(element, *options.proof);
}

VoDirectoryPath StagedRelease::folder() const
{
    return PackageFolder(packageID()).directory("release-" + versionID().toString());
}

VoFilePath StagedRelease::definitionPath() const
{
    return folder().file(Layout::DefinitionName);
}

VoFilePath StagedRelease::attributesPath() const
{
    return Beside(definitionPath(), ReleaseAttributes::FileName);
}

StagedInstallation StagedRelease::summary() const
{
    StagedInstallation result;
    result.packageID = packageID();
    result.versionID = versionID();
    result.name = name();
    result.version = version();
    result.directory = directory;
    result.definition = definition.withoutUser();
    result.installedVersionID = installedVersionID;
    result.files = files;
    result.bytes = bytes;
    return result;
}

void StagedRelease::keepDefinition(const AdvertisedPackageListing& advert)
{
    EraseTemporaryDocuments(folder(), {RecordSuffix});
    digest = KeepDocument(definitionPath(), DocumentText(tag::Package, advert));
    const auto& attributes = advert.attributes();
    attributesDigest =
        KeepDocument(attributesPath(), attributes && !attributes->isEmpty() ? attributes->toDocument() : VoString());
}

VoUniquePtr<AdvertisedPackageListing> StagedRelease::openDefinition() const
{
    auto advert = AdvertisedPackageListing::Parse(ReadKept(definitionPath(), digest), definitionPath().path());
    if (advert->packageID() != packageID() || advert->versionID() != versionID())
        FailDamaged(definitionPath());
    std::optional<VoString> attributes = ReadKept(attributesPath(), attributesDigest);
    if (attributes->isEmpty())
        attributes.reset();
    advert->setAttributes(AttributesOf(*this, attributes, attributesPath().path()));
    return advert;
}

bool StagedRelease::isInstalled(const InstalledPackageListing* installed) const
{
    return installed && installed->versionID() == versionID() && installedVersionID != versionID() &&
           Bytes(installed->installationDirectory()) == Bytes(directory);
}

bool StagedRelease::fits(const InstalledPackageListing* installed) const
{
    if (!installed)
        return installedVersionID.toString().isEmpty();
    return installed->versionID() == installedVersionID &&
           Bytes(installed->installationDirectory()) == Bytes(installedBefore);
}

void StagedRelease::requireFitting(const InstalledPackageListing* installed) const
{
    if (fits(installed))
        return;
    const VoUUID now = installed ? installed->versionID() : VoUUID("");
    const auto told = [](const VoUUID& id, const VoVersion& release) {
        return id.toString().isEmpty() ? VoString("nothing") : "release " + release.toString();
    };
    throw VoStagedReleaseException(
        "Staged release " + version().toString() + " of " + name() +
        " does not fit any more, stage it again: " + told(now, installed ? installed->version() : VoVersion()) +
        " is installed now" + (installed ? " in " + installed->installationDirectory().path() : VoString()) +
        ", and it was staged over " + told(installedVersionID, installedVersion));
}

void StagedRelease::requireFresh() const
{
    if (!options.proof || options.proof->expires == VoTimePoint())
        return;
    const VoTimePoint now = VoTimePoint::Now();
    if (options.proof->expires < now)
        throw VoUntrustedReleaseException(
            VoUntrustedReleaseException::Kind::Expired,
            "Manifest of the staged release has expired, stage it again: it was good until " +
                options.proof->expires.toString() + ", and this machine's clock says " + now.toString());
}

VoDirectoryPath StagingChunksPath(const VoUUID& packageID)
{
    return PackageFolder(packageID).directory("chunks");
}

StagingLock::StagingLock(const VoUUID& packageID)
    : m_lock(LockPath(packageID))
{
}

StagedLock::StagedLock()
    : m_lock(StagedLockPath(), [] {})
{
}

VoDeque<VoUUID> StagedPackages()
{
    VoDeque<VoUUID> result;
    if (!VoFileSystem::IsDirectory(Root()))
        return result;
    VoFileSystem::ForEachFile(Root(), false, false, [&](const VoFilePath& path) {
        std::string_view name = Bytes(path).substr(Bytes(Root()).size());
        if (name.size() <= RecordSuffix.size() || name.substr(name.size() - RecordSuffix.size()) != RecordSuffix)
            return;
        name.remove_suffix(RecordSuffix.size());
        const VoUUID id{VoString(std::string(name))};
        if (IsSafeIdentifier(id))
            result.pushBack(id);
    });
    return result;
}

std::optional<StagedRelease> ReadStaged(const VoUUID& packageID)
{
    const VoFilePath path = RecordPath(packageID);
    try {
        return Load(path, packageID);
    } catch (const VoFileException&) {
        throw;
    } catch (const VoException& exception) {
        throw vo::detail::Completed(
            VoStagedReleaseException("Staged release is damaged, stage it again: " + path.path()), path.path(),
            exception.message());
    }
}

// The record decides which folder counts; those of other releases go only when it is on disk.
void WriteStaged(const StagedRelease& staged, const StagedLock&)
{
    EraseTemporaryDocuments(Root(), {RecordSuffix});
    const VoFilePath path = RecordPath(staged.packageID());
    AtStep(FileStep::WriteDocument, path.path());
    WriteDocument(path, StagedTag, staged);
    try {
        EraseOtherFolders(staged);
    } catch (const VoException&) {
        Log().warning("What was staged before is left to the next staging: " + CurrentExceptionText());
    }
}

bool HasStaged(const VoUUID& packageID)
{
    return KindOf(RecordPath(packageID)) != FileKind::None || VoFileSystem::IsDirectory(PackageFolder(packageID));
}

bool EraseStaged(const VoUUID& packageID, const StagedLock&)
{
    if (!HasStaged(packageID))
        return false;
    {
        const StagingLock staging(packageID);
        if (staging.isHeld())
            EraseFolder(PackageFolder(packageID));
    }
    // Last, so that a process that is killed leaves something to go on from.
    EraseFile(RecordPath(packageID));
    return true;
}

} // namespace vo::updater::detail
