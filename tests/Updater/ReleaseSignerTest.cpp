// What a publisher does with keys, manifests and releases, and what installations are offered.

#include "TrustFixture.h"

#include <Updater/detail/publish/PublishingFolder.h>
#include <Updater/detail/registry/RolloutPlace.h>

using namespace vo::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vo::updater::PackageBuilder;

namespace {

const Files Content = {{"program", Noise(120, 1)}};

class Publisher : public TrustTest
{
protected:
    void edit(const char* version, const std::function<void(ReleaseManifest::Release&)>& change)
    {
        signer({key}).change([&](ReleaseManifest& manifest) {
            for (ReleaseManifest::Release& release : manifest.releases) {
                if (release.version == VoVersion::Deserialize(version))
                    change(release);
            }
        });
    }
};

} // namespace

TEST_F(Publisher, AFolderWithoutKeysStaysAsItWas)
{
    publish("1.0.0", Content);
    for (const auto& [name, bytes] : folder())
        EXPECT_TRUE(name == "releases.xml" || name.find("packages/") == 0) << name;
    TrustPolicy nobody;
    EXPECT_EQ(offered(nobody), "1.0.0.0");
    nobody.requireSignature = true;
    EXPECT_THAT(offered(nobody), HasSubstr("Releases are not signed"));
}

TEST_F(Publisher, WhatIsChangedWithoutAKeyWaitsForOne)
{
    EXPECT_TRUE(release("1.0.0", Content, {key}).isInEffect);
    const auto waiting = release("2.0.0", Content, {});
    EXPECT_FALSE(waiting.isInEffect);
    EXPECT_EQ(waiting.needed, 1u);
    EXPECT_EQ(offered(at(Day(1))), "1.0.0.0") << "as the manifest in effect says";
    EXPECT_THAT(told([&] { return signer({key}).sign(true).isInEffect ? std::string() : "waits"; }),
                HasSubstr("Release is not signed yet"))
        << "a timer vouches for nothing new";
    EXPECT_THAT(told([&] { return signer({other}).sign().isInEffect ? std::string() : "waits"; }),
                HasSubstr("Key does not sign releases here"));
    const auto serial = signer({}).manifest()->serial;
    const auto state = signer({key}).sign();
    EXPECT_TRUE(state.isInEffect);
    EXPECT_EQ(state.serial, serial) << "the very manifest that waited";
    EXPECT_EQ(offered(at(Day(1))), "2.0.0.0");
    const Files before = folder();
    EXPECT_TRUE(signer({key}).sign(true).isInEffect);
    EXPECT_GT(signer({}).manifest()->serial, serial);
    Files changed = before;
    for (const auto& [name, bytes] : folder())
        if (name.find("package.xml") != std::string::npos)
            changed[name] = "<package/>";
    putFolder(changed);
    EXPECT_THAT(told([&] { return signer({key}).sign().isInEffect ? std::string() : "waits"; }),
                HasSubstr("Definition was changed since it was signed"));
}

TEST_F(Publisher, ThresholdsAreMetByKeyHoldersOneAfterTheOther)
{
    const Key third = NewKey();
    release("1.0.0", Content, {key});
    ReleaseSigner::KeyChange change;
    change.added = {{other->publicKey(), true, true}, {third->publicKey(), true, false}};
    change.releaseThreshold = 2;
    change.keyThreshold = 2;
    auto state = signer({key}).rotate(change);
    EXPECT_FALSE(state.isInEffect);
    EXPECT_EQ(offered(at(Day(1))), "1.0.0.0");
    state = signer({other}).rotate({});
    EXPECT_TRUE(state.isInEffect) << state.missingOwn << state.missingBefore << state.missingManifest;
    EXPECT_EQ(state.keys.number, 2u);
    EXPECT_EQ(offered(at(Day(1))), "1.0.0.0");
    EXPECT_FALSE(release("2.0.0", Content, {key}).isInEffect);
    EXPECT_EQ(offered(at(Day(1))), "1.0.0.0");
    EXPECT_TRUE(signer({third}).sign().isInEffect);
    EXPECT_EQ(offered(at(Day(1))), "2.0.0.0");
    EXPECT_THAT(told([&] {
                    ReleaseSigner::KeyChange more;
                    more.removed.pushBack(key->id());
                    more.keyThreshold = 1;
                    return signer({third}).rotate(more).isInEffect ? std::string() : "waits";
                }),
                HasSubstr("Key does not sign keys here"));
    ReleaseSigner::KeyChange lower;
    lower.keyThreshold = 1;
    EXPECT_FALSE(signer({other}).rotate(lower).isInEffect); // by the threshold before
    // Who knows the first key only, a later one only, or both as a set.
    TrustPolicy later = at(Day(1));
    later.keys = {other->publicKey()};
    EXPECT_EQ(offered(later), "2.0.0.0");
    later.keys = {NewKey()->publicKey()};
    EXPECT_THAT(offered(later), HasSubstr("Signature is missing"));
}

TEST_F(Publisher, OffersAreAsTheManifestSays)
{
    release("1.0.0", Content, {key});
    ASSERT_EQ(install(at(Day(1))), "");
    release("2.0.0", Content, {key});
    const auto why = [&](const TrustPolicy& trust) {
        const auto releases = TrustedReleases::Open(declarations(), trust);
        return releases.whyNotOffered(releases.declarations()->newestPackage(packageID)).toStdString();
    };
    struct Row
    {
        std::function<void(ReleaseManifest::Release&)> change;
        const char* why;
    };
    const std::vector<Row> rows = {
        {[](auto& r) { r.isWithdrawn = true; }, "it was withdrawn by its publisher"},
        {[](auto& r) { r.isWithdrawn = false, r.channel = "beta"; }, "it is of the channel \"beta\""},
        {[](auto& r) { r.channel = "nightly"; }, "it is of the channel \"nightly\""},
        {[](auto& r) { r.channel = "release", r.start = Day(5); }, "its roll-out begins at 2030-01-06T00:00:00.000Z"},
        {[](auto& r) { r.start = Day(0), r.share = 0; },
         "it is rolled out to a share of the installations that this one is not in"},
        {[](auto& r) { r.share = 10000, r.from = VoVersion(1, 5, 0, VoVersion::Release); },
         "it updates no release older than 1.5.0.0"},
        {[](auto& r) { r.from = VoVersion(1, 0, 0, VoVersion::Release), r.notes = "https://example.org/2"; }, ""},
    };
    for (const Row& row : rows) {
        edit("2.0.0", row.change);
        EXPECT_EQ(why(at(Day(1))), row.why);
        EXPECT_EQ(offered(at(Day(1))), *row.why ? "1.0.0.0" : "2.0.0.0");
        TrustPolicy beta = at(Day(1));
        beta.channel = "beta";
        EXPECT_EQ(why(beta).empty(), *row.why == '\0' || std::string(row.why).find("\"beta\"") != std::string::npos);
    }
    for (const VoString& notes : {VoString("file:///x"), "https://example.org/" + VoString('x', 2000)})
        EXPECT_THAT(told([&] {
                        edit("2.0.0", [&](auto& r) { r.notes = notes; });
                        return std::string();
                    }),
                    HasSubstr("Invalid manifest: URL of notes"));
    // The lowest release is remembered, also when the publisher's folder forgets it.
    const Files before = folder();
    signer({key}).change([&](ReleaseManifest& m) { m.raiseLowest(packageID, VoVersion(2, 0, 0, VoVersion::Release)); });
    EXPECT_EQ(install(at(Day(1))), "");
    edit("2.0.0", [](auto& r) { r.isWithdrawn = true; });
    EXPECT_THAT(offered(at(Day(1))), HasSubstr("Release 2.0.0.0 is not offered: it was withdrawn"));
    EXPECT_THAT(why(at(Day(1))), HasSubstr("withdrawn"));
    const auto releases = TrustedReleases::Open(declarations(), at(Day(1)));
    EXPECT_THAT(releases.whyNotOffered(releases.declarations()->declarations().front()).toStdString(),
                HasSubstr("the lowest release that may be installed"));
}

TEST_F(Publisher, ARollOutTakesInTheShareThatItNames)
{
    std::size_t inTenth = 0;
    for (int i = 0; i < 2000; ++i)
        inTenth += vo::updater::detail::RolloutPlace(VoUpdater::GenerateID()) < 1000 ? 1 : 0;
    EXPECT_GT(inTenth, 130u);
    EXPECT_LT(inTenth, 270u);
    const VoUUID id = VoUpdater::GenerateID();
    const auto place = vo::updater::detail::RolloutPlace(id);
    EXPECT_EQ(vo::updater::detail::RolloutPlace(id), place) << "kept beside the registry";
    WriteBytes(updates().directory("installed").file("rollout.id"), "damaged");
    vo::updater::detail::RolloutPlace(id);
    EXPECT_EQ(ReadBytes(updates().directory("installed").file("rollout.id")).size(), 32u);
}

TEST_F(Publisher, ClearingKeepsWhatAnybodyRefersTo)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(file("x").parent()));
    for (const char* version : {"1.0.0", "2.0.0", "3.0.0"})
        release(version, {{"program", Noise(120, static_cast<unsigned>(version[0]))}, {"alias", "-> program"}}, {key});
    const VoFilePath second = file("server/others.xml");
    WriteBytes(second, ReadBytes(declarations()));
    WriteBytes(file("server/readme.txt"), "mine");
    const auto releases = [&] {
        std::set<std::string> found;
        for (const auto& [name, bytes] : folder())
            if (name.find("/package.xml") != std::string::npos)
                found.insert(name.substr(name.size() - 19, 7));
        return found;
    };
    EXPECT_THAT(signer({}).clear(1, true).releases, testing::SizeIs(2));
    EXPECT_EQ(releases().size(), 3u) << "only looked";
    EXPECT_EQ(signer({key}).clear(1, false).files, 0u) << "another document declares all of them";
    VoFileSystem::Remove(second);
    WriteBytes(declarations()
                   .parent()
                   .directory("packages")
                   .directory(packageID.toString())
                   .directory("3.0.0.0")
                   .directory("chunks")
                   .file("left.vochk"),
               "x");
    WriteBytes(file("server/releases.xml.tmpabcdefghijkl"), "x");
    const auto cleared = signer({key}).clear(1, false);
    EXPECT_GT(cleared.files, 5u);
    EXPECT_THAT(releases(), ElementsAre("3.0.0.0"));
    const Files left = folder();
    EXPECT_EQ(std::count_if(left.begin(), left.end(),
                            [](const auto& file) { return file.first.find("attributes.xml") != std::string::npos; }),
              1);
    EXPECT_EQ(ReadBytes(file("server/readme.txt")), "mine");
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(signer({key}).clear(1, false).files, 0u);
    // Without a key the manifest in effect goes on listing what is not declared any more.
    release("4.0.0", Content, {key});
    EXPECT_FALSE(signer({}).clear(1, false).manifest.isInEffect);
    wipe();
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(releases().size(), 2u);
    EXPECT_TRUE(signer({key}).sign().isInEffect);
    EXPECT_GT(signer({}).clear(1, false).files, 0u);
    EXPECT_EQ(releases().size(), 1u);
    // The folder of a run that goes on is not that of a killed one.
    const VoTemporaryDir alive;
    const vo::updater::detail::LivingFolder living(alive.path());
    const VoTemporaryDir dead;
    WriteBytes(dead.path().file(".publishing"), "");
    EXPECT_GE(signer({}).clear(1, false).folders, 1u);
    EXPECT_TRUE(VoFileSystem::IsDirectory(alive.path()));
    EXPECT_FALSE(VoFileSystem::IsDirectory(dead.path()));
}

TEST_F(Publisher, AttributesAreListedOrDoNotCount)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(file("x").parent()));
    const Files linked = {{"program", "[x]" + Noise(120, 1)}, {"alias", "-> program"}};
    release("1.0.0", Content, {key});
    const VoFilePath added = declarations().parent().appended(VoFilePath("packages/" + packageID.toString() +
                                                                         "/1.0.0.0"
                                                                         "/attributes.xml"));
    const auto listing = AdvertisedPackageListing::Open(added.parent().file("package.xml"));
    WriteBytes(added, "<attributes packageID=\"" + packageID.toString().toStdString() + "\" versionID=\"" +
                          listing->versionID().toString().toStdString() +
                          "\"><link target=\"evil\" to=\"program\"/></attributes>");
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(installedTree(), Content) << "not listed by the manifest";
    const auto sign = [&] { return told([&] { return std::to_string(signer({key}).sign().serial); }); };
    EXPECT_THAT(sign(), HasSubstr("Document was changed since it was signed"));
    VoFileSystem::Remove(added);

    now = Day(1);
    release("2.0.0", linked, {key});
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(installedTree(), linked);
    // Until a key has signed what was published in its place, the former build is installed with what it had.
    VoFileSystem::RemoveAll(directory("source"));
    release("2.0.0", Content, {});
    wipe();
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(installedTree(), linked);
    EXPECT_TRUE(signer({key}).sign().isInEffect);
    EXPECT_EQ(install(at(Day(1))), "");
    EXPECT_EQ(installedTree().count("alias"), 0u);
}

TEST_F(Publisher, DamagedDocumentsAreRefusedByName)
{
    release("1.0.0", Content, {key});
    const std::string manifest = folder().at("manifest.xml");
    const std::string keys = folder().at("keys.1.xml");
    const auto with = [](std::string text, const std::string& from, const std::string& to) {
        EXPECT_NE(text.find(from), std::string::npos) << from;
        return text.replace(text.find(from), from.size(), to);
    };
    const std::vector<std::pair<std::string, const char*>> manifests = {
        {with(manifest, "serial=\"1\"", "serial=\"0\""), "Invalid manifest: serial number"},
        {with(manifest, "serial=\"1\"", "serial=\"1000000000000001\""), "Invalid manifest: serial number"},
        {with(manifest, "2030-01-31", "2029-01-31"), "Invalid manifest: it expires before it was made"},
        {with(manifest, "path=\"packages", "path=\"..\\packages"), "Invalid definition path"},
        {with(manifest, "channel=\"release\"", "channel=\"a/b\""), "Invalid manifest: channel"},
        {with(manifest, "channel=\"release\"", "channel=\"release\" share=\"10001\""), "Invalid manifest: share"},
        {with(manifest, "</manifest>",
              manifest.substr(manifest.find("<release"),
                              manifest.find("/>", manifest.find("<release")) + 2 - manifest.find("<release")) +
                  "</manifest>"),
         "Invalid manifest: said twice"},
        {"<packages/>", "Manifest failed to load"},
    };
    for (const auto& [text, refusal] : manifests)
        EXPECT_THAT(
            told([&, &text = text] { return std::to_string(ReleaseManifest::Parse(VoString(text), "m").serial); }),
            HasSubstr(refusal));
    const std::string line = keys.substr(keys.find("<key "), keys.find("/>") + 2 - keys.find("<key "));
    const std::vector<std::pair<std::string, const char*>> sets = {
        {with(keys, "</keys>", line + "</keys>"), "Invalid keys: a key is there twice"},
        {with(keys, "releases=\"1\"", "releases=\"2\""), "Invalid keys: fewer keys for releases"},
        {with(keys, "keys=\"1\"", "keys=\"0\""), "Invalid keys: fewer keys for keys"},
        {with(keys, "number=\"1\"", "number=\"0\""), "Invalid keys: number"},
        {with(keys, "line=\"RW", "line=\"XX"), "Not a public key"},
    };
    for (const auto& [text, refusal] : sets)
        EXPECT_THAT(told([&, &text = text] { return std::to_string(ReleaseKeys::Parse(VoString(text), "k").number); }),
                    HasSubstr(refusal));
}
