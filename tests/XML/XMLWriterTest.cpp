#include "XMLTestSupport.h"

#include <Core/VoWeakPtr.h>
#include <FileSystem/VoFilePath.h>

using xmltest::MemoryDevice;
using xmltest::Written;

namespace {

class XMLWriter : public testing::Test
{
protected:
    std::string finished()
    {
        writer.finishDocument();
        return device.content().toStdString();
    }

    VoStringDevice device;
    VoXMLStreamWriter writer{device};
};

TEST_F(XMLWriter, WritesOneDeclarationNamespacesElementsAttributesAndTextOnOneLine)
{
    const char* message = "Attempting to create document when already created";
    writer.startDocument();
    EXPECT_THROW_MSG(writer.startDocument(), VoInvalidXMLOperation, message);
    EXPECT_TRUE(writer.isCurrent(nullptr));
    {
        auto root = writer.createElement("root");
        EXPECT_TRUE(writer.isCurrent(root.get()) && !writer.isCurrent(nullptr));
        EXPECT_THROW_MSG(writer.startDocument("1.0"), VoInvalidXMLOperation, message);
        writer.writeDefaultNamespace("urn:d");
        writer.writeNamespace("urn:v", "v");
        root->writeAttribute("id", "1");
        root->createElement("empty", "urn:v")->writeAttribute("k", "1", "urn:v");
        root->createElement("item")->writeText("text");
        root->createElement("blank")->writeText("");
        writer.startElement("last");
        EXPECT_TRUE(writer.isCurrent(nullptr) && !writer.isCurrent(root.get()));
    }
    EXPECT_EQ(finished(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><root xmlns=\"urn:d\" xmlns:v=\"urn:v\" id=\"1\">"
                          "<v:empty v:k=\"1\"/><item>text</item><blank></blank><last/></root>\n");
    EXPECT_EQ(Written([](auto& w) { w.startElement("a"); }), "<a/>\n");
    EXPECT_EQ(Written([](auto& w) { w.startDocument("1.1"); }), "<?xml version=\"1.1\" encoding=\"UTF-8\"?>\n");
}

TEST_F(XMLWriter, FormattingIndentsByTabsOrSpaces)
{
    const auto nested = [](VoXMLStreamWriter& w) {
        w.startDocument();
        w.startElement("a");
        w.startElement("b");
        w.startElement("c");
    };
    EXPECT_EQ(Written(nested, true),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n\t<b>\n\t\t<c/>\n\t</b>\n</a>\n");
    EXPECT_EQ(Written(nested, {true, 2}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n  <b>\n    <c/>\n  </b>\n</a>\n");
    const VoXMLStreamWriter::AutoFormattingSettings plain;
    EXPECT_FALSE(plain.autoFormatting);
    EXPECT_EQ(plain.indent, -1);
}

TEST_F(XMLWriter, NamesAreLookedAtBeforeTheState)
{
    EXPECT_THROW_MSG(writer.writeAttribute("a b", "1"), VoInvalidXMLAttributeName, "Invalid attribute name: a b");
    EXPECT_THROW_MSG(writer.writeAttribute("x", "1"), VoInvalidXMLOperation, "Illegal attribute write");
    EXPECT_THROW_MSG(writer.writeText("t"), VoInvalidXMLOperation, "Illegal write text call");
    EXPECT_THROW_MSG(writer.startElement("a b"), VoInvalidXMLOperation, "Invalid element name: a b");
    for (const char* prefix : {"a b", "1", "xmlns", "xml", "a:b"})
        EXPECT_THROW_MSG(writer.writeNamespace("urn:n", prefix), VoInvalidXMLOperation,
                         "Invalid namespace prefix: " + VoString(prefix));
    writer.startElement("a");
    EXPECT_EQ(finished(), "<a/>\n");
}

TEST_F(XMLWriter, ParentIsInactiveWhileItsChildIsOpen)
{
    auto a = writer.createElement("a");
    auto b = a->createElement("b");
    EXPECT_THROW_MSG(a->createElement("c"), VoInvalidXMLOperation, "Invalid attempt to start element");
    EXPECT_THROW_MSG(a->createElement("c", "urn:c"), VoInvalidXMLOperation, "Invalid attempt to start element");
    EXPECT_THROW_MSG(a->writeAttribute("x", "1"), VoInvalidXMLOperation, "Invalid attempt to write attribute");
    EXPECT_THROW_MSG(a->writeText("t"), VoInvalidXMLOperation, "Invalid attempt to write text");
    b.reset();
    a->createElement("c");
    EXPECT_EQ(finished(), "<a><b/><c/></a>\n");
}

TEST_F(XMLWriter, HandlesMayBeDestroyedInAnyOrderAndAfterTheDocument)
{
    std::vector<std::unique_ptr<VoXMLElementWriter>> handles;
    handles.push_back(writer.createElement("a"));
    for (const char* name : {"b", "c", "d"})
        handles.push_back(handles.back()->createElement(name));
    handles.erase(handles.begin() + 1); // closes b, c and d
    EXPECT_THROW_MSG(handles[1]->writeText("t"), VoInvalidXMLOperation, "Invalid attempt to write text");
    handles[0]->createElement("e");
    EXPECT_EQ(finished(), "<a><b><c><d/></c></b><e/></a>\n");
    EXPECT_THROW_MSG(handles[0]->createElement("x"), VoInvalidXMLOperation, "Invalid attempt to start element");
    handles.clear();
    EXPECT_EQ(device.content(), "<a><b><c><d/></c></b><e/></a>\n");
}

TEST_F(XMLWriter, FinishElementClosesDownToTheGivenOne)
{
    writer.startElement("a");
    auto b = writer.createElement("b");
    writer.startElement("c");
    writer.finishElement(b.get());
    writer.finishElement(b.get()); // already closed
    auto d = writer.createElement("d");
    writer.finishElement();
    writer.finishElement();
    writer.finishElement(); // nothing open
    EXPECT_EQ(finished(), "<a><b><c/></b><d/></a>\n");
}

TEST_F(XMLWriter, FinishElementOfNullClosesDownToTheOutermostElementWithoutHandle)
{
    auto a = writer.createElement("a");
    writer.finishElement(nullptr); // none without a handle
    writer.startElement("b");
    auto c = writer.createElement("c");
    writer.startElement("d");
    writer.finishElement(nullptr);
    EXPECT_TRUE(writer.isCurrent(a.get()));
    a->createElement("e");
    EXPECT_EQ(finished(), "<a><b><c><d/></c></b><e/></a>\n");
}

TEST_F(XMLWriter, FinishedDocumentTakesNothingMore)
{
    auto a = writer.createElement("a");
    writer.finishDocument();
    writer.finishDocument();
    EXPECT_EQ(device.mode(), VoIODevice::Closed);
    EXPECT_THROW_MSG(writer.createElement("b"), VoInvalidXMLOperation, "Invalid attempt to start element");
    EXPECT_THROW_MSG(writer.startElement("b"), VoInvalidXMLOperation, "Invalid attempt to start element");
    EXPECT_THROW_MSG(writer.startDocument(), VoInvalidXMLOperation,
                     "Attempting to create document when already created");
    EXPECT_THROW_MSG(a->writeText("t"), VoInvalidXMLOperation, "Invalid attempt to write text");
    EXPECT_EQ(device.content(), "<a/>\n");
}

TEST(XMLWriterEnd, UnfinishedDocumentStaysTruncatedAndItsDeviceIsClosed)
{
    VoStringDevice device;
    std::unique_ptr<VoXMLStreamElementWriter> root;
    {
        VoXMLStreamWriter writer(device);
        root = writer.createElement("a");
        root->createElement("b")->writeAttribute("x", "1");
        writer.startElement("c");
    }
    EXPECT_EQ(device.content(), "<a><b x=\"1\"/><c");
    EXPECT_EQ(device.mode(), VoIODevice::Closed);
    EXPECT_THROW_MSG(root->createElement("d"), VoInvalidXMLOperation, "Invalid attempt to start element");
}

TEST(XMLWriterEnd, DeviceThatIsOpenAlreadyIsContinuedAndClosed)
{
    VoStringDevice device;
    ASSERT_TRUE(device.open(VoIODevice::Write));
    device.write("<?line?>");
    VoXMLStreamWriter writer(device);
    writer.startElement("a");
    writer.finishDocument();
    EXPECT_EQ(device.content(), "<?line?><a/>\n");
    EXPECT_EQ(device.mode(), VoIODevice::Closed);
}

TEST(XMLWriterStart, DevicesThatCannotBeWrittenAreRefused)
{
    VoStringDevice reading("x");
    ASSERT_TRUE(reading.open(VoIODevice::Read));
    EXPECT_THROW_MSG(VoXMLStreamWriter{reading}, VoIOException, "Device already open");
    EXPECT_THROW_MSG(VoXMLStreamWriter(VoSharedPtr<VoIODevice>(), false), VoNullPointerException, "");
    auto shared = VoSharedPtr<VoStringDevice>::Make();
    const VoWeakPtr<VoStringDevice> watched(shared);
    {
        const VoXMLStreamWriter writer{VoSharedPtr<VoIODevice>(shared)};
        shared.reset();
        EXPECT_FALSE(watched.expired()) << "a shared device lives as long as its writer";
    }
    EXPECT_TRUE(watched.expired());
    EXPECT_THROW_MSG(VoXMLStreamElementWriter(nullptr), VoNullPointerException, "Invalid parent");
    const VoFilePath missing("/nowhere/at/all.xml");
    EXPECT_THROW(VoXMLStreamWriter{missing}, VoCannotOpenFileException);
}

void WriteMuch(VoXMLStreamWriter& writer)
{
    auto root = writer.createElement("root");
    for (int i = 0; i < 20000; ++i)
        root->createElement("item")->writeText("some text that fills the device");
}

TEST(XMLWriterFaults, DeviceFailureIsReportedByTheCallsThatFollow)
{
    MemoryDevice device("", 1000);
    VoXMLStreamWriter writer(device);
    EXPECT_THROW_MSG(WriteMuch(writer), VoIOException, "device failed");
    EXPECT_THROW_MSG(writer.startElement("more"), VoIOException, "device failed");
    EXPECT_THROW_MSG(writer.finishDocument(), VoIOException, "device failed");
    EXPECT_EQ(device.content().size(), 1000u);
    EXPECT_EQ(device.mode(), VoIODevice::Closed);
}

TEST(XMLWriterFaults, FinishDocumentReportsWhatWasStillGathered)
{
    const std::string whole = Written([](auto& w) { w.createElement("a")->writeText("text"); });
    for (std::size_t passed = 0; passed <= whole.size(); ++passed) {
        MemoryDevice device("", passed);
        VoXMLStreamWriter writer(device);
        writer.createElement("a")->writeText("text");
        if (passed == whole.size())
            EXPECT_NO_THROW(writer.finishDocument());
        else
            EXPECT_THROW_MSG(writer.finishDocument(), VoIOException, "device failed");
        EXPECT_EQ(device.content(), whole.substr(0, passed));
    }
}

TEST(XMLWriterFaults, HandlesOfAFailedWriterGoQuietly)
{
    MemoryDevice device("", 10);
    VoXMLStreamWriter writer(device);
    auto a = writer.createElement("a");
    auto b = a->createElement("b");
    EXPECT_THROW(
        {
            for (;;)
                b->createElement("c");
        },
        VoIOException);
    a.reset();
    b.reset();
    EXPECT_TRUE(writer.isCurrent(nullptr));
}

TEST(XMLWriterFaults, DeviceClosedUnderneathIsReported)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device);
    writer.startElement("a");
    device.close();
    EXPECT_THROW_MSG(writer.finishDocument(), VoIOInvalidWriteException, "Cannot write to IO device");
}

TEST(XMLWriterDepth, DeepNestingClosesInAnyOrder)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device);
    std::vector<std::unique_ptr<VoXMLElementWriter>> handles;
    handles.push_back(writer.createElement("a"));
    for (int i = 1; i < 100000; ++i)
        handles.push_back(handles.back()->createElement("a"));
    handles.erase(handles.begin() + 50000);
    while (!handles.empty())
        handles.pop_back();
    writer.finishDocument();
    EXPECT_EQ(device.content().size(), 99999u * 7 + 5);
}

} // namespace
