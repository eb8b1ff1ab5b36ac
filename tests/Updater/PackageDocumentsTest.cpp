#include "UpdaterFixture.h"

#include <Approved.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/registry/InstallationJournal.h>

#include <map>

using namespace vo::updater;
using namespace vo::test;

namespace {

const char* const Digest = "a7ffc6f8bf1ed76651c14756a061d662f580ff4de43b49fa82d80a4b80f8434a";

const char* const SmallDefinition = "<package packageID='p' versionID='v' name='n' version='1.0.0.0'><files>"
                                    "<file target='a' id='f' checksum='00' size='1'>"
                                    "<chunkref chunkID='c' offset='0' length='1' index='0'/></file></files><chunks>"
                                    "<chunk id='c' checksum='00' size='9' path='chunks/c.vochk'/></chunks></package>";

class PackageDocuments : public UpdaterTest
{
protected:
    VoUniquePtr<AdvertisedPackageListing> openDefinition(const std::string& text)
    {
        WriteBytes(file("package.xml"), text);
        return AdvertisedPackageListing::Open(file("package.xml"));
    }

    /// A definition with one file whose chunk references have the given text.
    VoUniquePtr<AdvertisedPackageListing> openWithPieces(const std::string& pieces)
    {
        return openDefinition("<package packageID='p' versionID='v' name='n' version='1.0.0.0'><files>"
                              "<file target='a' id='f' checksum='00' size='3'>" +
                              pieces + "</file></files><chunks/></package>");
    }
};

std::string Piece(const std::string& index)
{
    return "<chunkref chunkID='c' offset='" + index + "' length='1' index='" + index + "'/>";
}

AdvertisedPackageListing Sample()
{
    AdvertisedPackageListing package(VoUUID("p-1"), VoUUID("v-1"), "R&D \"x\" <ü>",
                                     VoVersion(4, 2, 17, VoVersion::Beta));
    package.add(AdvertisedFileListing(VoFilePath("dir\\a.txt"),
                                      {ChunkReferenceListing(VoUUID("c-1"), 7, 3, 0),
                                       ChunkReferenceListing(VoUUID("c-2"), 0, 18446744073709551615u, 1)},
                                      VoUUID("f-1"), VoChecksum::Deserialize(Digest), Bytes(10)));
    package.add(
        AdvertisedFileListing(VoFilePath("empty"), {}, VoUUID("f-2"), VoChecksum::Deserialize(Digest), Bytes(0)));
    package.add(
        ChunkListing(VoUUID("c-1"), VoChecksum::Deserialize(Digest), Bytes(99), VoFilePath("chunks\\c-1.vochk")));
    return package;
}

} // namespace

TEST_F(PackageDocuments, DocumentsHaveTheirFixedFormsAndAreTheSameBytesWhenWrittenAgain)
{
    const auto expectApproved = [this](const auto& document, const std::string& name) {
        document.write(file(name.c_str()));
        ExpectApproved(ReadBytes(file(name.c_str())), VOCORE_APPROVED "/" + name);
        std::decay_t<decltype(document)>::Open(file(name.c_str()))->write(file("again.xml"));
        EXPECT_EQ(ReadBytes(file("again.xml")), ReadBytes(file(name.c_str())));
    };
    expectApproved(Sample(), "package.xml");
    expectApproved(Package("p", "v"), "empty-package.xml");

    AdvertisedPackages packages;
    for (const char* version : {"v3", "v1", "v2"})
        packages.add(Package("p&<>\"'\xC3\xBC", version), VoFilePath("packages\\x y\\package.xml"));
    expectApproved(packages, "declarations.xml");

    InstalledPackageListing listing(Package("p", "v"), VoDirectoryPath("/opt/in & out/"));
    for (const char* id : {"z", "a", "m"})
        listing.add(VoFilePath("/opt/in & out/" + VoString(id)), VoUUID(id), VoChecksum::Deserialize("00ff"), Bytes(3));
    listing.add(VoDirectoryPath("/opt/in & out/"));
    listing.add(VoDirectoryPath("/opt/in & out/sub/"));
    expectApproved(listing, "installed.xml");
}

TEST_F(PackageDocuments, ChunkReferencesAreOrderedByIndex)
{
    const auto package = openWithPieces(Piece("2") + Piece("0") + Piece("1"));
    const auto& pieces = package->files()[0].chunks();
    ASSERT_EQ(pieces.size(), 3u);
    for (std::uint64_t i = 0; i < 3; ++i)
        EXPECT_EQ(pieces[i].offset(), i);
    EXPECT_TRUE(openWithPieces("")->files()[0].chunks().isEmpty());
}

TEST_F(PackageDocuments, ChunkIndexesMustRunFromZeroWithoutGapOrDuplicate)
{
    for (const std::string& pieces : {Piece("0") + Piece("2"), Piece("1"), Piece("0") + Piece("0"),
                                      Piece("0") + Piece("1") + Piece("1"), Piece("18446744073709551615")}) {
        SCOPED_TRACE(pieces);
        EXPECT_THROW_MSG(openWithPieces(pieces), VoInvalidParameterException, "Invalid chunk indexes");
    }
    EXPECT_THROW_MSG(AdvertisedFileListing(VoFilePath("a"), {ChunkReferenceListing(VoUUID("c"), 0, 1, 1)}, VoUUID("f"),
                                           VoChecksum(), Bytes(1)),
                     VoInvalidParameterException, "Invalid chunk indexes");
}

TEST_F(PackageDocuments, NumbersAreStrict)
{
    for (const char* number : {"-1", "+1", "", " 1", "1 ", "1.0", "0x1", "1e3", "18446744073709551616", "one"}) {
        SCOPED_TRACE(number);
        EXPECT_THROW_MSG(
            openWithPieces("<chunkref chunkID='c' offset='" + std::string(number) + "' length='1' index='0'/>"),
            VoInvalidConversionException, "Invalid conversion from " + VoString(number) + " to unsigned integer");
    }
}

TEST_F(PackageDocuments, NoAttributeIsOptional)
{
    const std::string whole = SmallDefinition;
    ASSERT_EQ(openDefinition(whole)->files().size(), 1u);
    for (const char* name : {"packageID", "versionID", "name", "version", "target", "checksum", "chunkID", "offset",
                             "length", "index", "path", "size", "id"}) {
        SCOPED_TRACE(name);
        std::string text = whole;
        const std::size_t start = text.find(" " + std::string(name) + "='");
        text.erase(start, text.find('\'', text.find('\'', start) + 1) + 1 - start);
        EXPECT_THROW_MSG(openDefinition(text), VoUnknownXMLAttributeException, "Unknown attribute: " + VoString(name));
    }
}

TEST_F(PackageDocuments, WhatALaterFormatAddsIsSkipped)
{
    const auto package = openDefinition(
        "<package packageID='p' versionID='v' name='n' version='1.0.0.0' new='1'><new><file/><files/></new>"
        "<files extra=''><new/><file target='a' id='f' checksum='00' size='0' more='x'><new>text</new></file></files>"
        "<!-- comment --><chunks/><file/><chunk/></package>");
    ASSERT_EQ(package->files().size(), 1u);
    EXPECT_EQ(package->files()[0].target(), "a");
    EXPECT_TRUE(package->chunks().isEmpty());
}

TEST_F(PackageDocuments, ATruncatedDefinitionNeverLoads)
{
    const std::string whole = SmallDefinition;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_THROW(openDefinition(whole.substr(0, size)), VoException);
    }
    EXPECT_THROW(openDefinition(whole + "<more/>"), VoInvalidXMLException);
}

TEST_F(PackageDocuments, DocumentsOfAnotherKindAreNotTakenForTheirOwn)
{
    AdvertisedPackages().write(file("declarations.xml"));
    Sample().write(file("package.xml"));
    WriteBytes(file("file.xml"), "<file target='a' id='f' checksum='00' size='0'/>");
    WriteBytes(file("other.xml"), "<other/>");

    for (const char* name : {"declarations.xml", "file.xml", "other.xml"}) {
        SCOPED_TRACE(name);
        EXPECT_THROW_MSG(AdvertisedPackageListing::Open(file(name)), VoNullPointerException,
                         "Package advert failed to load");
    }
    EXPECT_FALSE(AdvertisedPackages::Open(file("package.xml")));
    EXPECT_FALSE(AdvertisedPackages::Open(file("other.xml")));
    EXPECT_TRUE(AdvertisedPackages::Open(file("declarations.xml")));
    EXPECT_THROW_MSG(InstalledPackageListing::Open(file("other.xml")), VoNullPointerException,
                     "Installed package listing failed to load");
    EXPECT_THROW_MSG(AdvertisedPackages::Open(file("missing.xml")), VoFileNotFoundException,
                     "File not found: " + file("missing.xml").path());
}

TEST_F(PackageDocuments, DocumentTypesAreRefused)
{
    const std::string root = "<packages/>";
    for (const std::string& prolog :
         {std::string("<!DOCTYPE packages>"), std::string("<!DOCTYPE x [<!ENTITY a \"b\">]>"),
          std::string("<?xml version=\"1.0\"?><!-- c --><?pi?>\n<!DOCTYPE packages SYSTEM \"file:///etc/passwd\">")}) {
        SCOPED_TRACE(prolog);
        WriteBytes(file("d.xml"), prolog + root);
        EXPECT_THROW_MSG(AdvertisedPackages::Open(file("d.xml")), VoDocumentTypeException,
                         "Document type declarations are not allowed");
        EXPECT_THROW_MSG(AdvertisedPackageListing::Open(file("d.xml")), VoDocumentTypeException,
                         "Document type declarations are not allowed");
        EXPECT_THROW_MSG(InstalledPackageListing::Open(file("d.xml")), VoDocumentTypeException,
                         "Document type declarations are not allowed");
    }
}

TEST_F(PackageDocuments, AFailureToLoadIsLoggedWithThePathFirst)
{
    EXPECT_THROW(openWithPieces(Piece("7")), VoInvalidParameterException);
    WriteBytes(file("other.xml"), "<other/>");
    EXPECT_THROW(AdvertisedPackageListing::Open(file("other.xml")), VoNullPointerException);
    EXPECT_EQ(log.texts("updater"), (std::vector<std::string>{
                                        file("package.xml").path().toStdString() + ": Invalid chunk indexes",
                                        file("other.xml").path().toStdString() + ": Package advert failed to load",
                                    }));
}

TEST_F(PackageDocuments, AFailedWriteLeavesTheOldDocumentAndNothingElse)
{
    WriteBytes(file("out/package.xml"), "old");
    const AdvertisedPackageListing bad(VoUUID("p"), VoUUID("v"), "control \x01 character", VoVersion());
    EXPECT_THROW(bad.write(file("out/package.xml")), VoInvalidXMLOperation);
    EXPECT_EQ(FilesBelow(directory("out")), (Files{{"package.xml", "old"}}));
}

TEST_F(PackageDocuments, AMovedFromListingReadsAsEmptyAndCanBeAssigned)
{
    AdvertisedPackageListing package = Sample();
    const AdvertisedPackageListing moved = std::move(package);
    EXPECT_EQ(package.packageID(), "");
    EXPECT_EQ(package.file(VoUUID("f-1")), nullptr);
    package.add(moved.files()[1]);
    EXPECT_NE(package.file(VoUUID("f-2")), nullptr);
    package = moved;
    package = *&package;
    EXPECT_EQ(package.chunk(VoUUID("c-1"))->size(), Bytes(99));
}

TEST_F(PackageDocuments, AnInstalledFileIsListedFromItsContent)
{
    WriteBytes(file("a.bin"), std::string("\0\x1A\r\n", 4));
    const InstalledFileListing listing(file("a.bin"));
    EXPECT_EQ(listing.checksum(), ChecksumOf(std::string("\0\x1A\r\n", 4)));
    EXPECT_EQ(listing.size(), Bytes(4));
    EXPECT_NE(listing.id(), InstalledFileListing(file("a.bin")).id());
    EXPECT_THROW(InstalledFileListing(file("missing")), VoFileNotFoundException);
}

namespace {

/// Values of listings: those that are usual, and those that a compact form could lose.
class OddValues
{
public:
    explicit OddValues(unsigned seed)
        : m_random(seed)
    {
    }

    std::size_t below(std::size_t limit) { return m_random() % limit; }

    VoUUID id()
    {
        static const std::vector<VoUUID> odd = {
            VoUUID("{4056813c-2d4a-4341-82c0-611762c1d051}"), VoUUID("4056813C-2d4a-4341-82c0-611762c1d051"),
            VoUUID("4056813c+2d4a-4341-82c0-611762c1d051"),   VoUUID("x"),
            VoUUID("{4056813c-2d4a-4341-82c0-611762c1d05}"),  VoUUID("\xC3\xBC & \"<>'")};
        return below(3) == 0 ? odd[below(odd.size())] : VoUUID(VoUUID::WithoutBraces);
    }

    VoChecksum checksum()
    {
        static const std::vector<VoString> odd = {"", "00", VoString(Digest) + "ff", "zz"};
        if (below(3) == 0)
            return VoChecksum::Deserialize(odd[below(odd.size())]);
        return below(9) == 0 ? VoChecksum() : ChecksumOf(std::to_string(m_random()));
    }

    VoFilePath path()
    {
        static const std::vector<std::string> odd = {
            "a/b\\\\c", " x ", "", "\\\\server\\x", "\xC3\xBC\\ \xE2\x82\xAC", "R&D <\"'>", "a\tb", "&amp;", "\x7F"};
        return VoFilePath(VoString(below(3) == 0 ? odd[below(odd.size())] : "d\\file " + std::to_string(m_random())));
    }

    std::uint64_t number() { return std::uint64_t{m_random()} << below(33); }

    AdvertisedPackageListing advertised()
    {
        AdvertisedPackageListing package(id(), id(), path().path(), VoVersion(1, 2, 3, VoVersion::Beta));
        for (std::size_t n = below(40); n > 0; --n) {
            VoDeque<ChunkReferenceListing> pieces;
            while (below(3) > 0)
                pieces.pushBack(ChunkReferenceListing(id(), number(), number(), pieces.size()));
            package.add(AdvertisedFileListing(path(), pieces, id(), checksum(), Bytes(std::int64_t(number() >> 1))));
        }
        for (std::size_t n = below(4); n > 0; --n)
            package.add(ChunkListing(id(), checksum(), Bytes(7), path()));
        return package;
    }

    InstalledPackageListing installed()
    {
        InstalledPackageListing package(advertised(), VoDirectoryPath("/opt/in & out/"));
        for (std::size_t n = below(40); n > 0; --n)
            package.add(path(), id(), checksum(), Bytes(std::int64_t(number() >> 1)));
        for (std::size_t n = below(4); n > 0; --n)
            package.add(VoDirectoryPath("/opt/in & out/\xC3\xBC/"));
        return package;
    }

private:
    std::mt19937 m_random;
};

} // namespace

// The writer and reader of many lines against the general ones, which a comment behind a document brings into play.
TEST_F(PackageDocuments, ListingsAreWrittenAndReadAsTheGeneralRulesDo)
{
    const auto outcome = [this](const auto& like, const std::string& text) {
        WriteBytes(file("read.xml"), text);
        try {
            std::decay_t<decltype(like)>::Open(file("read.xml"))->write(file("read-again.xml"));
            return ReadBytes(file("read-again.xml"));
        } catch (const VoException&) {
            return std::string("refused");
        }
    };
    const auto check = [&](OddValues& values, const auto& listing) {
        const std::string general = detail::DocumentText("package", listing).toStdString();
        listing.write(file("listing.xml"));
        ASSERT_EQ(ReadBytes(file("listing.xml")), general);
        ASSERT_EQ(outcome(listing, general), outcome(listing, general + "<!---->"));
        std::string damaged = general;
        const std::string bytes = "<>\"&/ \n\r\tx0\xC3-";
        for (std::size_t n = 1 + values.below(3); n > 0; --n)
            damaged[values.below(damaged.size())] = bytes[values.below(bytes.size())];
        ASSERT_EQ(outcome(listing, damaged), outcome(listing, damaged + "<!---->")) << damaged;
    };
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        OddValues values(seed);
        check(values, values.advertised());
        check(values, values.installed());
        if (HasFatalFailure())
            return;
    }
}

TEST_F(PackageDocuments, NotesOfARunAreWrittenAsTheGeneralRulesDo)
{
    const auto fill = [](OddValues& values, auto& paths) {
        using Path = typename std::decay_t<decltype(paths)>::value_type;
        for (std::size_t n = values.below(4); n > 0; --n)
            paths.pushBack(Path("/opt/in & out/" + VoString(n) + "/"));
    };
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        OddValues values(seed);
        detail::RunNotes notes;
        notes.result = values.installed();
        if (values.below(2) == 0) {
            auto attributes = std::make_shared<ReleaseAttributes>(values.id(), values.id());
            attributes->folders.pushBack(values.path());
            notes.result.setAttributes(attributes);
        }
        notes.before = values.below(2) == 0 ? VoDirectoryPath() : VoDirectoryPath("/opt/<before>/");
        for (std::size_t n = values.below(6); n > 0; --n)
            notes.changes.pushBack({static_cast<detail::PlaceChange::Kind>(values.below(4)), values.path(),
                                    values.below(2) == 0 ? VoFilePath() : values.path()});
        fill(values, notes.made);
        fill(values, notes.emptied);
        fill(values, notes.leftovers);
        detail::InstallationJournal::OfListing(file("p.xml")).begin(notes);
        ASSERT_EQ(ReadBytes(file("p.pending")), detail::DocumentText("journal", notes).toStdString());
    }
}

// Against the plainest way, with IDs of all forms, some of them several times in a listing.
TEST_F(PackageDocuments, ListingsAreComparedByTheFirstFileOfEachID)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        OddValues values(seed);
        std::vector<VoUUID> ids;
        for (std::size_t n = 1 + values.below(30); n > 0; --n)
            ids.push_back(values.id());
        AdvertisedPackageListing listings[] = {{VoUUID("p"), VoUUID("1"), "n", VoVersion()},
                                               {VoUUID("p"), VoUUID("2"), "n", VoVersion()}};
        std::map<VoUUID, std::map<int, std::int64_t>> first; // by ID and listing: the size
        for (int which : {0, 1}) {
            for (std::size_t n = values.below(40); n > 0; --n) {
                const VoUUID& id = ids[values.below(ids.size())];
                const auto size = static_cast<std::int64_t>(values.below(3));
                listings[which].add(AdvertisedFileListing(values.path(), {}, id, VoChecksum(), Bytes(size)));
                first[id].emplace(which, size);
            }
        }
        std::string expected;
        for (const auto& [id, sizes] : first) {
            const int type = sizes.size() == 2 ? 1 : sizes.count(0) == 1 ? 2 : 0;
            if (type != 1 || sizes.at(0) != sizes.at(1))
                expected += id.toString().toStdString() + ' ' + std::to_string(type) + '\n';
        }
        std::string found;
        const auto differences = listings[0].compare(listings[1]);
        for (const FileDifference& difference : differences->fileDifferences())
            found += difference.fileID().toString().toStdString() + ' ' + std::to_string(difference.type()) + '\n';
        ASSERT_EQ(found, expected);
    }
}

TEST_F(PackageDocuments, FilesOfAListingAreFoundAndOutliveItAsCopies)
{
    OddValues values(7);
    auto package = VoUniquePtr<AdvertisedPackageListing>::Make(values.advertised());
    std::vector<AdvertisedFileListing> copies;
    for (int i = 0; i < 300; ++i) {
        const AdvertisedFileListing file(values.path(), {ChunkReferenceListing(values.id(), 1, 2, 0)}, values.id(),
                                         values.checksum(), Bytes(i));
        package->add(i % 50 == 49 ? package->files().front() : file); // also one of its own
        copies.push_back(package->files().back());
    }
    const AdvertisedPackageListing other = *package;
    for (const AdvertisedFileListing& listed : other.files()) {
        const AdvertisedFileListing* found = other.file(listed.id());
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->id(), listed.id());
        const auto first = std::find_if(other.files().begin(), other.files().end(),
                                        [&](const AdvertisedFileListing& file) { return file.id() == listed.id(); });
        EXPECT_EQ(found, &*first) << "of two with one ID the first";
    }
    EXPECT_EQ(other.file(VoUUID("nobody's")), nullptr);
    package = {};
    for (std::size_t i = 0; i < copies.size(); ++i) {
        const AdvertisedFileListing& listed = other.files()[other.files().size() - copies.size() + i];
        EXPECT_TRUE(copies[i].equivalent(listed));
        EXPECT_EQ(copies[i].target().path().toStdString(), listed.target().path().toStdString());
        EXPECT_EQ(copies[i].chunks().size(), listed.chunks().size());
    }
}
