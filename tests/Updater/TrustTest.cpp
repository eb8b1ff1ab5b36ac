// What a hostile or failing server can do to an installation that knows its publisher's key, and what the publisher's
// side keeps true meanwhile. Each attack is mounted on a server.

#include "TrustFixture.h"

#include <ScriptedHttpServer.h>

#include <Download/VoDownloadManager.h>

#include <QtCore/QCoreApplication>

using namespace vo::test;
using Fault = ScriptedAnswer::Fault;
using testing::HasSubstr;
using testing::IsEmpty;
using vo::updater::PackageBuilder;

namespace {

#if defined(_WIN32)
const std::string Mark; // programs bear none
#else
const std::string Mark = "[x]";
#endif
const Files Old = {{"program", Noise(200, 1)}, {"same", "same"}};
const Files New = {{"program", Mark + Noise(200, 2)}, {"same", "same"}, {"alias", "-> same"}};
const Files Evil = {{"program", "evil"}};

std::string Flipped(std::string bytes, const std::string& behind)
{
    bytes[bytes.find(behind) + behind.size()] ^= 1;
    return bytes;
}

class TrustAttack : public TrustTest
{
protected:
    TrustAttack()
    {
        release("1.0.0", Old, {key});
        first = folder();
        now = Day(1);
        release("2.0.0", New, {key});
        second = folder();
        evil = forged({other});
    }

    /// The folder of another publisher who uses the package's ID.
    Files forged(std::initializer_list<Key> keys, std::uint64_t serial = 0)
    {
        const Files kept = folder();
        putFolder({});
        release("9.0.0", Evil, keys);
        if (serial > 0)
            raise(serial);
        const Files made = folder();
        putFolder(kept);
        return made;
    }

    /// Makes the manifest one with a serial number of that height, by the stolen key.
    void raise(std::uint64_t serial)
    {
        auto manifest = *signer({key}).manifest();
        manifest.serial = serial;
        const VoString bytes = manifest.toDocument();
        const auto signature = key->sign(bytes.c_str(), bytes.size(), manifest.signedComment());
        const VoString name = "server/manifest.xml";
        WriteBytes(file(name.c_str()), bytes.toStdString());
        WriteBytes(file((name + "." + key->id() + ".minisig").c_str()), signature.toString().toStdString());
    }

    void mount(const Files& files)
    {
        server.clear();
        for (const auto& [name, bytes] : files)
            server.get("/" + name, ScriptedAnswer::Body(bytes));
    }

    std::string attempt(const TrustPolicy& trust)
    {
        return told([&] {
            const VoUrl url(server.url("/releases.xml").c_str());
            return installFrom(TrustedReleases::Open(url, trust, VoStopFlag(), options.downloads));
        });
    }
    std::string attempt() { return attempt(at(Day(2))); }

    std::string installed() const { return snapshot()["place/of/app/program"]; }
    std::string definitionOf(const Files& files, const std::string& version) const
    {
        for (const auto& [name, bytes] : files) {
            if (name.find("/" + version + "/package.xml") != std::string::npos)
                return name;
        }
        return {};
    }

    ScriptedHttpServer server;
    Files first;
    Files second;
    Files evil;
};

} // namespace

TEST_F(TrustAttack, IsRefusedAndNothingChanges)
{
    mount(second);
    ASSERT_EQ(attempt(), "");
    EXPECT_FALSE(log.contains("updater", "File not found")) << "not to be installed yet is no error";
    ASSERT_EQ(installed(), New.at("program"));
    const auto with = [](Files files, const std::string& name, const std::string& bytes) {
        files[name] = bytes;
        return files;
    };
    const auto without = [](Files files, const std::string& part) {
        for (auto entry = files.begin(); entry != files.end();)
            entry = entry->first.find(part) != std::string::npos ? files.erase(entry) : std::next(entry);
        return files;
    };
    const std::string definition = definitionOf(second, "2.0.0.0");
    const std::string attributes = definition.substr(0, definition.rfind('/')) + "/attributes.xml";
    const std::string signature = "manifest.xml." + key->id().toStdString() + ".minisig";
    Files stolen = forged({key}, 1000);
    const Files keysOfOther = with(second, "keys.2.xml", [&] {
        ReleaseKeys keys;
        keys.number = 2;
        keys.keys.pushBack({other->publicKey(), true, true});
        return keys.toDocument().toStdString();
    }());
    const std::vector<std::pair<const char*, std::pair<std::function<void()>, const char*>>> rows = {
        {"arbitrary software, signed by somebody else", {[&] { mount(evil); }, "Signature is missing"}},
        {"arbitrary software, not signed",
         {[&] { mount(without(without(evil, "manifest"), "keys")); }, "Releases are not signed"}},
        {"arbitrary software under the publisher's keys",
         {[&] {
              Files files = evil;
              for (const auto& [name, bytes] : second)
                  if (name.find("keys.") == 0)
                      files[name] = bytes;
              mount(files);
          },
          "Signature is missing"}},
        {"rollback", {[&] { mount(first); }, "Manifest is older than one that was seen before"}},
        {"a flipped bit in the manifest",
         {[&] { mount(with(second, "manifest.xml", Flipped(second["manifest.xml"], "channel=\""))); },
          "Signature is wrong"}},
        {"a signature of another document",
         {[&] {
              mount(with(with(second, signature, first.at(signature)),
                         signature.substr(0, signature.size() - 7) + "2.minisig", first.at(signature)));
          },
          "Signature is wrong"}},
        {"mix and match: old declarations",
         {[&] { mount(with(without(second, "releases.xml"), "releases.xml", first.at("releases.xml"))); },
          "Document is not the one that the manifest lists"}},
        {"a release relabelled as 9.0.0",
         {[&] {
              std::string text = second["releases.xml"];
              text.replace(text.rfind("version=\"2"), 10, "version=\"9");
              mount(with(second, "releases.xml", text));
          },
          "Document is not the one that the manifest lists"}},
        {"a flipped bit in a definition",
         {[&] { mount(with(second, definition, Flipped(second[definition], "checksum=\""))); },
          "Document is not the one that the manifest lists"}},
        {"a link that leads elsewhere",
         {[&] { mount(with(second, attributes, Flipped(second[attributes], "to=\""))); },
          "Document is not the one that the manifest lists"}},
        {"links are withheld",
         {[&] { mount(without(second, "attributes.xml")); }, "Document is not the one that the manifest lists"}},
        {"extraneous files: another release declared and served",
         {[&] {
              Files files = evil;
              for (const auto& [name, bytes] : second)
                  if (name.find("manifest") == 0 || name.find("keys.") == 0)
                      files[name] = bytes;
              mount(files);
          },
          "Document is not the one that the manifest lists"}},
        {"endless data: the manifest",
         {[&] {
              mount(second);
              ScriptedAnswer endless = ScriptedAnswer::Body("<manifest>").failing(Fault::Endless, 0);
              endless.withLength = false;
              server.get("/manifest.xml", endless);
          },
          "Download larger than allowed"}},
        {"endless data: a signature",
         {[&] {
              mount(second);
              server.get("/" + signature, ScriptedAnswer::Body(std::string(8192, 'x')));
          },
          "Download larger than allowed"}},
        {"slow retrieval: the manifest stalls",
         {[&] {
              mount(second);
              server.get("/manifest.xml", ScriptedAnswer::Body(second["manifest.xml"]).failing(Fault::Stall, 5));
          },
          "Download timed out"}},
        {"keys that the known ones have not signed",
         {[&] { mount(keysOfOther); }, "Keys are not signed by enough of the known ones"}},
        {"the manifest is withheld", {[&] { mount(without(second, "manifest")); }, "Releases are not signed"}},
    };
    const auto patience = options.downloads.stallTimeout;
    const Files before = snapshot();
    for (const auto& [name, row] : rows) {
        if (std::string(name).find("link") != std::string::npos && before.count("place/of/app/alias") == 0)
            continue; // there are none here
        SCOPED_TRACE(name);
        options.downloads.stallTimeout = patience;
        if (std::string(name).find("slow") == 0) // the others may be so on a busy machine
            options.downloads.stallTimeout = VoMilliseconds(300);
        row.first();
        EXPECT_THAT(attempt(), HasSubstr(row.second));
        Files after = snapshot();
        for (auto entry = after.begin(); entry != after.end();)
            entry = entry->first.find("updates/documents") == 0 ? after.erase(entry) : std::next(entry);
        Files kept = before;
        for (auto entry = kept.begin(); entry != kept.end();)
            entry = entry->first.find("updates/documents") == 0 ? kept.erase(entry) : std::next(entry);
        EXPECT_EQ(after, kept);
    }
}

TEST_F(TrustAttack, FreezeIsSeenWhenTheManifestExpires)
{
    mount(second);
    EXPECT_EQ(attempt(at(Day(30))), "");
    EXPECT_THAT(attempt(at(Day(32))), HasSubstr("Manifest has expired"));
    TrustPolicy knowing = at(Day(32));
    knowing.allowExpired = true;
    EXPECT_EQ(attempt(knowing), "");
}

TEST_F(TrustAttack, AMirrorServesNoMoreThanThePublisherSigned)
{
    ScriptedHttpServer mirror;
    mount(second);
    const std::string definition = definitionOf(second, "2.0.0.0");
    server.get("/" + definition, ScriptedAnswer::Status(404, "Not Found"));
    mirror.get("/" + definition, ScriptedAnswer::Body(Flipped(second[definition], "checksum=\"")));
    options.downloads.mirrored = VoUrl(server.url("/").c_str());
    options.downloads.mirrors.pushBack(VoUrl(mirror.url("/").c_str()));
    EXPECT_THAT(attempt(), HasSubstr("Document is not the one that the manifest lists"));
    mirror.get("/" + definition, ScriptedAnswer::Body(second[definition]));
    EXPECT_EQ(attempt(), "");
}

TEST_F(TrustAttack, FastForwardEndsWithTheStolenKey)
{
    mount(forged({key}, ReleaseManifest::LargestSerial));
    ASSERT_EQ(attempt(), "") << "signed by the publisher's key, which was stolen";
    mount(second);
    ASSERT_THAT(attempt(), HasSubstr("Manifest is older than one that was seen before"));
    ReleaseSigner::KeyChange change;
    change.added.pushBack({other->publicKey(), true, true});
    change.removed.pushBack(key->id());
    ASSERT_TRUE(signer({key, other}).rotate(change).isInEffect);
    mount(folder());
    EXPECT_THAT(told([&] {
                    return TrustedReleases::Open(VoUrl(server.url("/releases.xml").c_str()), at(Day(2)), VoStopFlag(),
                                                 options.downloads)
                        .newest(packageID)
                        .version()
                        .toString()
                        .toStdString();
                }),
                "2.0.0.0");
    EXPECT_EQ(attempt(), "");
    EXPECT_EQ(installed(), New.at("program"));
    mount(second);
    EXPECT_THAT(attempt(), HasSubstr("Signature is missing")) << "the stolen key counts no more";
}

TEST_F(TrustAttack, OneKeyOfAThresholdIsNotEnough)
{
    ReleaseSigner::KeyChange change;
    change.added.pushBack({other->publicKey(), true, true});
    change.releaseThreshold = 2;
    ASSERT_TRUE(signer({key, other}).rotate(change).isInEffect);
    mount(folder());
    ASSERT_EQ(attempt(), "");
    Files files = forged({key}, 1000);
    for (const auto& [name, bytes] : folder())
        if (name.find("keys.") == 0)
            files[name] = bytes;
    mount(files);
    EXPECT_THAT(attempt(), HasSubstr("Too few signatures"));
    EXPECT_EQ(installed(), New.at("program"));
}

TEST_F(TrustAttack, AnotherPublishersPackageTakesNoInstalledOneOver)
{
    mount(second);
    ASSERT_EQ(attempt(), "");
    const auto unsignedRelease = [&] {
        mount(evil);
        return told([&] {
            const VoUrl url(server.url("/" + definitionOf(evil, "9.0.0.0")).c_str());
            InstalledPackages::Install(url, place(), VoStopFlag());
            return std::string();
        });
    };
    EXPECT_THAT(unsignedRelease(), HasSubstr("Package was installed from signed releases"));
    TrustPolicy believing = at(Day(2));
    believing.keys = {other->publicKey()};
    mount(evil);
    EXPECT_THAT(attempt(believing), HasSubstr("Signature is missing")) << "what was seen counts, not what is said now";
    const VoFilePath pin = updates().directory("installed").file(packageID.toString() + ".pin");
    WriteBytes(pin, "<pin");
    EXPECT_THAT(attempt(believing), HasSubstr("Record of the publisher cannot be read"));
    EXPECT_THAT(unsignedRelease(), HasSubstr("Record of the publisher cannot be read"));
    believing.allowOtherPublisher = true;
    EXPECT_EQ(attempt(believing), "");
    EXPECT_EQ(installed(), Mark + Evil.at("program"));
    InstalledPackages::Uninstall(packageID);
    EXPECT_FALSE(VoFileSystem::Exists(pin));
    EXPECT_EQ(unsignedRelease(), "");
}

TEST_F(TrustAttack, ADefinitionIsCheckedWithTheManifestFourNamesFurtherUp)
{
    mount(second);
    const std::string name = definitionOf(second, "2.0.0.0");
    const VoFilePath onDisk = declarations().parent().appended(VoFilePath(name.c_str()));
    const auto installAs = [&](const VoLocation& definition) {
        wipe();
        return told([&] { return installFrom(TrustedReleases::Open(definition, at(Day(2)), VoStopFlag())); });
    };
    const VoUrl url(server.url("/" + name).c_str());
    for (const VoLocation& definition : {VoLocation(onDisk), VoLocation(url)}) {
        EXPECT_EQ(installAs(definition), "") << definition;
        EXPECT_EQ(installed(), New.at("program")) << definition;
    }
    const std::string flipped = Flipped(second[name], "checksum=\"");
    WriteBytes(onDisk, flipped);
    server.get("/" + name, ScriptedAnswer::Body(flipped));
    for (const VoLocation& definition : {VoLocation(onDisk), VoLocation(url)})
        EXPECT_THAT(installAs(definition), HasSubstr("Document is not the one that the manifest lists")) << definition;
}

TEST_F(TrustAttack, WhatWasVerifiedIsAskedForAgainUnderTheLock)
{
    const VoFilePath document = declarations();
    ASSERT_EQ(install(at(Day(2))), "");
    const auto earlier = TrustedReleases::Open(document, at(Day(2)));
    ASSERT_TRUE(earlier.verify(packageID));
    ASSERT_TRUE(signer({key}).sign().isInEffect);
    ASSERT_EQ(install(at(Day(2))), "");
    EXPECT_THAT(installFrom(earlier), HasSubstr("A newer manifest was seen by another installation"));
    ReleaseSigner::KeyChange change;
    change.added.pushBack({other->publicKey(), true, true});
    const auto before = TrustedReleases::Open(document, at(Day(2)));
    ASSERT_TRUE(before.verify(packageID));
    ASSERT_TRUE(signer({key, other}).rotate(change).isInEffect);
    ASSERT_EQ(install(at(Day(2))), "");
    EXPECT_THAT(installFrom(before), HasSubstr("Keys of the package were changed by another installation"));
    // A repair needs no signature, but the very files that are installed.
    WriteBytes(placed("program"), "broken");
    const VoFilePath definition = document.parent().appended(VoFilePath(definitionOf(second, "2.0.0.0").c_str()));
    const std::string good = ReadBytes(definition);
    WriteBytes(definition, Flipped(good, "checksum=\""));
    const auto repair = [&] { return told([&] { return InstalledPackages::Repair(definition, VoStopFlag()), ""; }); };
    EXPECT_THAT(repair(), HasSubstr("Definition is not that of the installed files"));
    WriteBytes(definition, good);
    EXPECT_EQ(repair(), "");
    EXPECT_EQ(installed(), New.at("program"));
}

TEST_F(TrustAttack, ReadersOfAnyAgeOfTheFolderAreServed)
{
    // The manifest came before the change, all else after it; and the other way round for the signature.
    const std::string signature = "manifest.xml." + key->id().toStdString() + ".minisig";
    for (const char* stale : {"manifest.xml", signature.c_str()}) {
        SCOPED_TRACE(stale);
        Files mixed = second;
        mixed[stale] = first.at(stale);
        mount(mixed);
        wipe();
        EXPECT_EQ(attempt(), "");
        EXPECT_EQ(installed(), stale == signature ? New.at("program") : Old.at("program"));
    }
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
