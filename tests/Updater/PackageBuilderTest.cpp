#include "UpdaterFixture.h"

#include <FileSystem/VoFileSystem.h>
#include <Threading/VoReceiver.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/PackageBuilder.h>
#include <Updater/UpdatePackageBuilder.h>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

using namespace vo::updater;
using namespace vo::test;

namespace {

using Message = AbstractPackageBuilder::Message;

const VoVersion Version100(1, 0, 0, VoVersion::Release);

class PackageBuilding : public UpdaterTest
{
protected:
    PackageBuilding() { std::filesystem::create_directory(vo::detail::ToNative(directory("site"))); }

    std::unique_ptr<PackageBuilder> builder(std::uint64_t chunkSize = 64, const VoVersion& version = Version100,
                                            const char* id = "pack")
    {
        return std::make_unique<PackageBuilder>(VoUUID(id), "Examples", version, chunkSize, 6);
    }

    VoFilePath declarations() const { return file("site\\releases.xml"); }
    VoDirectoryPath release(const char* version = "1.0.0.0") const
    {
        return directory("site").directory("packages").directory("pack").directory(version);
    }
    VoDirectoryPath source() const { return directory("source"); }

    void makeSource(const Files& files) const
    {
        std::filesystem::remove_all(vo::detail::ToNative(source()));
        for (const auto& [name, content] : files)
            WriteBytes(source().file(VoString(name)), content);
    }

    /// The files of a published release, put together from its chunks without the library's decompression.
    static Files Reassemble(const VoFilePath& definition)
    {
        const auto package = AdvertisedPackageListing::Open(definition);
        std::map<std::string, std::string> chunks;
        for (const ChunkListing& chunk : package->chunks()) {
            const std::string bytes = ReadBytes(definition.parent().appended(chunk.path()));
            EXPECT_EQ(chunk.checksum(), ChecksumOf(bytes));
            EXPECT_EQ(chunk.size(), Bytes(static_cast<std::int64_t>(bytes.size())));
            chunks[chunk.id().toString().toStdString()] =
                qUncompress(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size())).toStdString();
        }
        Files files;
        for (const AdvertisedFileListing& listing : package->files()) {
            std::string content;
            for (const ChunkReferenceListing& piece : listing.chunks()) {
                const std::string& chunk = chunks.at(piece.chunkID().toString().toStdString());
                EXPECT_LE(piece.offset() + piece.length(), chunk.size());
                content += chunk.substr(piece.offset(), piece.length());
            }
            EXPECT_EQ(listing.checksum(), ChecksumOf(content));
            EXPECT_EQ(listing.size(), Bytes(static_cast<std::int64_t>(content.size())));
            std::string name = listing.target().path().toStdString();
            std::replace(name.begin(), name.end(), '\\', '/');
            files[name] = content;
        }
        return files;
    }

    Files published(const char* version = "1.0.0.0") const { return Reassemble(release(version).file("package.xml")); }

    /// The warnings of the builder's category so far, without the IDs that end them.
    std::vector<std::string> warnings() const
    {
        std::vector<std::string> texts;
        for (const vo::logging::Record& record : log.records()) {
            const std::string text = record.text.toStdString();
            if (record.category == "update builder" && record.level == vo::logging::Level::Warning)
                texts.push_back(text.substr(0, text.find(" [packageID=")));
        }
        return texts;
    }

    std::vector<std::string> targets(const AbstractPackageBuilder& builder) const
    {
        std::vector<std::string> result;
        for (const auto& listing : builder.package().files())
            result.push_back(listing.target().path().toStdString());
        return result;
    }
};

} // namespace

TEST_F(PackageBuilding, AnyTreeComesBackFromTheChunksOfAnySize)
{
    std::mt19937 random(11);
    for (std::uint64_t chunkSize : {1, 2, 3, 7, 10, 64, 1000, 65536, 1 << 20}) {
        SCOPED_TRACE(chunkSize);
        Files files;
        for (int i = 0; i < 25; ++i) {
            const std::string name = (i % 3 ? "dir " + std::to_string(i % 4) + "/s/" : "") + "f" + std::to_string(i);
            // Small chunks get small files: each chunk is forced to disk.
            const std::size_t most = std::min<std::size_t>(chunkSize * 4, 400);
            const std::size_t sizes[] = {0, 1, most / 4, most / 2, random() % most};
            files[name] = Noise(sizes[random() % 5], static_cast<unsigned>(i), 5);
        }
        if (chunkSize >= 1000)
            files["large"] = Noise(300000, 1, 5);
        makeSource(files);
        std::filesystem::remove_all(vo::detail::ToNative(directory("site")));

        const auto packer = builder(chunkSize);
        packer->add(source());
        packer->finalise(declarations());
        EXPECT_EQ(published(), files);
        for (const auto& listing : packer->package().files())
            EXPECT_EQ(listing.checksum(), VoFileSystem::Checksum(source().appended(listing.target())));
    }
}

TEST_F(PackageBuilding, AReleaseIsLaidOutBesideItsDeclarations)
{
    makeSource({{"a.txt", "content"}});
    const auto packer = builder();
    packer->add(source().file("a.txt"), VoFilePath("sub/a.txt"));
    EXPECT_TRUE(FilesBelow(directory("site")).empty());
    packer->finalise(declarations());

    const std::string chunk = packer->package().chunks()[0].id().toString().toStdString();
    std::set<std::string> names;
    for (const auto& [name, content] : FilesBelow(directory("site")))
        names.insert(name);
    EXPECT_EQ(names, (std::set<std::string>{"releases.xml", "packages/pack/1.0.0.0/package.xml",
                                            "packages/pack/1.0.0.0/chunks/" + chunk + ".vochk"}));

    const auto opened = AdvertisedPackages::Open(declarations());
    ASSERT_EQ(opened->declarations().size(), 1u);
    const auto& declaration = opened->newestPackage(VoUUID("pack"));
    EXPECT_EQ(declaration.path().path().toStdString(), "packages\\pack\\1.0.0.0\\package.xml");
    EXPECT_EQ(declaration.versionID(), packer->versionID());
    EXPECT_EQ(declaration.name(), "Examples");
    EXPECT_EQ(published(), (Files{{"sub/a.txt", "content"}}));
}

TEST_F(PackageBuilding, ProgressIsToldInOrder)
{
    makeSource({{"a", "0123456789"}, {"b", "x"}});
    const auto packer = builder(10);
    std::vector<std::string> messages;
    const VoReceiver receiver = packer->connect(
        [&messages](const VoSharedPtr<Message>& message) { messages.push_back(message->message().toStdString()); });
    packer->add(source());
    packer->finalise(declarations());

    ASSERT_EQ(packer->package().chunks().size(), 2u);
    const auto isChunkLine = [&packer](const std::string& line, std::size_t chunk) {
        const std::string id = packer->package().chunks()[chunk].id().toString().toStdString();
        return line.rfind("Writing chunk " + id + " to ", 0) == 0 &&
               line.find(id + ".vochk") == line.size() - id.size() - 6;
    };
    ASSERT_EQ(messages.size(), 9u);
    EXPECT_EQ(messages[0], "Adding file to package: a");
    EXPECT_TRUE(isChunkLine(messages[1], 0)) << messages[1];
    EXPECT_EQ(messages[2], "Adding file to package: b");
    EXPECT_TRUE(isChunkLine(messages[3], 1)) << messages[3];
    EXPECT_EQ(messages[4], "Finalising build");
    EXPECT_EQ(messages[5], "Moving chunks to output directory");
    EXPECT_EQ(messages[6], "Writing definition file: " + release().file("package.xml").path().toStdString());
    EXPECT_EQ(messages[7], "Updating declarations file: " + declarations().path().toStdString());
    EXPECT_EQ(messages[8], "Package creation complete");
}

TEST_F(PackageBuilding, AnUpdateKeepsTheIDsOfKnownTargets)
{
    makeSource({{"same", "1"}, {"changed", "2"}, {"gone", "3"}});
    const auto first = builder();
    first->add(source());
    makeSource({{"SAME", "1"}, {"changed", "other"}, {"new", "4"}});
    UpdatePackageBuilder second(first->package(), VoVersion(1, 1, 0, VoVersion::Release), 64, 6);
    second.add(source());

    EXPECT_EQ(second.packageID(), first->packageID());
    EXPECT_EQ(second.package().name(), "Examples");
    EXPECT_NE(second.versionID(), first->versionID());
    std::map<std::string, FileDifference::Type> differences;
    const auto compared = first->package().compare(second.package());
    for (const FileDifference& difference : compared->fileDifferences()) {
        const auto* listing = second.package().file(difference.fileID());
        listing = listing ? listing : first->package().file(difference.fileID());
        differences[listing->target().path().toStdString()] = difference.type();
    }
    EXPECT_EQ(differences, (std::map<std::string, FileDifference::Type>{{"changed", FileDifference::Modified},
                                                                        {"gone", FileDifference::Removed},
                                                                        {"new", FileDifference::Added}}));
}

TEST_F(PackageBuilding, AFirstReleaseGivesEveryFileANewID)
{
    makeSource({{"a", ""}, {"b", ""}});
    const auto packer = builder();
    packer->add(source());
    EXPECT_NE(packer->package().files()[0].id(), packer->package().files()[1].id());
    EXPECT_NE(packer->fileID(VoFilePath("a")), packer->fileID(VoFilePath("a")));
}

TEST_F(PackageBuilding, TargetsAreSortedByTheirBytes)
{
    makeSource({{"b", ""}, {"B2", ""}, {"a/z", ""}, {"a.txt", ""}, {"\xC3\xA9", ""}});
    const auto packer = builder();
    packer->add(source());
    EXPECT_EQ(targets(*packer), (std::vector<std::string>{"B2", "a.txt", "a\\z", "b", "\xC3\xA9"}));
}

TEST_F(PackageBuilding, WhatNoClientWouldInstallIsRefusedBeforeAnythingIsPackedAndTheRuleIsNamed)
{
    const std::string added = "File already added to package: ";
    const std::string invalid = "Invalid target path: ";
    // Names that some systems cannot hold are refused as single targets.
    for (const auto& [target, text] : std::vector<std::pair<std::string, std::string>>{
             {"Dir\\\xC3\x89.txt", added + "Dir\\\xC3\x89.txt"},
             {"dir\\\xC3\xA9.TXT", added + "dir\\\xC3\xA9.TXT and Dir\\\xC3\x89.txt differ only in letter case"},
             {"..\\a", invalid + "..\\a: a name in it ends with a dot or a blank"},
             {"x.VoNew", invalid + "x.VoNew: names that end like this are those of files that are being installed"},
             {"nul", invalid + "nul: a name in it is that of a device"},
             {"a\\<b>", invalid + "a\\<b>: it holds one of ? * | \" < >, which Windows takes in no name"},
         }) {
        makeSource({{"a", "1"}});
        const auto packer = builder();
        packer->requirePortableNames();
        packer->add(source().file("a"), VoFilePath("Dir/\xC3\x89.txt"));
        EXPECT_EQ(Refusal([&] { packer->add(source().file("a"), VoFilePath::CreateUnchecked(VoString(target))); }),
                  text);
        EXPECT_EQ(packer->package().files().size(), 1u);
    }
#if !defined(_WIN32)
    const std::string large(1000, 'x');
    for (const auto& [files, text] : std::vector<std::pair<Files, std::string>>{
             {{{"0", large}, {"x.vonew", "1"}}, invalid + "x.vonew: names that end like this are those of files"},
             {{{"0", large}, {"a.txt", "1"}, {"A.TXT", "2"}}, added + "A.TXT and a.txt differ only in letter case"},
             {{{"0", large}, {"dir", "1"}, {"Dir/x", "2"}}, invalid + "dir: it is also the directory of Dir\\x"},
             {{{"0", large}, {" a", "1"}}, invalid + " a: it begins with a blank"},
             {{{"0", large}, {"why?", "1"}}, invalid + "why?: it holds one of"},
         }) {
        makeSource({});
        for (const auto& [name, content] : files) {
            const auto path = std::filesystem::path(vo::detail::ToNative(source())) / name;
            std::filesystem::create_directories(path.parent_path());
            std::ofstream(path) << content;
        }
        const auto packer = builder();
        packer->requirePortableNames();
        bool hasPacked = false;
        const VoReceiver receiver = packer->connect([&](const VoSharedPtr<Message>&) { hasPacked = true; });
        EXPECT_EQ(Refusal([&] { packer->add(source(), declarations()); }).substr(0, text.size()), text);
        EXPECT_FALSE(hasPacked);
    }
#endif
}

TEST_F(PackageBuilding, LongTargetsOnlyWarn)
{
    makeSource({{"a", "1"}});
    const auto packer = builder();
    std::vector<std::string> messages;
    const VoReceiver receiver = packer->connect(
        [&messages](const VoSharedPtr<Message>& message) { messages.push_back(message->message().toStdString()); });
    packer->add(source().file("a"), VoFilePath(VoString('x', 160)));
    EXPECT_TRUE(warnings().empty());
    const std::string target(161, 'y');
    packer->add(source().file("a"), VoFilePath(VoString(target)));
    EXPECT_EQ(warnings(), std::vector<std::string>{"File path exceeds 160 characters: " + target});
    EXPECT_EQ(messages.back(), "Warning - File path exceeds 160 characters: " + target);
    EXPECT_EQ(packer->package().files().size(), 2u);
}

TEST_F(PackageBuilding, AMissingSourceKeepsTheFilesBeforeIt)
{
    makeSource({{"a", "1"}, {"b", "2"}});
    const auto packer = builder();
    packer->add(source().file("a"), VoFilePath("a"));
    EXPECT_THROW_MSG(packer->add(source().file("missing"), VoFilePath("b")), VoFileNotFoundException,
                     "File not found: " + source().file("missing").path());
    EXPECT_THROW_MSG(packer->add(source().toFilePath(), VoFilePath("b")), VoCannotOpenFileException,
                     "Cannot open file: " + source().path());
    packer->add(source().file("b"), VoFilePath("b"));
    packer->finalise(declarations());
    EXPECT_EQ(published(), (Files{{"a", "1"}, {"b", "2"}}));
}

TEST_F(PackageBuilding, AFileThatShrinksWhileItIsAddedIsRefused)
{
    makeSource({{"a", "kept"}, {"b", std::string(30, 'b')}});
    const auto packer = builder(10);
    packer->add(source().file("a"), VoFilePath("a"));
    {
        const VoReceiver receiver = packer->connect([this](const VoSharedPtr<Message>& message) {
            if (message->message().contains("Writing chunk"))
                WriteBytes(source().file("b"), "short");
        });
        EXPECT_THROW_MSG(packer->add(source().file("b"), VoFilePath("b")), VoFileException,
                         "File changed while being added: " + source().file("b").path());
    }
    packer->add(source().file("b"), VoFilePath("b"));
    packer->finalise(declarations());
    EXPECT_EQ(published(), (Files{{"a", "kept"}, {"b", "short"}}));
}

#if !defined(_WIN32)
TEST_F(PackageBuilding, LinksToDirectoriesAndSpecialFilesAreLeftOut)
{
    namespace fs = std::filesystem;
    makeSource({{"dir/a", "1"}});
    const fs::path root = vo::detail::ToNative(source());
    fs::create_directory_symlink("dir", root / "link");
    fs::create_directory_symlink("..", root / "dir" / "up");
    fs::create_symlink("dir/a", root / "file-link");
    fs::create_symlink("nowhere", root / "broken");
    ASSERT_EQ(mkfifo((root / "fifo").c_str(), 0600), 0);

    const auto packer = builder();
    packer->add(source());
    EXPECT_EQ(targets(*packer), (std::vector<std::string>{"dir\\a", "file-link"}));
    EXPECT_EQ(warnings(), (std::vector<std::string>{
                              "Not a regular file, left out: " + source().file("broken").path().toStdString(),
                              "Not a regular file, left out: " + source().file("fifo").path().toStdString()}));
    EXPECT_THROW(packer->add(source().file("fifo"), VoFilePath("f")), VoCannotOpenFileException);
}
#endif

TEST_F(PackageBuilding, AReleaseDoesNotSwallowItsOwnOutput)
{
    makeSource({{"a", "1"}, {"packages.txt", "2"}, {"sub/packages/b", "3"}});
    const VoFilePath inside = source().file("releases.xml");
    const auto first = builder();
    first->add(source(), inside);
    first->finalise(inside);
    WriteBytes(source().file(".packages.seen"), "?");

    const std::vector<std::string> own = {"a", "packages.txt", "sub\\packages\\b"};
    const auto second = builder(64, VoVersion(1, 1, 0, VoVersion::Release));
    second->add(source(), source().directory("sub").directory("..").file("releases.xml"));
    EXPECT_EQ(targets(*second), own);
    ASSERT_EQ(warnings().size(), 1u);
    EXPECT_EQ(warnings()[0].rfind("Published output inside the added directory, left out: ", 0), 0u);

    const auto elsewhere = builder();
    elsewhere->add(source(), declarations());
    EXPECT_EQ(targets(*elsewhere).size(), own.size() + 4);
}

TEST_F(PackageBuilding, WhatIsNoDeclarationsDocumentIsLeftAloneAndNothingIsMoved)
{
    makeSource({{"a", "1"}});
    const auto packer = builder();
    packer->add(source());
    Package("p", "v").write(declarations());
    const auto before = FilesBelow(directory("site"));
    EXPECT_THROW_MSG(packer->finalise(declarations()), VoNullPointerException, "VoUniquePtr dereferencing nullptr");
    WriteBytes(declarations(), "<packages><package");
    EXPECT_THROW(packer->finalise(declarations()), VoXMLException);
    EXPECT_EQ(FilesBelow(directory("site")).size(), before.size());

    std::filesystem::remove(vo::detail::ToNative(declarations()));
    packer->finalise(declarations());
    EXPECT_EQ(published(), (Files{{"a", "1"}}));
}

TEST_F(PackageBuilding, FinaliseGoesOnAfterStoppingAtAnyStep)
{
    AdvertisedPackages old;
    old.add(Package("other", "v"), VoFilePath("packages\\other\\package.xml"));
    for (const char* step :
         {"Writing chunk", "Finalising build", "Moving chunks", "Writing definition", "Updating declarations"}) {
        SCOPED_TRACE(step);
        std::filesystem::remove_all(vo::detail::ToNative(directory("site")));
        std::filesystem::create_directory(vo::detail::ToNative(directory("site")));
        old.write(declarations());
        // One build of the release is there already, and must come out whole.
        makeSource({{"a", "old"}});
        const auto earlier = builder(10);
        earlier->add(source());
        earlier->finalise(declarations());
        const Files before = FilesBelow(directory("site"));

        makeSource({{"a", std::string(95, 'a')}, {"b", "b"}});
        const auto packer = builder(10);
        packer->add(source());
        {
            const VoReceiver receiver = packer->connect([step](const VoSharedPtr<Message>& message) {
                if (message->message().contains(step))
                    throw VoUserCancelledException();
            });
            EXPECT_THROW(packer->finalise(declarations()), VoUserCancelledException);
        }
        EXPECT_EQ(FilesBelow(directory("site")), before);
        packer->finalise(declarations());
        EXPECT_EQ(published(), (Files{{"a", std::string(95, 'a')}, {"b", "b"}}));
        EXPECT_EQ(AdvertisedPackages::Open(declarations())->declarations().size(), 2u);
    }
}

TEST_F(PackageBuilding, FinaliseGoesOnAtAnotherPlaceAfterAFailure)
{
    makeSource({{"a", std::string(55, 'a')}});
    const auto packer = builder(10);
    packer->add(source());
    // A directory in the way of the definition fails the step after the chunks were moved.
    std::filesystem::create_directories(vo::detail::ToNative(release().directory("package.xml").directory("x")));
    EXPECT_THROW(packer->finalise(declarations()), VoException);
    EXPECT_FALSE(VoFileSystem::Exists(declarations()));

    packer->finalise(file("mirror\\releases.xml"));
    EXPECT_EQ(Reassemble(file("mirror\\packages\\pack\\1.0.0.0\\package.xml")), (Files{{"a", std::string(55, 'a')}}));
}

TEST_F(PackageBuilding, ABuilderBuildsOneRelease)
{
    makeSource({{"a", "1"}});
    const auto packer = builder();
    packer->finalise(declarations());
    const VoString text = "Package has already been finalised";
    EXPECT_THROW_MSG(packer->finalise(declarations()), VoInvalidCallException, text);
    EXPECT_THROW_MSG(packer->add(source()), VoInvalidCallException, text);
    EXPECT_THROW_MSG(packer->add(source().file("a"), VoFilePath("a")), VoInvalidCallException, text);
    EXPECT_TRUE(published().empty());
}

TEST_F(PackageBuilding, TheSameVersionBuiltAgainTakesThePlaceOfTheOlderBuild)
{
    for (const char* content : {"first", "second"}) {
        makeSource({{"a", content}});
        const auto packer = builder();
        packer->add(source());
        packer->finalise(declarations());
        EXPECT_EQ(published(), (Files{{"a", content}}));
        const auto opened = AdvertisedPackages::Open(declarations());
        ASSERT_EQ(opened->declarations().size(), 1u);
        EXPECT_EQ(opened->declarations()[0].versionID(), packer->versionID());
        if (content == std::string("second"))
            EXPECT_EQ(warnings(),
                      std::vector<std::string>{"Release directory already exists: " + release().path().toStdString()});
        else
            EXPECT_TRUE(warnings().empty());
    }
}

TEST_F(PackageBuilding, PackageIDsMustBeFitForADirectoryOfTheirOwn)
{
    EXPECT_THROW_MSG(builder(10, Version100, "a\\b"), VoValidationException, "Invalid identifier: a\\b");
    builder()->finalise(declarations());
    EXPECT_THROW_MSG(builder(10, Version100, "PACK")->finalise(declarations()), VoValidationException,
                     "Invalid identifier: PACK");
}

TEST_F(PackageBuilding, PublicationsAtTheSameTimeAreAllDeclaredAndWhatIsNotApprovedLeavesNothing)
{
    makeSource({{"a", "1"}});
    const VoFilePath together = file("new\\place\\releases.xml");
    vo::test::Threads(8, [&](int i) {
        const auto packer = builder(64, Version100, ("pack" + std::to_string(i)).c_str());
        // Half of them give up, and take away what they made while others come.
        packer->setApproval([i](const AdvertisedPackages&) {
            if (i % 2 != 0)
                throw VoValidationException("not approved");
        });
        packer->add(source());
        try {
            packer->finalise(together);
            EXPECT_EQ(i % 2, 0);
        } catch (const VoValidationException&) {
            EXPECT_EQ(i % 2, 1);
        }
    });
    EXPECT_EQ(AdvertisedPackages::Open(together)->declarations().size(), 4u);
    EXPECT_EQ(FilesBelow(together.parent()).size(), 1u + 4 * 2);

    const auto refused = builder();
    refused->setApproval([](const AdvertisedPackages&) { throw VoValidationException("not approved"); });
    EXPECT_THROW(refused->add(source(), file("other\\place\\releases.xml")), VoValidationException);
    EXPECT_FALSE(VoFileSystem::Exists(directory("other")));
}

TEST_F(PackageBuilding, PatternsLeaveFilesAndFoldersOut)
{
    makeSource({{"a.pdb", ""},
                {"keep.pdb", ""},
                {"build/x", ""},
                {"sub/build/keep.pdb", ""},
                {"sub/build.txt", ""},
                {"notes.txt", ""},
                {"sub/notes.txt", ""},
                {"docs/x/y/z.tmp", ""},
                {"docs/z.tmp", ""},
                {"docs/z.tmpl", ""},
                {"f1", ""},
                {"f2", ""},
                {"fx", ""},
                {"[x].TXT", ""}});
    WriteBytes(file("list"), "\xEF\xBB\xBF# remark\r\n\r\n*.PDB\r\n!keep.pdb\r\nBuild/\r\n/notes.txt  \n");
    const auto packer = builder();
    packer->excludeListed(file("list"));
    for (const char* pattern : {"docs\\**\\*.tmp", "f[!0-1]", "[[]x].t?t"})
        packer->exclude(pattern);
    EXPECT_THROW_MSG(packer->exclude("!/"), VoInvalidParameterException, "Invalid pattern: !/");
    packer->add(source());
    EXPECT_EQ(targets(*packer),
              (std::vector<std::string>{"docs\\z.tmpl", "f1", "keep.pdb", "sub\\build.txt", "sub\\notes.txt"}));
}

TEST_F(PackageBuilding, AReceiverCannotDisturbTheBuild)
{
    makeSource({{"a", std::string(25, 'a')}});
    const auto packer = builder(10);
    std::set<std::string> refusals;
    const VoReceiver receiver = packer->connect([&](const VoSharedPtr<Message>&) {
        for (const std::function<void()>& call : {std::function<void()>([&] { packer->add(source()); }),
                                                  std::function<void()>([&] { packer->finalise(declarations()); })})
            refusals.insert(Refusal<VoInvalidCallException>(call));
        throw std::runtime_error("careless receiver");
    });
    packer->add(source());
    packer->finalise(declarations());
    EXPECT_EQ(refusals, std::set<std::string>{"Package builder called from within one of its messages"});
    EXPECT_EQ(published(), (Files{{"a", std::string(25, 'a')}}));
}

TEST_F(PackageBuilding, ReleasesShareTheChunksOfUnchangedFiles)
{
    constexpr std::uint64_t capacity = 1000;
    Files files = {{"large", Noise(4500, 99)}};
    for (int i = 0; i < 150; ++i)
        files["f" + std::to_string(100 + i)] = Noise(static_cast<std::size_t>(10 + i * 7 % 40), i);
    const auto publish = [&](unsigned minor, bool anew = false) {
        makeSource(files);
        const auto next = builder(capacity, VoVersion(1, minor, 0, VoVersion::Release));
        if (anew)
            next->packAnew();
        next->addByAge(source(), declarations());
        next->finalise(declarations());
        EXPECT_EQ(published(next->version().toString().toStdString().c_str()), files) << minor;
        return std::pair(next->package(), next->chunksShared());
    };
    const auto fileOf = [&](const char* version, const ChunkListing& chunk) {
        return release(version).appended(chunk.path());
    };
    const auto areOne = [&](const char* version, const char* next, const ChunkListing& chunk) {
        return VoFileSystem::Same(fileOf(version, chunk), fileOf(next, chunk));
    };
    const auto first = publish(0).first;
    const std::size_t all = first.chunks().size();
    EXPECT_EQ(publish(1).second, all);
    EXPECT_TRUE(areOne("1.0.0.0", "1.1.0.0", first.chunks()[2]));
    EXPECT_EQ(publish(2, true).second, 0u);

    // One small file leaves its chunk worth keeping; the large one's chunks stay when a neighbour of its ends is gone.
    files["f140"] = "other";
    EXPECT_EQ(publish(3).second, all);
    for (int i = 0; i < 150; i += i < 100 ? 1 : 20)
        files["f" + std::to_string(100 + i)] += "!";
    const auto [fifth, shared] = publish(4);
    EXPECT_GE(shared, 3u);
    EXPECT_LT(shared, all);

    // A damaged chunk, which is one file for all its releases, goes no further; neither does one that is gone.
    const auto found = std::find_if(fifth.chunks().begin(), fifth.chunks().end(),
                                    [&](const ChunkListing& chunk) { return areOne("1.3.0.0", "1.4.0.0", chunk); });
    ASSERT_NE(found, fifth.chunks().end());
    const ChunkListing damaged = *found;
    WriteBytes(fileOf("1.4.0.0", damaged), "damaged");
    EXPECT_EQ(ReadBytes(fileOf("1.3.0.0", damaged)), "damaged");
    VoFileSystem::Remove(fileOf("1.4.0.0", fifth.chunks().back()));
    EXPECT_EQ(publish(5).first.chunk(damaged.id()), nullptr);
    EXPECT_EQ(publish(6).second, publish(7).second);
}
