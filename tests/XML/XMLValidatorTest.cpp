#include "XMLTestSupport.h"

#include <ScratchFolder.h>

#include <Core/VoDeque.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <XML/VoXMLFactory.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLValidator.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QTcpServer>

using vo::test::Refusal;

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
    EXPECT_THROW_MSG(
        validator.validate(bad), VoInvalidXMLException,
        "Invalid XML: " + bad.toString() + ", for schema: " + schema.toString() +
            ": Element 'item': 'one' is not a valid value of the atomic type 'xs:int'. (line 1, column 12)");
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
    EXPECT_THAT(Refusal<VoInvalidXMLException>([&] { validator.validate(bad); }),
                testing::AllOf(testing::HasSubstr("line 2"), testing::Not(testing::HasSubstr("<"))));
    xmltest::MemoryDevice failing("<list><item>1</item></list>", 10);
    EXPECT_THROW_MSG(validator.validate(failing), VoIOException, "device failed");
}

TEST_F(XMLValidator, UnusableSchemasAreRefused)
{
    const VoFilePath broken = file("broken.xsd", "<xs:schema");
    EXPECT_THAT(Refusal<VoInvalidXMLSchemaException>([&] { VoXMLValidator{broken}; }),
                testing::StartsWith("Invalid XML schema: [" + broken.toString().toStdString() + "] "));
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

TEST_F(XMLValidator, SchemasOfManyFilesAreOne)
{
    const auto schemaOf = [](const std::string& head, const std::string& body) {
        return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + head + ">" + body + "</xs:schema>";
    };
    const std::string word = "<xs:element name='word' type='xs:int'/>";
    // In circles, without a namespace of its own, and two files of one namespace.
    file("circle.xsd", schemaOf("", "<xs:include schemaLocation='all of it.xsd'/>" + word));
    file("n1.xsd", schemaOf("targetNamespace='urn:n&amp;&lt;'", "<xs:element name='one' type='xs:int'/>"));
    file("n2.xsd", schemaOf("targetNamespace='urn:n&amp;&lt;'", "<xs:element name='two' type='xs:int'/>"));
    const std::string imports = "<xs:import namespace='urn:n&amp;&lt;' schemaLocation='n1.xsd'/>"
                                "<xs:import namespace='urn:n&amp;&lt;' schemaLocation='./n2.xsd'/>";
    const VoXMLValidator validator(
        file("all of it.xsd",
             schemaOf("targetNamespace='urn:m' xmlns='urn:m' xmlns:n='urn:n&amp;&lt;'",
                      "<xs:include schemaLocation='gone.xsd'/><xs:include schemaLocation='circle.xsd'/>" + imports +
                          "<xs:import namespace='http://www.w3.org/XML/1998/namespace'/>"
                          "<xs:element name='m'><xs:complexType><xs:sequence><xs:element ref='word'/>"
                          "<xs:element ref='n:one'/><xs:element ref='n:two'/></xs:sequence>"
                          "<xs:attribute ref='xml:lang'/></xs:complexType></xs:element>")));
    const auto isValid = [&](const std::string& lang, const std::string& two) {
        return validator.isValid(
            file("m.xml", "<m xmlns='urn:m' xml:lang='" + lang +
                              "'><word>1</word>"
                              "<one xmlns='urn:n&amp;&lt;'>1</one><x:two xmlns:x='urn:n&amp;&lt;'>" +
                              two + "</x:two></m>"));
    };
    EXPECT_TRUE(isValid("en", "2"));
    EXPECT_FALSE(isValid("!", "2"));
    EXPECT_FALSE(isValid("en", "x"));
    // What is wrong in one of them is told with its name and place.
    const VoFilePath bad =
        file("bad.xsd", schemaOf("", "<!-- &#10; -->\n" + word + "<xs:element\nname='b' type='nope'/>"));
    const VoFilePath whole = file(
        "whole.xsd", schemaOf("", "<xs:include schemaLocation='gone.xsd'/><xs:include schemaLocation='bad.xsd'/>"));
    const auto refusal = [&] { return Refusal<VoInvalidXMLSchemaException>([&] { VoXMLValidator{whole}; }); };
    const std::string place = "[" + whole.toString().toStdString() + "] " + bad.toString().toStdString() + ": ";
    EXPECT_THAT(refusal(), testing::AllOf(testing::HasSubstr(place), testing::HasSubstr("'nope'"),
                                          testing::HasSubstr("(line 3, column 22)")));
    file("bad.xsd", "<xs:schema");
    EXPECT_NE(refusal().find("bad.xsd: Premature end of document. (line 1, column 10)"), std::string::npos)
        << refusal();
    std::string deep;
    for (int level = 0; level < 300; ++level)
        deep = "<xs:sequence>" + deep + "</xs:sequence>";
    file("bad.xsd", schemaOf("", "<xs:complexType name='t'>" + deep + "</xs:complexType>"));
    EXPECT_NE(refusal().find("depth"), std::string::npos) << refusal();
    for (int i = 0; i <= 250; ++i)
        file(("c" + std::to_string(i) + ".xsd").c_str(),
             schemaOf("", "<xs:include schemaLocation='c" + std::to_string(i + 1) + ".xsd'/>"));
    file("bad.xsd", schemaOf("", "<xs:include schemaLocation='c0.xsd'/>"));
    EXPECT_NE(refusal().find("More than 250 schema documents"), std::string::npos) << refusal();
}

// Verdicts by the standard, one case for each part of it that a schema may use.
TEST_F(XMLValidator, VerdictsAreTheStandards)
{
    const auto restricted = [](const std::string& base, const std::string& facets) {
        return "<xs:element name='a'><xs:simpleType><xs:restriction base='xs:" + base + "'>" + facets +
               "</xs:restriction></xs:simpleType></xs:element>";
    };
    const auto complex = [](const std::string& content) {
        return "<xs:element name='a'><xs:complexType>" + content + "</xs:complexType></xs:element>";
    };
    const std::string ids =
        complex("<xs:sequence><xs:element name='b' maxOccurs='9'><xs:complexType>"
                "<xs:attribute name='i' type='xs:ID'/><xs:attribute name='r' type='xs:IDREF'/>"
                "<xs:attribute name='s' type='xs:IDREFS'/></xs:complexType></xs:element></xs:sequence>");
    const std::string keys =
        "<xs:element name='a'><xs:complexType><xs:sequence><xs:element name='b' maxOccurs='9'><xs:complexType>"
        "<xs:attribute name='k' type='xs:int'/></xs:complexType></xs:element></xs:sequence></xs:complexType>"
        "<xs:unique name='u'><xs:selector xpath='b'/><xs:field xpath='@k'/></xs:unique></xs:element>";
    const struct
    {
        std::string schema;
        std::vector<const char*> valid;
        std::vector<const char*> invalid;
    } cases[] = {
        {restricted("decimal", "<xs:fractionDigits value='2'/>"), {"<a> 1.20 </a>"}, {"<a>1.234</a>", "<a>1e1</a>"}},
        {restricted("double", ""), {"<a>1e5</a>", "<a>INF</a>"}, {"<a>inf</a>", "<a/>"}},
        {restricted("date", ""), {"<a>2000-02-29</a>"}, {"<a>1900-02-29</a>"}},
        {restricted("string", "<xs:pattern value='[A-Z]{2}\\d+'/>"), {"<a>AB1</a>"}, {"<a>xAB1</a>", "<a>AB</a>"}},
        {restricted("string", "<xs:pattern value='\\p{Lu}'/>"), {"<a>\xC3\x89</a>"}, {"<a>\xC3\xA9</a>"}},
        {restricted("token", "<xs:enumeration value='x y'/>"), {"<a> x  y </a>"}, {"<a>xy</a>"}},
        {complex("<xs:all><xs:element name='b'/><xs:element name='c' minOccurs='0'/></xs:all>"),
         {"<a><c/><b/></a>", "<a><b/></a>"},
         {"<a><c/></a>", "<a>t<b/></a>"}},
        {complex("<xs:choice maxOccurs='2'><xs:element name='b'/><xs:any namespace='##other' processContents='skip'/>"
                 "</xs:choice>"),
         {"<a><b/><x xmlns='u'/></a>"},
         {"<a/>", "<a><b/><b/><b/></a>"}},
        {complex("<xs:attribute name='q' use='required' type='xs:int'/><xs:attribute name='f' fixed='x'/>"),
         {"<a q='1'/>", "<!DOCTYPE a [<!ATTLIST a q CDATA '1'>]><a/>"},
         {"<a/>", "<a q='1' f='y'/>", "<a q='1' z=''/>", "<a q='x'/>"}},
        {"<xs:element name='a' type='xs:int' nillable='true'/>",
         {"<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance' i:nil='true'/>",
          "<!DOCTYPE a [<!ENTITY e '12'>]><a>&e;</a>", "<a>1<![CDATA[2]]><!-- -->3</a>"},
         {"<a/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "<!DOCTYPE a SYSTEM 'x.dtd'><a>1&u;</a>"}},
        {"<xs:element name='h' abstract='true'/><xs:element name='s' type='xs:string' substitutionGroup='h'/>" +
             complex("<xs:sequence><xs:element ref='h'/></xs:sequence>"),
         {"<a><s/></a>"},
         {"<a><h/></a>"}},
        {ids,
         {"<a><b i='x' r='y'/><b i='y' s='x y'/></a>"},
         {"<a><b i='x'/><b i='x'/></a>", "<a><b r='z'/></a>", "<a><b i='x' s='x q'/></a>"}},
        {keys, {"<a><b k='1'/><b k='2'/><b/></a>"}, {"<a><b k='1'/><b k='01'/></a>"}},
    };
    for (const auto& [body, valid, invalid] : cases) {
        const VoXMLValidator validator(
            file("case.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + body + "</xs:schema>"));
        for (const char* document : valid)
            EXPECT_TRUE(validator.isValid(file("case.xml", document))) << body << document;
        for (const char* document : invalid)
            EXPECT_FALSE(validator.isValid(file("case.xml", document))) << body << document;
    }
    for (const char* body : {"<xs:element name='a' type='nope'/>", "<xs:element name='a'/><xs:element name='a'/>",
                             "<xs:simpleType name='t'><xs:restriction base='t'/></xs:simpleType>", "<xs:nonsense/>"})
        EXPECT_THROW(
            VoXMLValidator(file("bad.xsd", std::string("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>") +
                                               body + "</xs:schema>")),
            VoInvalidXMLSchemaException)
            << body;
}

TEST_F(XMLValidator, ThreadsDoNotMeet)
{
    const VoFilePath bad = file("bad.xml", "<list><item>x</item></list>");
    std::atomic<int> found = 0;
    const auto work = [&] {
        for (int i = 0; i < 20; ++i)
            found += VoXMLValidator(schema).isValid(bad) ? 0 : 1;
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(found, 40);
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
    const std::string farDown(70000, '\n');
    EXPECT_EQ(places(("<book>" + farDown + "<page n='x' m=''><foot>1</foot></page><page/></book>").c_str()),
              "70001:17 70001:45 ");
    std::string many = "<book>";
    for (int i = 0; i < 500; ++i)
        many += "<page/>\n";
    VoStringDevice manyErrors{VoString(many + "</book>")};
    EXPECT_EQ(validator.errors(manyErrors).size(), 100u);
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
