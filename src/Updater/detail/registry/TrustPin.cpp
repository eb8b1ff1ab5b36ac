#include <Updater/detail/registry/TrustPin.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/VoUntrustedReleaseException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/registry/RegistryFile.h>
#include <Updater/detail/registry/ReleaseProof.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>
#include <functional>

namespace vo::updater::detail {

namespace {

using Kind = VoUntrustedReleaseException::Kind;

constexpr std::uint64_t LargestPin = 256u << 10;

VoFilePath PathOf(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    return VoUpdater::InstalledListingDirectory().file(packageID.toString() + ".pin");
}

TrustPin Load(const VoFilePath& path, const VoUUID& packageID)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Pin, Build<TrustPin>);
    const auto pin = DynamicCast<TrustPin>(ParseDocument(loader, ReadDocument(path, LargestPin), path.path()));
    if (!pin)
        FailLoading(path.path(), "Record of a publisher failed to load");
    if (pin->packageID != packageID)
        throw VoValidationException("it is of another package");
    return *pin;
}

void Write(const TrustPin& pin)
{
    const VoFilePath path = PathOf(pin.packageID);
    VoFileSystem::CreateDirectory(path.parent(), true);
    AtStep(FileStep::WriteDocument, path.path());
    WriteDocument(path, tag::Pin, pin);
}

// Commands that only look remember too, without the lock of those that install.
VoFileLock LockPins()
{
    return VoFileLock(VoUpdater::InstalledListingDirectory().file("pins.lock"), [] {});
}

void RequireSamePublisher(const TrustPin& known, const ReleaseProof& proof)
{
    const bool isKnown = known.keys == proof.pin.keys || (proof.before && proof.before->keys == known.keys);
    if (!isKnown)
        throw VoUntrustedReleaseException(
            Kind::Publisher, "Keys of the package were changed by another installation: " + known.packageID.toString());
    if (proof.pin.serial < known.serial && !proof.pin.keys.retiresKeyOf(known.keys))
        throw VoUntrustedReleaseException(Kind::RolledBack,
                                          "A newer manifest was seen by another installation: serial " +
                                              VoString(known.serial) + " after " + VoString(proof.pin.serial));
}

void RequireUpdatable(const AdvertisedPackageListing& advert, const ReleaseProof& proof,
                      const InstalledPackageListing* installed)
{
    if (installed && installed->version() < proof.from)
        throw VoUntrustedReleaseException(Kind::NotOffered, "Release " + advert.version().toString() +
                                                                " updates no release older than " +
                                                                proof.from.toString());
}

std::optional<TrustPin> KnownPin(const AdvertisedPackageListing& advert, const ReleaseProof* proof)
{
    const bool mayChange = proof && proof->isOtherPublisher;
    return mayChange ? std::nullopt : ReadPin(advert.packageID());
}

void RequireAdmissibleAfter(const std::optional<TrustPin>& known, const AdvertisedPackageListing& advert,
                            const ReleaseProof* proof, const InstalledPackageListing* installed)
{
    const VoUUID& packageID = advert.packageID();
    if (!proof && known)
        throw VoUntrustedReleaseException(Kind::Publisher,
                                          "Package was installed from signed releases, and this one is not verified: " +
                                              packageID.toString());
    if (!proof)
        return;
    if (proof->pin.packageID != packageID || proof->versionID != advert.versionID())
        throw VoUntrustedReleaseException(Kind::Mixed, "Proof is of another release: " + proof->versionID.toString());
    RequireUpdatable(advert, *proof, installed);
    if (!known)
        return;
    RequireSamePublisher(*known, *proof);
    if (advert.version() < known->lowest)
        throw VoUntrustedReleaseException(Kind::NotOffered, "Release " + advert.version().toString() +
                                                                " is older than " + known->lowest.toString() +
                                                                ", the lowest release that may be installed");
}

} // namespace

TrustPin::TrustPin(VoXMLStreamElementLoader& element)
    : packageID(ReadAttribute<VoUUID>(element, attribute::Id))
    , origin(element.attribute(attribute::Origin))
    , serial(ReadNumber(element, attribute::Serial))
    , lowest(ReadAttribute<VoVersion>(element, attribute::Lowest))
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() == tag::Keys)
            keys = ReleaseKeys(child);
    });
    if (keys.keys.isEmpty())
        throw VoValidationException("it has no keys");
}

void TrustPin::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Id, packageID);
    element.writeAttribute(attribute::Origin, origin);
    WriteNumber(element, attribute::Serial, serial);
    WriteAttribute(element, attribute::Lowest, lowest);
}

void TrustPin::writeElements(VoXMLElementWriter& element) const
{
    WriteChild(element, tag::Keys, keys);
}

bool TrustPin::raise(const TrustPin& other)
{
    const TrustPin old = *this;
    lowest = std::max(lowest, other.lowest);
    serial = other.keys.retiresKeyOf(keys) ? other.serial : std::max(serial, other.serial);
    if (other.keys.number >= keys.number)
        keys = other.keys;
    origin = other.origin;
    return lowest != old.lowest || serial != old.serial || keys != old.keys ||
           !origin.equal(old.origin, VoString::CaseSensitive);
}

std::optional<TrustPin> ReadPin(const VoUUID& packageID)
{
    const VoFilePath path = PathOf(packageID);
    try {
        return Load(path, packageID);
    } catch (const VoFileNotFoundException&) {
        return std::nullopt;
    } catch (const VoException& exception) {
        VoUntrustedReleaseException failure(Kind::Publisher, "Record of the publisher cannot be read: " + path.path());
        failure.complete(path.path(), exception.reason().isEmpty() ? exception.message() : exception.reason());
        throw failure;
    }
}

void RaisePin(const TrustPin& seen)
{
    try {
        const VoFileLock lock = LockPins();
        auto pin = ReadPin(seen.packageID);
        const bool isLater = pin && (pin->keys == seen.keys || pin->keys.number < seen.keys.number);
        if (isLater && pin->raise(seen))
            Write(*pin);
    } catch (const VoException&) {
        Log().warning("What was seen of package " + seen.packageID.toString() +
                      " cannot be remembered: " + CurrentExceptionText());
    }
}

void ForgetPin(const VoUUID& packageID)
{
    EraseFile(PathOf(packageID));
}

void RequireAdmissible(const AdvertisedPackageListing& advert, const ReleaseProof* proof,
                       const InstalledPackageListing* installed)
{
    RequireAdmissibleAfter(KnownPin(advert, proof), advert, proof, installed);
}

void AdmitRelease(const AdvertisedPackageListing& advert, const ReleaseProof* proof,
                  const InstalledPackageListing* installed)
{
    if (!proof) {
        RequireAdmissible(advert, proof, installed);
        return;
    }
    VoFileSystem::CreateDirectory(VoUpdater::InstalledListingDirectory(), true);
    const VoFileLock lock = LockPins();
    EraseTemporaryDocuments(VoUpdater::InstalledListingDirectory(), {".pin", ".id"});
    auto known = KnownPin(advert, proof);
    RequireAdmissibleAfter(known, advert, proof, installed);
    if (!known)
        Write(proof->pin);
    else if (known->raise(proof->pin))
        Write(*known);
}

void AdmitRepair(const AdvertisedPackageListing& advert, const InstalledPackageListing& installed)
{
    if (!ReadPin(advert.packageID()))
        return;
    bool isSame = installed.compare(advert)->fileDifferences().isEmpty();
    for (const AdvertisedFileListing& file : advert.files()) {
        const auto* listed = dynamic_cast<const InstalledFileListing*>(installed.file(file.id()));
        isSame = isSame && listed && listed->path() == installed.installationDirectory().appended(file.target());
    }
    if (!isSame)
        throw VoUntrustedReleaseException(Kind::Publisher, "Definition is not that of the installed files: " +
                                                               advert.packageID().toString());
}

} // namespace vo::updater::detail
