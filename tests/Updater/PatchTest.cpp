// Patches: that they make the new content whatever was edited, and that nobody who publishes them can do harm.

#include "TrustFixture.h"

#include <Updater/ReleasePatches.h>
#include <Updater/UpdateCost.h>
#include <Updater/detail/files/FileDifference.h>
#include <Updater/detail/files/FilePatch.h>

#include <unordered_set>

namespace vo::test {

namespace {

using namespace vo::updater;
using namespace vo::updater::detail;

class Patching : public UpdaterTest
{
protected:
    std::string patch(const std::string& before, const std::string& after, const PatchWindow& most = PatchWindow())
    {
        WriteBytes(file("before"), before);
        WriteBytes(file("after"), after);
        MakePatch(
            file("before"), file("after"), file("patch"), [] {}, most);
        return ReadBytes(file("patch"));
    }

    std::string apply(const std::string& before, const std::string& patch, std::size_t size)
    {
        WriteBytes(file("before"), before);
        WriteBytes(file("patch"), patch);
        std::string made;
        try {
            ApplyPatch(file("before"), file("patch"), size,
                       [&](const char* bytes, std::size_t count) { made.append(bytes, count); });
        } catch (const VoException& failure) {
            EXPECT_LE(made.size(), size);
            return failure.message().toStdString().substr(0, 18);
        }
        return made;
    }
};

std::string Edited(std::string text, std::minstd_rand& random)
{
    for (auto edits = random() % 8; edits > 0; --edits) {
        const std::size_t at = text.empty() ? 0 : random() % text.size();
        switch (random() % 5) {
        case 0:
            text.insert(at, Noise(random() % 50, static_cast<unsigned>(random())));
            break;
        case 1:
            text.erase(at, random() % 50);
            break;
        case 2:
            for (std::size_t i = at; i < text.size(); i += 40) // addresses in code that has moved
                ++text[i];
            break;
        case 3:
            text += text.substr(at);
            break;
        default:
            text = text.substr(at) + text.substr(0, at);
        }
    }
    return text;
}

} // namespace

TEST_F(Patching, APatchThatWouldBeTooLargeIsGivenUpAndOneThatFitsIsTheSame)
{
    std::mt19937 random(5);
    std::string before;
    std::string after;
    for (int i = 0; i < 200000; ++i) {
        before += "0123456789abcdef"[random() % 16]; // compresses to about half
        after += i < 50000 ? before.back() : "0123456789abcdef"[random() % 16];
    }
    for (const PatchWindow& window : {PatchWindow(), PatchWindow{30000, 20000}}) {
        const std::string whole = patch(before, after, window);
        const auto make = [&](std::uint64_t mostBytes) {
            VoFileSystem::Remove(file("patch"));
            return MakePatch(
                file("before"), file("after"), file("patch"), [] {}, window, mostBytes);
        };
        ASSERT_TRUE(make(whole.size()));
        EXPECT_EQ(ReadBytes(file("patch")), whole);
        EXPECT_FALSE(make(whole.size() / 2));
        EXPECT_FALSE(VoFileSystem::Exists(file("patch")));
    }
}

TEST_F(Patching, MakesTheNewContentWhateverWasEdited)
{
    std::minstd_rand random(7);
    for (int i = 0; i < 400; ++i) {
        const std::string before =
            Noise(random() % 900, static_cast<unsigned>(i), 1 + static_cast<unsigned>(i) % 3 * 120);
        const std::string after = Edited(before, random);
        std::string made(after.size(), '?');
        ASSERT_TRUE(ApplyDifference(before, FindDifference(before, after), made)) << i;
        ASSERT_EQ(made, after) << i;
        if (i % 10 == 0) { // in windows: each alone has its part of the old content
            ASSERT_EQ(apply(before, patch(before, after, {200, 100}), after.size()), after) << i;
        }
    }
    // What it is for: code in which addresses have changed all over.
    const std::string code = Noise(20000, 1);
    std::string moved = code.substr(0, 9000) + Noise(300, 2) + code.substr(9000);
    for (std::size_t i = 0; i < moved.size(); i += 50)
        moved[i] = static_cast<char>(moved[i] + 12);
    EXPECT_LT(patch(code, moved).size(), 900u);
}

TEST_F(Patching, PatchesOfNobodyOrSomebodyElseDoNoHarm)
{
    const std::string before = Noise(600, 1);
    const std::string after = before.substr(0, 300) + "new" + before.substr(250);
    const std::string good = patch(before, after);
    ASSERT_EQ(apply(before, good, after.size()), after);
    const std::string refusal = "Patch does not fit";
    EXPECT_EQ(apply(before, good + "x", after.size()), refusal);
    EXPECT_EQ(apply(before, good, after.size() - 1), refusal);
    EXPECT_EQ(apply(before, good, after.size() + 1), refusal);
    EXPECT_EQ(apply(before.substr(1), good, after.size()), refusal);
    for (std::size_t i = 0; i < good.size(); ++i)
        EXPECT_EQ(apply(before, good.substr(0, i), after.size()), refusal) << i;
    // Whatever comes of a flipped byte, it has the right length: whether it is right the digest tells.
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string flipped = good;
        flipped[i] = static_cast<char>(flipped[i] ^ 0x41);
        EXPECT_THAT(apply(before, flipped, after.size()), testing::AnyOf(refusal, testing::SizeIs(after.size()))) << i;
    }
    // Numbers that promise gigabytes are refused before there is room for them.
    for (std::size_t field : {8u, 16u, 20u, 24u, 28u}) {
        std::string bomb = good;
        bomb.replace(field, 4, "\xff\xff\xff\xf0");
        EXPECT_EQ(apply(before, bomb, std::size_t{1} << 40), refusal) << field;
    }
}

namespace {

const Files Unpatched = {{"program", Noise(9000, 1)}, {"plugin", Noise(3000, 2)}, {"text", "one"}, {"same", "same"}};
const Files Patched = {{"program", Noise(4000, 1) + "!" + Noise(9000, 1)},
                       {"plugin", Noise(3000, 2) + "?"},
                       {"text", "two"},
                       {"same", "same"}};

class PatchedUpdate : public TrustTest
{
protected:
    PatchedUpdate()
    {
        release("1.0.0", Unpatched, {key});
        EXPECT_EQ(install(at(Day(1))), "");
        now = Day(1);
        release("1.1.0", Patched, {key});
    }

    VoDirectoryPath releasePlace() const
    {
        return declarations().parent().directory("packages").directory(packageID.toString()).directory("1.1.0.0");
    }
    VoFilePath document() const { return releasePlace().file(ReleasePatches::FileName); }

    /// Has the patches of the opened release say something else.
    TrustedReleases::Release openedWith(const std::function<void(ReleasePatches::Patch&)>& change) const
    {
        auto release = opened(at(Day(2)));
        ReleasePatches patches = *release.package->patches();
        change(patches.patches[0]);
        release.package->setPatches(std::make_shared<ReleasePatches>(patches));
        return release;
    }

    InstallationPlan plan(const TrustedReleases::Release& release) const
    {
        return InstalledPackages::Plan(*release.package, place(), options);
    }

    void installOpened(TrustedReleases::Release release)
    {
        options.proof = release.proof;
        InstalledPackages::Install(std::move(release.package), release.definition, place(), VoStopFlag(), options);
    }
};

} // namespace

TEST_F(PatchedUpdate, FetchesWhatItsPlanSaysAndNoMore)
{
    auto release = opened(at(Day(2)));
    const InstallationPlan planned = plan(release);
    ASSERT_EQ(planned.patches.size(), 2u);
    EXPECT_EQ(planned.patchedFiles, 2u);
    EXPECT_LT(planned.bytesToFetch, 400u);
    // Two files share a chunk. The patch of one saves nothing; that of the other saves less than the chunk, which is
    // fetched then.
    auto dear = opened(at(Day(2)));
    ReleasePatches patches = *dear.package->patches();
    std::unordered_set<VoUUID> fetched;
    for (const ChunkListing& chunk : planned.chunks)
        fetched.insert(chunk.id());
    for (ReleasePatches::Patch& patch : patches.patches) {
        patch.size = &patch == &patches.patches.front() ? 0 : -1;
        for (const auto& piece : dear.package->file(patch.fileID)->chunks()) {
            if (fetched.count(piece.chunkID()) == 0)
                patch.size += dear.package->chunk(piece.chunkID())->size().bytes();
        }
    }
    dear.package->setPatches(std::make_shared<ReleasePatches>(patches));
    EXPECT_EQ(plan(dear).patches.size(), 0u);
    // All else is taken away.
    Files served = FilesBelow(releasePlace());
    for (const auto& [name, bytes] : served) {
        const auto isIn = [&, chunk = name](const VoDeque<ChunkListing>& files) {
            return std::any_of(files.begin(), files.end(),
                               [&](const ChunkListing& file) { return file.path() == VoFilePath(VoString(chunk)); });
        };
        if (!isIn(planned.chunks) && !isIn(planned.patches))
            VoFileSystem::Remove(releasePlace().appended(VoFilePath(VoString(name))));
    }
    installOpened(std::move(release));
    EXPECT_EQ(FilesBelow(place()), Patched);
}

TEST_F(PatchedUpdate, WhatDoesNotFitIsBuiltOfChunks)
{
    using Patch = ReleasePatches::Patch;
    const auto patchFile = [&] {
        return releasePlace().appended(opened(at(Day(2))).package->patches()->patches[0].file().path());
    };
    const VoFilePath file = patchFile();
    const std::string good = ReadBytes(file);
    const std::string forged = good.substr(0, good.size() - 1) + static_cast<char>(good.back() ^ 1);
    const std::string bomb = std::string(good).replace(24, 4, "\xff\xff\xff\xf0"); // the length of the instructions
    struct Row
    {
        const char* name;
        std::string served;
        std::function<void(Patch&)> change;
    };
    const Row rows[] = {
        {"gone", "", [](Patch&) {}},
        {"damaged", forged, [](Patch&) {}},
        {"another file", good + good, [](Patch&) {}},
        {"cut short", good.substr(0, good.size() / 2), [](Patch&) {}},
        {"a bomb, and listed so", bomb, [&](Patch& patch) { patch.checksum = ChecksumOf(bomb); }},
        {"forged, and listed so", forged, [&](Patch& patch) { patch.checksum = ChecksumOf(forged); }},
        {"for another old file", good, [](Patch& patch) { patch.before.checksum = ChecksumOf("x"); }},
        {"for another new file", good, [](Patch& patch) { patch.after.checksum = ChecksumOf("x"); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto release = openedWith(row.change);
        row.served.empty() ? static_cast<void>(VoFileSystem::Remove(file)) : WriteBytes(file, row.served);
        installOpened(std::move(release));
        EXPECT_EQ(FilesBelow(place()), Patched);
        wipe();
        WriteBytes(file, good);
        options.proof = nullptr;
        InstalledPackages::Install(releasePlace().parent().directory("1.0.0.0").file("package.xml"), place(),
                                   VoStopFlag(), options);
    }
    // The user's own edit of the old file.
    WriteBytes(placed("program"), Noise(9000, 5));
    EXPECT_EQ(plan(opened(at(Day(2)))).patchedFiles, 1u);
    installOpened(opened(at(Day(2))));
    EXPECT_EQ(FilesBelow(place()), Patched);
}

TEST_F(PatchedUpdate, DocumentsThatTheManifestDoesNotListDoNotCount)
{
    EXPECT_NE(opened(at(Day(2))).package->patches(), nullptr);
    const std::string good = ReadBytes(document());
    for (const std::string& served :
         {good + " ", std::string("<html></html>"), std::string("<patches/>"), std::string()}) {
        WriteBytes(document(), served);
        EXPECT_EQ(opened(at(Day(2))).package->patches(), nullptr) << served;
    }
    WriteBytes(document(), good);
    const ReleasePatches patches = *opened(at(Day(2))).package->patches();
    EXPECT_EQ(patches.toDocument(), VoString(good));
    for (const VoString& id : {VoString("..\\x"), patches.patches[1].id.toString()}) // leads out; said twice
        EXPECT_THROW(ReleasePatches::Parse(VoString(good).replaced(patches.patches[0].id.toString(), id), "p"),
                     VoValidationException);
    // Cleared away with their release; and what was left by who was killed.
    release("1.2.0", Unpatched, {key});
    const VoDirectoryPath newest = releasePlace().parent().directory("1.2.0.0");
    const VoFilePath leftovers[] = {newest.file("patches.xml.tmpabcdefghijkl"), newest.file("patches\\no.vopatch"),
                                    newest.file("patches\\no.vopatch.tmpabcdefghijkl")};
    for (const VoFilePath& leftover : leftovers)
        WriteBytes(leftover, "x");
    signer({key}).clear(1, false);
    for (const VoFilePath& leftover : leftovers)
        EXPECT_FALSE(VoFileSystem::Exists(leftover)) << leftover.path().c_str();
    EXPECT_TRUE(VoFileSystem::Exists(newest.file(ReleasePatches::FileName)));
    EXPECT_FALSE(VoFileSystem::IsDirectory(releasePlace()));
    EXPECT_EQ(install(at(Day(2))), "");
    EXPECT_EQ(FilesBelow(place()), Unpatched);
}

} // namespace vo::test
