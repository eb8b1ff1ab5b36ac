// Releases that hold more than the bytes of files: links, programs, empty folders.

#include "InstallFixture.h"

#include <Updater/AdvertisedPackages.h>
#include <Updater/PackageVerifier.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/files/FileAttributes.h>

using namespace vo::test;
namespace fs = std::filesystem;
using testing::HasSubstr;
using vo::updater::ReleaseAttributes;
using vo::updater::VerificationReport;

namespace {

const Files Held = {{"bin/tool", "[x]#!/bin/sh"},
                    {"so/l.so.1.0", "one"},
                    {"so/l.so.1", "-> l.so.1.0"},
                    {"so/l.so", "-> l.so.1"},
                    {"current", "-> so"},
                    {"deep/er/up", "-> ../../current/l.so"},
                    {"logs/old/", ""},
                    {"readme.txt", "read me"}};

class ReleaseAttributesTest : public InstallTest
{
protected:
    void SetUp() override { VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(file("x").parent())); }
    ~ReleaseAttributesTest() override { vo::updater::detail::OverrideLinks(std::nullopt); }

    static VoFilePath attributesOf(const VoFilePath& definition)
    {
        return definition.parent().file(ReleaseAttributes::FileName);
    }

    fs::path at(const std::string& name) const { return vo::detail::ToNative(place()) / name; }

    VerificationReport verify() const { return InstalledPackages::Verify(packageID, VoStopFlag()); }

    std::string source(const char* version) const { return vo::detail::ToNative(sourceOf(version)).string(); }
};

} // namespace

TEST_F(ReleaseAttributesTest, AreInstalledUpdatedAndRemoved)
{
    const VoFilePath first = publish("1.0.0", Held);
    Files next = Held;
    next.erase("so/l.so.1.0");
    next["so/l.so.1.1"] = "two";
    next["so/l.so.1"] = "-> l.so.1.1";
    next["bin/tool"] = "#!/bin/sh"; // no program any more
    next["readme.txt"] = "[x]read me";
    next.erase("logs/old/");
    next["logs/new/"];
    const VoFilePath second = publish("1.1.0", next);
    EXPECT_TRUE(
        vo::updater::PackageVerifier::Verify(AdvertisedPackageListing::Open(second), second, sourceOf("1.1.0.0"), {}));
    fs::permissions(source("1.1.0.0") + "/readme.txt", fs::perms(0644));
    EXPECT_FALSE(
        vo::updater::PackageVerifier::Verify(AdvertisedPackageListing::Open(second), second, sourceOf("1.1.0.0"), {}));

    const InstallationPlan plan = InstalledPackages::Plan(first, place());
    EXPECT_EQ(plan.links.size(), 4u);
    EXPECT_EQ(plan.programs.size(), 1u);
    EXPECT_EQ(plan.folders.size(), 1u);
    install(first);
    EXPECT_EQ(installedTree(), Held);
    EXPECT_TRUE(verify().isIntact());
    EXPECT_TRUE(verify().extra.isEmpty());
    EXPECT_TRUE(InstalledPackages::Plan(first, place()).isUpToDate());

    // Of a file whose bytes stay and whose permissions do not nothing is fetched.
    const InstallationPlan update = InstalledPackages::Plan(second, place());
    EXPECT_EQ(update.chunks.size(), 1u);
    EXPECT_EQ(update.modifiedFiles, 2u);
    install(second);
    EXPECT_EQ(installedTree(), next);
    EXPECT_TRUE(verify().isIntact());

    // A release that says nothing takes the links away, and leaves permissions alone.
    vo::updater::UpdatePackageBuilder plain(*AdvertisedPackageListing::Open(second), VoVersion::Deserialize("1.2.0"),
                                            40, 6);
    WriteEntry(source("1.2.0.0") + "/readme.txt", "read me");
    plain.add(sourceOf("1.2.0.0"));
    plain.finalise(declarations());
    const VoFilePath third = declarations().parent().appended(
        vo::updater::AdvertisedPackages::Open(declarations())->newestPackage(packageID).path());
    EXPECT_FALSE(VoFileSystem::Exists(attributesOf(third)));
    install(third);
    EXPECT_EQ(installedTree(), (Files{{"readme.txt", "[x]read me"}}));

    fs::permissions(at("readme.txt"), fs::perms(0644)); // nobody knows any more that it was a program once
    install(first);
    EXPECT_EQ(installedTree(), Held);
    InstalledPackages::Uninstall(packageID);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
    EXPECT_EQ(FilesBelow(updates().directory("installed")).size(), 1u) << "the registry";
}

TEST_F(ReleaseAttributesTest, WhatTheUserChangedIsFoundAndMended)
{
    const VoFilePath definition = publish("1.0.0", Held);
    struct Damage
    {
        const char* name;
        std::function<void()> make;
        std::size_t missing, changed, notExecutable, missingFolders;
    };
    const Damage damages[] = {
        {"a program that may not be run", [&] { fs::permissions(at("bin/tool"), fs::perms(0644)); }, 0, 0, 1, 0},
        {"links that are missing", [&] { fs::remove(at("current")), fs::remove(at("so/l.so")); }, 2, 0, 0, 0},
        {"a link that leads elsewhere", [&] { fs::remove(at("current")), fs::create_symlink("bin", at("current")); }, 0,
         1, 0, 0},
        {"a file in place of a link", [&] { fs::remove(at("so/l.so")), WriteEntry(at("so/l.so"), "x"); }, 0, 1, 0, 0},
        {"a folder that is missing", [&] { fs::remove(at("logs/old")), fs::remove(at("logs")); }, 0, 0, 0, 1},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        wipe();
        install(definition);
        VoFileSystem::RemoveAll(staging());
        damage.make();
        const auto found = verify();
        EXPECT_EQ(found.missing.size(), damage.missing);
        EXPECT_EQ(found.changed.size(), damage.changed);
        EXPECT_EQ(found.notExecutable.size(), damage.notExecutable);
        EXPECT_EQ(found.missingFolders.size(), damage.missingFolders);
        const VoDirectoryPath chunks = definition.parent().directory("chunks");
        fs::rename(vo::detail::ToNative(chunks), vo::detail::ToNative(file("away")));
        // What stands on the server by now has not been verified.
        const std::string bytes = ReadBytes(attributesOf(definition));
        WriteBytes(attributesOf(definition), "damaged");
        EXPECT_EQ(Refusal([&] { InstalledPackages::Repair(definition, VoStopFlag()); }), "") << "no chunk is needed";
        WriteBytes(attributesOf(definition), bytes);
        fs::rename(vo::detail::ToNative(file("away")), vo::detail::ToNative(chunks));
        EXPECT_EQ(installedTree(), Held);
    }
}

TEST_F(ReleaseAttributesTest, LinksThatAreNotOfTheReleaseArePublishedByNobody)
{
    const std::pair<const char*, const char*> rows[] = {
        {"/etc/passwd", "it is absolute"},
        {"../../outside", "it leads out of the release"},
        {"../so/../../1.0.0.0/readme.txt", "it leads out of the release"},
        {"missing", "it leads to nothing in the release"},
        {"../readme.txt/x", "it leads to nothing in the release"},
        {"../readme.txt/..", "it leads to nothing in the release"},
        {"../up/so", "it leads out of the release"}, // another link leads above
        {"bad", "it leads in a circle, or through too many links"},
        {"L.SO.1.0", "it leads to nothing in the release"},
    };
    for (const auto& [to, why] : rows) {
        SCOPED_TRACE(to);
        VoFileSystem::RemoveAll(directory("source"));
        Files files = Held;
        files["so/bad"] = std::string("-> ") + to;
        if (std::string(to).find("up/") != std::string::npos)
            files["up"] = "-> ..";
        vo::updater::PackageBuilder builder(packageID, "Examples", VoVersion::Deserialize("1.0.0"), 40, 6);
        EXPECT_THAT(Refusal([&] { publish(builder, files); }), HasSubstr(why));
        EXPECT_TRUE(builder.package().files().isEmpty()) << "nothing was packed";
    }
    // Who does not ask gets the files that links lead to, as ever.
    vo::updater::PackageBuilder plain(packageID, "Examples", VoVersion::Deserialize("2.0.0"), 40, 6);
    WriteEntry(source("2.0.0.0") + "/a", "[x]one");
    WriteEntry(source("2.0.0.0") + "/b", "-> a");
    plain.add(sourceOf("2.0.0.0"));
    plain.finalise(declarations());
    EXPECT_EQ(plain.package().files().size(), 2u);
    EXPECT_TRUE(plain.package().attributes()->isEmpty());
}

TEST_F(ReleaseAttributesTest, NothingThatIsReadIsTrusted)
{
    const VoFilePath definition = publish("1.0.0", Held);
    const std::string good = ReadBytes(attributesOf(definition));
    const auto with = [&good](const std::string& element) {
        std::string bytes = good;
        return bytes.insert(bytes.find("</attributes>"), element);
    };
    std::string foreign = good;
    foreign.replace(foreign.find("versionID=\"") + 11, 4, "0000");
    const std::pair<std::string, const char*> rows[] = {
        {with("<link target=\"..\\x\" to=\"readme.txt\"/>"), "Invalid target path: ..\\x"},
        {with("<link target=\"x\" to=\"..\\..\\y\"/>"), "Invalid link: x -> ..\\..\\y: it leads out of the release"},
        {with("<link target=\"x\" to=\"/etc/passwd\"/>"), "it is absolute"},
        {with("<link target=\"x\" to=\"C:\\x\"/>"), "it is absolute"},
        {with("<link target=\"x\" to=\"so/../../y\"/>"), "it leads to nothing in the release"},
        {with("<link target=\"x\" to=\"\"/>"), "it leads to nothing in the release"},
        {with("<link target=\"x\" to=\"y\"/><link target=\"y\" to=\"x\"/>"), "it leads in a circle"},
        {with("<link target=\"readme.txt\" to=\"bin\"/>"), "cannot stand beside each other"},
        {with("<link target=\"BIN\" to=\"so\"/>"),
         "cannot stand beside each other"}, // where letter case does not count
        {with("<link target=\"x.voold\" to=\"so\"/>"), "Invalid target path: x.voold"},
        {with("<folder target=\"current\\sub\"/>"), "cannot stand beside each other"},
        {with("<executable target=\"current\"/>"), "Invalid attributes: no such file: current"},
        {foreign, "Invalid attributes: not those of the release: "},
        {"<package/>", "Attributes failed to load"},
        {"<!DOCTYPE a [<!ENTITY b \"c\">]>" + good, ""},
        {good.substr(0, good.size() / 2), ""},
    };
    for (const auto& [bytes, why] : rows) {
        SCOPED_TRACE(bytes.substr(0, 4000));
        WriteBytes(attributesOf(definition), bytes);
        const std::string failure = Refusal([&] { install(definition); });
        EXPECT_THAT(failure, HasSubstr("Installation failed"));
        EXPECT_THAT(failure, HasSubstr(why));
        EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
    }
    WriteBytes(attributesOf(definition), " <!DOCTYPE html><title>No such page");
    EXPECT_EQ(Refusal([&] { install(definition); }), "") << "what servers say instead of that there is none";
    EXPECT_EQ(fs::is_symlink(at("current")), false);
    WriteBytes(attributesOf(definition), good);
    install(definition);
    EXPECT_EQ(installedTree(), Held) << "what an installation that knows nothing of links has left out";
}

TEST_F(ReleaseAttributesTest, WhatOthersPutThereIsAskedFor)
{
    const VoFilePath definition = publish("1.0.0", Held);
    options.refuseForeignFiles = true;
    WriteEntry(at("current"), "-> so");
    install(definition);
    EXPECT_EQ(installedTree(), Held) << "the same link is taken over";
    // The user's own file in a link's place outlives the package, and so does what he put into its folder.
    fs::remove(at("current"));
    WriteEntry(at("current"), "mine");
    WriteEntry(at("logs/old/mine"), "mine");
    InstalledPackages::Uninstall(packageID);
    EXPECT_EQ(installedTree(), (Files{{"current", "mine"}, {"logs/old/mine", "mine"}}));
    EXPECT_THAT(Refusal([&] { install(definition); }), HasSubstr("File belongs to no package: "));
    options.refuseForeignFiles = false;
    install(definition);
    EXPECT_EQ(fs::read_symlink(at("current")), "so");
    fs::remove(at("current"));
    fs::create_directory(at("current"));
    WriteEntry(at("current/mine"), "mine");
    EXPECT_THAT(Refusal([&] { install(definition); }), HasSubstr("Directory in the way: "));
    fs::remove_all(at("current"));
    install(definition);

    vo::updater::PackageBuilder other(VoUUID("other"), "Others", VoVersion::Deserialize("7.0.0"), 40, 6);
    const VoFilePath taken = publish(other, {{"current", "a file"}});
    EXPECT_THAT(Refusal([&] { install(taken); }), HasSubstr("File belongs to another package: "));
    EXPECT_EQ(installedTree().at("current"), "-> so");
}

TEST_F(ReleaseAttributesTest, LinksAreCopiesWhereThereCanBeNone)
{
    vo::updater::detail::OverrideLinks(true);
    Files copied = Held;
    for (const char* link :
         {"so/l.so.1", "so/l.so", "deep/er/up", "current/l.so", "current/l.so.1", "current/l.so.1.0"})
        copied[link] = "one";
    copied.erase("current");
    const VoFilePath first = publish("1.0.0", Held);
    EXPECT_TRUE(InstalledPackages::Plan(first, place()).copiesLinks);
    install(first);
    EXPECT_EQ(installedTree(), copied);
    EXPECT_TRUE(InstalledPackages::Plan(first, place()).isUpToDate());
    WriteEntry(at("so/l.so"), "xne");
    EXPECT_EQ(verify().changed.size(), 1u);
    fs::remove(at("current/l.so"));
    InstalledPackages::Repair(first, VoStopFlag());
    EXPECT_TRUE(verify().missing.isEmpty());

    Files next = Held;
    next["so/l.so.1.0"] = "three";
    next.erase("current");
    next["deep/er/up"] = "-> ../../so/l.so";
    install(publish("1.1.0", next));
    for (const char* link : {"so/l.so.1", "so/l.so", "deep/er/up"})
        next[link] = "three";
    EXPECT_EQ(installedTree(), next);
    InstalledPackages::Uninstall(packageID);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
}
