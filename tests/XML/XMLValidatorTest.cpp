#include "XMLTestSupport.h"

#include <SchemaLeaks.h>

#include <Core/VoFileException.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <XML/VoXMLFactory.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLValidator.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QTcpServer>

namespace {

const char* const SchemaText = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
<xs:element name="list"><xs:complexType><xs:sequence>
<xs:element name="item" type="xs:int" maxOccurs="unbounded"/>
</xs:sequence></xs:complexType></xs:element></xs:schema>)";

class XMLValidator : public testing::Test
{
protected:
    VoFilePath file(const char* name, const std::string& content)
    {
        const VoFilePath path(VoString(directory.filePath(QString::fromUtf8(name))));
        VoFileDevice device(path);
        EXPECT_TRUE(device.open(VoIODevice::Write));
        device.write(content);
        device.close();
        return path;
    }

    QTemporaryDir directory;
    VoFilePath schema = file("schema.xsd", SchemaText);
};

TEST_F(XMLValidator, TellsValidDocumentsFromInvalidOnes)
{
    const VoXMLValidator validator(schema);
    EXPECT_NO_THROW(validator.validate(file("good.xml", "<list><item>1</item><item>-2</item></list>")));
    const VoFilePath bad = file("bad.xml", "<list><item>one</item></list>");
    EXPECT_THROW_MSG(validator.validate(bad), VoInvalidXMLException,
                     "Invalid XML: " + bad.toString() + ", for schema: " + schema.toString());
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
    xmltest::FailingDevice failing("<list><item>1</item></list>", 10);
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

TEST_F(XMLValidator, NetworkAddressesAreNotFollowed)
{
    // Accepts connections without ever being asked to by the library: the backlog would show one.
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const std::string address = "http://127.0.0.1:" + std::to_string(server.serverPort()) + "/x.xsd";
    int argumentCount = 0;
    QCoreApplication application(argumentCount, nullptr); // without one the parser could not wait for a network anyway
    const VoFilePath including =
        file("including.xsd", "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\"><xs:include schemaLocation=\"" +
                                  address + "\"/></xs:schema>");
    EXPECT_THROW(VoXMLValidator{including}, VoInvalidXMLSchemaException);
    const VoFilePath pointing = file("pointing.xml", "<list xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\" "
                                                     "i:noNamespaceSchemaLocation=\"" +
                                                         address + "\"><item>1</item></list>");
    EXPECT_FALSE(VoXMLValidator(schema).isValid(pointing));
    EXPECT_FALSE(server.waitForNewConnection(0));
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
