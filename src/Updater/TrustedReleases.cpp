#include <Updater/TrustedReleases.h>

#include <Core/VoFileException.h>
#include <Core/VoVersion.h>
#include <Core/detail/Completed.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/InstalledPackages.h>
#include <Updater/VoUntrustedReleaseException.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/KeyChain.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/registry/ReleaseProof.h>
#include <Updater/detail/registry/RolloutPlace.h>
#include <Updater/detail/registry/TrustPin.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace vo::updater {

using namespace detail;
using Declaration = AdvertisedPackages::Declaration;
using Kind = VoUntrustedReleaseException::Kind;

namespace {

[[noreturn]] void Refuse(Kind kind, const VoString& message)
{
    throw VoUntrustedReleaseException(kind, message);
}

// Empty when the bytes are those that the manifest lists.
VoString Difference(const VoString& bytes, const ReleaseManifest::Document& listed)
{
    if (bytes.size() != listed.size)
        return VoString(bytes.size()) + " bytes instead of " + VoString(listed.size);
    vo::detail::Sha3 hash;
    hash.add(bytes.c_str(), bytes.size());
    return hash.finish() == listed.checksum ? VoString() : VoString("another digest");
}

VoTimePoint Clock(const TrustPolicy& policy)
{
    return policy.now == VoTimePoint() ? VoTimePoint::Now() : policy.now;
}

ReleaseKeys FirstKeys(const TrustPolicy& policy)
{
    ReleaseKeys first;
    first.releaseThreshold = policy.threshold;
    first.keyThreshold = policy.threshold;
    for (const signing::PublicKey& key : policy.keys)
        first.keys.pushBack({key, true, true});
    first.validate();
    return first;
}

VoUniquePtr<InstalledPackageListing> Installed(const VoUUID& packageID)
{
    try {
        // A listing that is not there would be logged as an error, and not to be installed is none.
        const bool isThere = VoFileSystem::Exists(InstalledPackages::InstalledPackageListingPath(packageID));
        return isThere ? InstalledPackages::Package(packageID) : VoUniquePtr<InstalledPackageListing>();
    } catch (const VoException&) {
        return {}; // none, or one that an installation replaces
    }
}

VoString KeyNames(const ReleaseKeys& keys)
{
    VoString names;
    for (const ReleaseKeys::Key& key : keys.keys) {
        if (key.signsReleases)
            names += (names.isEmpty() ? "" : ", ") + key.key.id();
    }
    return names;
}

} // namespace

namespace {

struct Verdict
{
    std::optional<TrustPin> before; // what was remembered
    std::optional<TrustPin> seen;   // what is to be; none: nobody asks for a signature
    bool isOtherPublisher = false;  // whether what was remembered counts no more
};

} // namespace

class TrustedReleases::Private
{
public:
    Private(const std::pair<DocumentPlace, VoFilePath>& document, TrustPolicy trust)
        : place(document.first)
        , name(document.second)
        , policy(std::move(trust))
    {
    }

    DocumentPlace place;
    VoFilePath name; // of the document that was opened, at the place
    TrustPolicy policy;
    VoString bytes; // of the document
    VoUniquePtr<AdvertisedPackages> declarations;
    VoString manifestBytes;
    std::optional<ReleaseManifest> manifest;
    mutable std::map<std::string, Verdict> verdicts; // by package ID

    void open();
    void readManifest();
    VoString checked(const VoFilePath& path, const VoString& first) const;
    void findAttributes(AdvertisedPackageListing& package, const VoFilePath& definition) const;
    const Verdict& verify(const VoUUID& packageID) const;
    Verdict verifyNow(const VoUUID& packageID) const;
    std::optional<TrustPin> verifyAfter(const std::optional<TrustPin>& before, const VoUUID& packageID) const;
    void requireSigned(const ReleaseKeys& keys, const std::optional<TrustPin>& before) const;
    void requireFresh(const ReleaseKeys& keys, const std::optional<TrustPin>& before) const;
    Release release(VoUniquePtr<AdvertisedPackageListing> package, const VoFilePath& path) const;
    void findPatches(AdvertisedPackageListing& package, const VoFilePath& definition) const;
    VoString whyNotOffered(const AbstractPackage& release) const;
};

TrustedReleases::TrustedReleases(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}

TrustedReleases::TrustedReleases(TrustedReleases&& other) noexcept = default;
TrustedReleases& TrustedReleases::operator=(TrustedReleases&& other) noexcept = default;
TrustedReleases::~TrustedReleases() = default;

TrustedReleases TrustedReleases::Open(const VoLocation& document, const TrustPolicy& policy, VoStopFlag stop,
                                      const VoDownloadPolicy& downloads)
{
    auto state = std::make_unique<Private>(DocumentPlace::Of(document, stop, downloads), policy);
    state->open();
    return TrustedReleases(std::move(state));
}

void TrustedReleases::Private::open()
{
    bytes = place.read(name);
    declarations = AdvertisedPackages::Parse(bytes, place.nameOf(name));
    if (!declarations)
        std::tie(place, name) = place.ofPublication(name);
    readManifest();
    if (!manifest)
        return;
    bytes = checked(name, bytes);
    if (declarations)
        declarations = AdvertisedPackages::Parse(bytes, place.nameOf(name));
}

void TrustedReleases::Private::readManifest()
{
    const VoFilePath path(ReleaseManifest::FileName);
    manifest.reset();
    if (auto found = place.find(path, ReleaseManifest::LargestSize)) {
        try {
            manifest = ReleaseManifest::Parse(*found, place.nameOf(path));
            manifestBytes = std::move(*found);
        } catch (const VoException&) {
            // Some servers answer with a page where there is no such document.
            if (!policy.keys.isEmpty() || policy.requireSignature)
                throw;
        }
    }
}

// While a release is published, documents and manifest are of different ages for a moment. The publisher keeps what the
// manifest lists beside its successor, named by its digest.
VoString TrustedReleases::Private::checked(const VoFilePath& path, const VoString& first) const
{
    const ReleaseManifest::Document* listed = manifest->document(path);
    if (!listed)
        Refuse(Kind::Mixed, "Document is not listed by the manifest: " + place.nameOf(path));
    const VoString difference = Difference(first, *listed);
    if (difference.isEmpty())
        return first;
    const VoFilePath copy = Suffixed(path, "." + listed->checksum.toString());
    for (const VoFilePath& again : {copy, path}) {
        const auto other = place.find(again);
        if (other && Difference(*other, *listed).isEmpty())
            return *other;
    }
    Refuse(Kind::Mixed, "Document is not the one that the manifest lists: " + place.nameOf(path) + ": " + difference);
}

// Patches that the manifest does not list do not count; without them chunks are fetched.
void TrustedReleases::Private::findPatches(AdvertisedPackageListing& package, const VoFilePath& definition) const
{
    const VoFilePath path = Beside(definition, ReleasePatches::FileName);
    if (manifest && !manifest->document(path))
        return;
    package.setPatches(TryPatches(package, place.nameOf(path), place.stop(), [&] {
        auto document = FindOptional(place, path, ReleasePatches::LargestSize);
        if (manifest)
            document = checked(path, document.value_or(VoString()));
        return document;
    }));
}

void TrustedReleases::Private::findAttributes(AdvertisedPackageListing& package, const VoFilePath& definition) const
{
    const VoFilePath path = Beside(definition, ReleaseAttributes::FileName);
    std::optional<VoString> document;
    if (!manifest)
        document = FindOptional(place, path, LargestDocument);
    else if (manifest->document(path))
        document = checked(path, place.find(path).value_or(VoString()));
    package.setAttributes(AttributesOf(package, document, place.nameOf(path)));
}

const Verdict& TrustedReleases::Private::verify(const VoUUID& packageID) const
{
    const std::string id = packageID.toString().toStdString();
    const auto found = verdicts.find(id);
    return found != verdicts.end() ? found->second : verdicts.emplace(id, verifyNow(packageID)).first->second;
}

Verdict TrustedReleases::Private::verifyNow(const VoUUID& packageID) const
{
    Verdict verdict;
    try {
        // Another ID is that of no installed package, and no installation takes it.
        if (vo::detail::SafeName(packageID.toString()))
            verdict.before = ReadPin(packageID);
        verdict.seen = verifyAfter(verdict.before, packageID);
        return verdict;
    } catch (const VoUntrustedReleaseException& failure) {
        const bool isOther =
            failure.kind() == Kind::Keys || failure.kind() == Kind::Signature || failure.kind() == Kind::Publisher;
        if (!isOther || !policy.allowOtherPublisher || policy.keys.isEmpty())
            throw;
    }
    verdict.isOtherPublisher = true;
    verdict.seen = verifyAfter(std::nullopt, packageID);
    return verdict;
}

std::optional<TrustPin> TrustedReleases::Private::verifyAfter(const std::optional<TrustPin>& before,
                                                              const VoUUID& packageID) const
{
    if (!before && policy.keys.isEmpty() && !policy.requireSignature)
        return std::nullopt;
    if (!manifest)
        Refuse(Kind::Unsigned, "Releases are not signed: " + place.nameOf(ReleaseManifest::FileName) + " is missing");
    if (!before && policy.keys.isEmpty())
        Refuse(Kind::Signature, "No key is known that could vouch for " + place.nameOf(ReleaseManifest::FileName));
    TrustPin seen;
    seen.packageID = packageID;
    seen.origin = place.nameOf(name);
    seen.serial = manifest->serial;
    seen.lowest = std::max(manifest->lowest(packageID), before ? before->lowest : VoVersion());
    seen.keys = NewestKeys(before ? before->keys : FirstKeys(policy), place);
    requireSigned(seen.keys, before);
    requireFresh(seen.keys, before);
    if (before)
        RaisePin(seen);
    return seen;
}

void TrustedReleases::Private::requireSigned(const ReleaseKeys& keys, const std::optional<TrustPin>& before) const
{
    const Signers signers = SignersOfManifest(manifestBytes, *manifest, keys, place);
    if (signers.count >= keys.releaseThreshold)
        return;
    const VoString document = place.nameOf(ReleaseManifest::FileName);
    if (signers.count > 0)
        Refuse(Kind::Signature, "Too few signatures: " + document + " is signed by " + VoString(signers.count) +
                                    " of the " + VoString(keys.releaseThreshold) + " keys that it takes");
    const VoString who = before ? "the publisher of the installed package" : "any known key";
    Refuse(Kind::Signature, "Signature is " + VoString(signers.why.isEmpty() ? "missing" : "wrong") + ": " + document +
                                " is not signed by " + who + " (" + KeyNames(keys) + ")" +
                                (signers.why.isEmpty() ? VoString() : ": " + signers.why));
}

void TrustedReleases::Private::requireFresh(const ReleaseKeys& keys, const std::optional<TrustPin>& before) const
{
    // Whoever had a key could count up to any number: what a retired key may have signed counts no more.
    const bool isForgotten = !before || keys.retiresKeyOf(before->keys);
    const std::uint64_t least = std::max(keys.serial, isForgotten ? 0 : before->serial);
    if (manifest->serial < least)
        Refuse(Kind::RolledBack,
               "Manifest is older than one that was seen before: " + place.nameOf(ReleaseManifest::FileName) +
                   " has serial " + VoString(manifest->serial) + " after " + VoString(least));
    const VoTimePoint now = Clock(policy);
    if (manifest->expires < now && !policy.allowExpired)
        Refuse(Kind::Expired, "Manifest has expired: " + place.nameOf(ReleaseManifest::FileName) + " was good until " +
                                  manifest->expires.toString() + ", and this machine's clock says " + now.toString());
}

const AdvertisedPackages* TrustedReleases::declarations() const
{
    return m_private->declarations.get();
}

const ReleaseManifest* TrustedReleases::manifest() const
{
    return m_private->manifest ? &*m_private->manifest : nullptr;
}

bool TrustedReleases::verify(const VoUUID& packageID) const
{
    return m_private->verify(packageID).seen.has_value();
}

VoString TrustedReleases::whyNotOffered(const AbstractPackage& release) const
{
    return m_private->whyNotOffered(release);
}

VoString TrustedReleases::Private::whyNotOffered(const AbstractPackage& release) const
{
    const std::optional<TrustPin>& pin = verify(release.packageID()).seen;
    const VoVersion lowest = pin ? pin->lowest : manifest ? manifest->lowest(release.packageID()) : VoVersion();
    if (release.version() < lowest)
        return "it is older than " + lowest.toString() + ", the lowest release that may be installed";
    if (!manifest)
        return VoString();
    const ReleaseManifest::Release* terms = manifest->release(release.packageID(), release.versionID());
    if (!terms)
        return "the manifest does not list it";
    if (terms->isWithdrawn)
        return "it was withdrawn by its publisher";
    const auto installed = Installed(release.packageID());
    if (installed && installed->versionID() == release.versionID())
        return VoString();
    const bool isFollowed = terms->channel == VoUpdater::ReleaseChannel ||
                            (terms->channel == policy.channel && policy.channel == VoUpdater::BetaChannel);
    if (!isFollowed)
        return "it is of the channel \"" + terms->channel + "\"";
    if (Clock(policy) < terms->start)
        return "its roll-out begins at " + terms->start.toString();
    if (terms->share < ReleaseManifest::WholeShare && !terms->isOfferedTo(RolloutPlace(release.versionID())))
        return "it is rolled out to a share of the installations that this one is not in";
    if (installed && installed->version() < terms->from)
        return "it updates no release older than " + terms->from.toString();
    return VoString();
}

const Declaration& TrustedReleases::newest(const VoUUID& packageID) const
{
    const Declaration& newestDeclared = m_private->declarations->newestPackage(packageID);
    const Declaration* newest = nullptr;
    for (const Declaration& declaration : m_private->declarations->declarations()) {
        const bool isNewer =
            declaration.packageID() == packageID && (!newest || declaration.version() > newest->version());
        if (isNewer && whyNotOffered(declaration).isEmpty())
            newest = &declaration;
    }
    if (!newest)
        Refuse(Kind::NotOffered,
               "Release " + newestDeclared.version().toString() + " is not offered: " + whyNotOffered(newestDeclared));
    return *newest;
}

TrustedReleases::Release TrustedReleases::Private::release(VoUniquePtr<AdvertisedPackageListing> package,
                                                           const VoFilePath& path) const
{
    const VoString why = whyNotOffered(*package);
    if (!why.isEmpty())
        Refuse(Kind::NotOffered, "Release " + package->version().toString() + " is not offered: " + why);
    if (IsRecorded(package->packageID()))
        findPatches(*package, path);
    Release result{std::move(package), place.locationOf(path), nullptr};
    const Verdict& verdict = verify(result.package->packageID());
    if (verdict.seen) {
        auto proof = std::make_shared<ReleaseProof>();
        proof->pin = *verdict.seen;
        proof->before = verdict.before;
        proof->versionID = result.package->versionID();
        proof->from = manifest->release(result.package->packageID(), result.package->versionID())->from;
        proof->expires = policy.allowExpired ? VoTimePoint() : manifest->expires;
        proof->isOtherPublisher = verdict.isOtherPublisher;
        result.proof = std::move(proof);
    }
    return result;
}

TrustedReleases::Release TrustedReleases::open(const Declaration& declaration) const
{
    const VoString why = whyNotOffered(declaration);
    if (!why.isEmpty())
        Refuse(Kind::NotOffered, "Release " + declaration.version().toString() + " is not offered: " + why);
    return m_private->release(read(declaration), declaration.path());
}

VoUniquePtr<AdvertisedPackageListing> TrustedReleases::read(const Declaration& declaration) const
{
    const Private& state = *m_private;
    // Refuses a path that leads elsewhere.
    declaration.definition(VoFilePath("\\"));
    const VoString name = state.place.nameOf(declaration.path());
    VoString bytes = state.place.read(declaration.path());
    if (state.manifest)
        bytes = state.checked(declaration.path(), bytes);
    auto package = AdvertisedPackageListing::Parse(bytes, name);
    if (package->packageID() != declaration.packageID() || package->versionID() != declaration.versionID())
        throw VoValidationException("Invalid package definition: not the declared release: " + name);
    state.findAttributes(*package, declaration.path());
    return package;
}

VoUniquePtr<AdvertisedPackageListing> TrustedReleases::readDefinition() const
{
    const Private& state = *m_private;
    if (state.declarations)
        throw VoInvalidCallException("No definition was opened");
    auto package = AdvertisedPackageListing::Parse(state.bytes, state.place.nameOf(state.name));
    state.findAttributes(*package, state.name);
    return package;
}

TrustedReleases::Release TrustedReleases::openDefinition() const
{
    return m_private->release(readDefinition(), m_private->name);
}

} // namespace vo::updater
