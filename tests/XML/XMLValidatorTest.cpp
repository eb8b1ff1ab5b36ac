#include "XMLTestSupport.h"

#include <SchemaLeaks.h>
#include <ScratchFolder.h>

#include <Core/VoDeque.h>
#include <Core/VoFileException.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <XML/VoXMLFactory.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLValidator.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QTcpServer>

namespace {

const char* const SchemaText = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
<xs:element name="list"><xs:complexType><xs:sequence>
<xs:element name="item" type="xs:int" maxOccurs="unbounded"/>
</xs:sequence></xs:complexType></xs:element></xs:schema>)";

class XMLValidator : public testing::Test
{
protected:
    VoFilePath file(const char* name, const std::string& content) { return m_folder.write(name, content); }

    vo::test::ScratchFolder m_folder;
    VoFilePath schema = file("schema.xsd", SchemaText);
};

TEST_F(XMLValidator, TellsValidDocumentsFromInvalidOnes)
{
    const VoXMLValidator validator(schema);
    EXPECT_NO_THROW(validator.validate(file("good.xml", "<list><item>1</item><item>-2</item></list>")));
    const VoFilePath bad = file("bad.xml", "<list><item>one</item></list>");
    EXPECT_THROW_MSG(validator.validate(bad), VoInvalidXMLException,
                     "Invalid XML: " + bad.toString() + ", for schema: " + schema.toString() +
                         ": Content of element item does not match its type definition: one is not valid according to "
                         "xs:int. (line 1, column 12)");
    for (const char* text : {"<list/>", "<other/>", "<list><item>1</item>", ""})
        EXPECT_FALSE(validator.isValid(file("other.xml", text))) << text;
    EXPECT_TRUE(validator.isValid(file("good.xml", "<list><item>1</item></list>")));
}

TEST_F(XMLValidator, DeviceErrorsNameTheirPlace)
{
    const VoXMLValidator validator(schema);
    VoStringDevice good("<list><item>1</item></list>");
    EXPECT_NO_THROW(validator.validate(good));
    VoStringDevice bad("<list>\n<item>one</item></list>");
    try {
        validator.validate(bad);
        ADD_FAILURE() << "accepted";
    } catch (const VoInvalidXMLException& e) {
        EXPECT_NE(e.message().find("line 2"), VoString::invalid_position) << e.what();
        EXPECT_EQ(e.message().find("<"), VoString::invalid_position) << e.what();
    }
    xmltest::MemoryDevice failing("<list><item>1</item></list>", 10);
    EXPECT_THROW_MSG(validator.validate(failing), VoIOException, "device failed");
}

TEST_F(XMLValidator, UnusableSchemasAreRefused)
{
    const VoFilePath broken = file("broken.xsd", "<xs:schema");
    try {
        VoXMLValidator validator(broken);
        ADD_FAILURE() << "accepted";
    } catch (const VoInvalidXMLSchemaException& e) {
        EXPECT_TRUE(e.message().startsWith("Invalid XML schema: [" + broken.toString() + "] ")) << e.what();
    }
    EXPECT_THROW(VoXMLValidator(VoFilePath("/nowhere/at/all.xsd")), VoFileNotFoundException);
    EXPECT_THROW(VoXMLValidator(schema).validate(VoFilePath("/nowhere/at/all.xml")), VoFileNotFoundException);
}

TEST_F(XMLValidator, SchemaIncludesAreReadBesideIt)
{
    file("part.xsd", SchemaText);
    const VoXMLValidator validator(file("whole.xsd", "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
                                                     "<xs:include schemaLocation=\"part.xsd\"/></xs:schema>"));
    EXPECT_TRUE(validator.isValid(file("good.xml", "<list><item>1</item></list>")));
    EXPECT_FALSE(validator.isValid(file("bad.xml", "<list><item>x</item></list>")));
}

TEST_F(XMLValidator, AddressesElsewhereAreLeftOut)
{
    // Its backlog would show a connection.
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const std::string address = "http://127.0.0.1:" + std::to_string(server.serverPort()) + "/x.xsd";
    const std::string instance = "<list xmlns:i='http://www.w3.org/2001/XMLSchema-instance' i:";
    const auto whole = [&](const std::string& reference) {
        std::string text = SchemaText;
        return file("whole.xsd", text.insert(text.find('>') + 1, reference));
    };
    const std::string include = "<xs:include schemaLocation='" + address + "'/>";
    EXPECT_NO_THROW(VoXMLValidator{whole(include)}); // also where no application waits for a network
    int argumentCount = 0;
    QCoreApplication application(argumentCount, nullptr);
    for (const std::string& reference : {include, "<xs:redefine schemaLocation='" + address + "'/>",
                                         "<xs:import namespace='urn:x' schemaLocation='" + address + "'/>",
                                         std::string("<xs:include schemaLocation='file://127.0.0.1/share/x.xsd'/>")}) {
        const VoXMLValidator validator(whole(reference));
        for (const std::string& begin :
             {instance + "noNamespaceSchemaLocation='" + address + "'>",
              instance + "schemaLocation='urn:q " + address + "'>",
              instance + "noNamespaceSchemaLocation='file:///nowhere/at/all.xsd'>", std::string("<list>")}) {
            EXPECT_TRUE(validator.isValid(file("good.xml", begin + "<item>1</item></list>"))) << reference << begin;
            EXPECT_FALSE(validator.isValid(file("bad.xml", begin + "<item>x</item></list>"))) << reference << begin;
        }
    }
    EXPECT_FALSE(server.waitForNewConnection(0));
}

TEST_F(XMLValidator, AllErrorsCanBeHad)
{
    const VoXMLValidator validator(file(
        "book.xsd", R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"><xs:element name="book"><xs:complexType>
<xs:sequence><xs:element name="page" maxOccurs="unbounded"><xs:complexType><xs:sequence>
<xs:element name="line" type="xs:int" minOccurs="0" maxOccurs="2"/><xs:element name="foot" type="xs:int"/>
</xs:sequence><xs:attribute name="n" type="xs:int"/></xs:complexType></xs:element></xs:sequence>
</xs:complexType></xs:element></xs:schema>)"));
    const auto places = [&](const char* document) {
        VoStringDevice device(document);
        std::string found;
        for (const VoXMLValidator::Error& error : validator.errors(device))
            found += std::to_string(error.line) + ":" + std::to_string(error.column) + " ";
        return found;
    };
    EXPECT_EQ(places("<book><page><foot>1</foot></page></book>"), "");
    EXPECT_EQ(places("<book>\n<page n='\xC3\xA9'><foot>1</foot></page>\n<page><line>x</line><foot>1</foot></page>\n"
                     "<page><line>1</line><foot>y</foot></page><page><foot>1</foot></page>\n<page/>\n</book>"),
              "2:12 3:12 4:26 5:7 ");
    EXPECT_EQ(places("<book>\n<page>"), "2:6 ");
    EXPECT_EQ(places("<other/>"), "1:8 ");
    VoStringDevice tooDeep{VoString(xmltest::Nested(100000))};
    EXPECT_THROW(validator.errors(tooDeep), VoStackLimitException);
}

TEST_F(XMLValidator, ReadersAndFactoriesValidateFirst)
{
    const VoFilePath good = file("good.xml", "<list><item>1</item></list>");
    const VoFilePath bad = file("bad.xml", "<list><item>x</item></list>");
    VoXMLStreamReader reader(good, schema);
    EXPECT_EQ(reader.nextElement()->name(), "list");
    EXPECT_THROW(VoXMLStreamReader(bad, schema), VoInvalidXMLException);
    VoXMLFactory factory;
    int built = 0;
    const auto builder = [&](VoXMLElementReader&) {
        ++built;
        return VoSharedPtr<VoXMLSerializableObject>();
    };
    factory.registerBuilder("list", builder);
    factory.registerBuilder("list/item", builder);
    factory.load(good, schema);
    EXPECT_EQ(built, 2);
    EXPECT_THROW(factory.load(bad, schema), VoInvalidXMLException);
    EXPECT_EQ(built, 2);
    EXPECT_THROW(factory.load(file("cut.xml", "<list><item>1</item></list")), VoInvalidXMLException);
}

} // namespace
