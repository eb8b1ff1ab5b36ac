#pragma once

#include "InstallFixture.h"

#include <Time/VoDateTime.h>
#include <Updater/ReleaseSigner.h>
#include <Updater/TrustedReleases.h>
#include <Updater/VoUntrustedReleaseException.h>

namespace vo::test {

using vo::signing::SecretKey;
using vo::updater::ReleaseKeys;
using vo::updater::ReleaseManifest;
using vo::updater::ReleaseSigner;
using vo::updater::ReleaseSigning;
using vo::updater::ReleaseTerms;
using vo::updater::TrustedReleases;
using vo::updater::TrustPolicy;

using Key = std::shared_ptr<const SecretKey>;

inline Key NewKey()
{
    return std::make_shared<SecretKey>(SecretKey::Generate());
}

/// A publisher with keys and a folder, and installations that follow him.
class TrustTest : public InstallTest
{
protected:
    TrustTest() { policy.keys.pushBack(key->publicKey()); }

    static VoTimePoint Day(int day)
    {
        return VoDateTime::FromUtc({2030, 1, 1, 0, 0, 0, 0}).timePoint() + VoHours(24 * day);
    }

    ReleaseSigning with(std::initializer_list<Key> keys) const { return {keys, VoHours(24 * 30), now}; }
    ReleaseSigner signer(std::initializer_list<Key> keys) const { return ReleaseSigner(declarations(), with(keys)); }

    vo::updater::ManifestState release(const char* version, const Files& files, std::initializer_list<Key> keys,
                                       const ReleaseTerms& terms = ReleaseTerms())
    {
        using namespace vo::updater;
        const VoVersion number = VoVersion::Deserialize(version);
        std::unique_ptr<AbstractPackageBuilder> builder;
        if (m_base)
            builder = std::make_unique<UpdatePackageBuilder>(*m_base, number, 40, 6);
        else
            builder = std::make_unique<PackageBuilder>(packageID, "Examples", number, 40, 6);
        builder->setTerms(terms, with(keys));
        builder->makePatches(2);
        publish(*builder, files);
        m_base = std::make_unique<AdvertisedPackageListing>(builder->package());
        return builder->manifestState();
    }

    /// The published folder.
    Files folder() const { return FilesBelow(declarations().parent()); }
    /// Puts another one in its place.
    void putFolder(const Files& files) const
    {
        VoFileSystem::RemoveAll(declarations().parent());
        for (const auto& [name, bytes] : files)
            WriteBytes(declarations().parent().appended(VoFilePath(name.c_str())), bytes);
    }

    TrustPolicy at(VoTimePoint time) const
    {
        TrustPolicy result = policy;
        result.now = time;
        return result;
    }

    /// What an installation is offered: the version, or why it refuses.
    std::string offered(const TrustPolicy& trust) const
    {
        return told([&] {
            return TrustedReleases::Open(declarations(), trust).newest(packageID).version().toString().toStdString();
        });
    }

    /// Installs the newest release of an opened folder; empty, or why it was refused.
    std::string installFrom(const TrustedReleases& releases)
    {
        return told([&]() -> std::string {
            auto found =
                releases.declarations() ? releases.open(releases.newest(packageID)) : releases.openDefinition();
            options.proof = found.proof;
            InstalledPackages::Install(std::move(found.package), found.definition, place(), VoStopFlag(), options);
            return "";
        });
    }
    std::string install(const TrustPolicy& trust)
    {
        return told([&] { return installFrom(TrustedReleases::Open(declarations(), trust)); });
    }

    template <typename Work>
    static std::string told(Work work)
    {
        try {
            return work();
        } catch (const VoException& failure) {
            return failure.message().toStdString() +
                   (failure.reason().isEmpty() ? "" : ": " + failure.reason().toStdString());
        }
    }

    /// The newest release and its patches.
    TrustedReleases::Release opened(const TrustPolicy& trust) const
    {
        const auto releases = TrustedReleases::Open(declarations(), trust);
        return releases.open(releases.newest(packageID));
    }

    const Key key = NewKey();
    const Key other = NewKey();
    VoTimePoint now = Day(0);
    TrustPolicy policy; // that knows the key

private:
    std::unique_ptr<AdvertisedPackageListing> m_base; // the last release
};

} // namespace vo::test
