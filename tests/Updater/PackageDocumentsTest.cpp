#include "UpdaterFixture.h"

#include <Approved.h>
#include <Core/VoFileException.h>
#include <Core/VoXMLException.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/InstalledPackageListing.h>

#include <vector>

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
