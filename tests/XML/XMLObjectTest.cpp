#include "XMLTestSupport.h"

#include <CommaLocale.h>

#include <Core/VoPoint.h>
#include <Core/VoPointD.h>
#include <Core/VoProperties.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <Time/VoDateTime.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLDomElementWriter.h>
#include <XML/VoXMLObject.h>

#include <QtXml/QDomDocument>

using xmltest::TextReader;
using xmltest::Written;

namespace {

using Texts = VoPair<VoString, VoString>;
using Paths = VoPair<VoFilePath, VoFilePath>;

// The two kinds of document: a stream, and a tree in memory.
enum class Kind
{
    Stream,
    Dom
};

class XMLObject : public testing::TestWithParam<Kind>
{
protected:
    template <typename T>
    static std::string Document(const T& value)
    {
        if (GetParam() == Kind::Stream)
            return Written([&](VoXMLStreamWriter& w) { VoXMLObject<T>::Write(*w.createElement("root"), value); });
        QDomDocument document;
        document.appendChild(document.createElement(QStringLiteral("root")));
        VoXMLDomElementWriter root(document.documentElement());
        VoXMLObject<T>::Write(root, value);
        return document.toString(-1).toStdString();
    }

    template <typename T>
    static T ValueOf(const std::string& text)
    {
        if (GetParam() == Kind::Stream) {
            TextReader reader(text);
            return VoXMLObject<T>::Read(*reader->nextElement());
        }
        QDomDocument document;
        EXPECT_TRUE(document.setContent(QByteArray::fromStdString(text), true));
        VoXMLDomElementReader root(document.documentElement());
        return VoXMLObject<T>::Read(root);
    }

    template <typename T>
    static T Returned(const T& value)
    {
        return ValueOf<T>(Document(value));
    }
};

std::vector<double> OddDoubles()
{
    double payload = 0;
    const unsigned long long bits = 0x7ff80000deadbeefULL;
    std::memcpy(&payload, &bits, sizeof payload);
    using Limits = std::numeric_limits<double>;
    return {0.0,    -0.0, 0.1, -2.5, Limits::denorm_min(), Limits::max(), Limits::infinity(), -Limits::infinity(),
            payload};
}

bool SameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(OnBoth, XMLObject, testing::Values(Kind::Stream, Kind::Dom),
                         [](const auto& row) { return row.param == Kind::Stream ? "Stream" : "Dom"; });

TEST_P(XMLObject, EveryTypeComesBackEqual)
{
    for (int value : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        EXPECT_EQ(Returned(value), value);
    for (std::size_t value : {std::size_t(0), std::numeric_limits<std::size_t>::max()})
        EXPECT_EQ(Returned(value), value);
    for (double value : OddDoubles())
        EXPECT_TRUE(SameBits(Returned(value), value)) << value;
    for (const char* text : {"", "<a> & \"b\" ]]>", "_x0041_", "=1+1", "\xc3\xa9\xf0\x9f\x98\x80", "a\nb"})
        EXPECT_EQ(Returned(VoString(text)).toStdString(), text);
    const VoString large(std::string(40000, 'x') + "&");
    EXPECT_EQ(Returned(large).toStdString(), large.toStdString());
    EXPECT_EQ(Returned(VoFilePath("C:\\a b\\c.txt")), VoFilePath("C:\\a b\\c.txt"));
    EXPECT_EQ(Returned(VoUUID("{Aa-1}")), VoUUID("{Aa-1}"));
    EXPECT_EQ(Returned(VoTimeDuration::Min()), VoTimeDuration::Min());
    EXPECT_EQ(Returned(VoTimePoint(VoTimeDuration::Max())), VoTimePoint(VoTimeDuration::Max()));
    EXPECT_EQ(Returned(VoDeque<int>{}), VoDeque<int>{});
    EXPECT_EQ(Returned(VoDeque<int>{3, -1, 3}), (VoDeque<int>{3, -1, 3}));
    EXPECT_EQ(Returned(VoDeque<VoString>{"b", "", "a"}), (VoDeque<VoString>{"b", "", "a"}));
    EXPECT_EQ(Returned(VoPoint(-1, 2)), VoPoint(-1, 2));
    for (auto representation : {VoDateTime::Utc, VoDateTime::Local}) {
        const VoDateTime date(VoTimePoint(VoNanoseconds(-1234567890123456789)), representation);
        EXPECT_EQ(Returned(date), date);
        EXPECT_EQ(Returned(date).representation(), representation);
    }
    const std::vector<double> odd = OddDoubles();
    const VoDeque<double> doubles = Returned(VoDeque<double>(odd.begin(), odd.end()));
    ASSERT_EQ(doubles.size(), odd.size());
    for (std::size_t i = 0; i < odd.size(); ++i)
        EXPECT_TRUE(SameBits(doubles[i], odd[i]));
    const VoPointD point = Returned(VoPointD(0.1, -0.0));
    EXPECT_TRUE(SameBits(point.x, 0.1) && SameBits(point.y, -0.0));
}

TEST_P(XMLObject, EveryVariantKindComesBackEqualAlsoNestedInProperties)
{
    VoProperties all;
    const VoVariant values[] = {VoVariant(), true,     VoFilePath("C:\\x"), Paths("a", "b\\"), -7, 0.1,
                                7u,          "<text>", Texts("", "[a,\nb]")};
    for (const VoVariant& value : values) {
        EXPECT_EQ(Returned(value).type(), value.type());
        EXPECT_EQ(Returned(value), value);
        EXPECT_EQ(Returned(VoProperty("Name", value)), VoProperty("Name", value));
        all.add(VoVariant::TypeString(value.type()), value);
    }
    EXPECT_EQ(Returned(all), all);
}

TEST_P(XMLObject, TextsComeBackTrimmedAndThroughAStreamWithLineFeeds)
{
    const char* const lines = GetParam() == Kind::Stream ? "a\nb" : "a\r\nb";
    EXPECT_EQ(Returned(VoString("  a\r\nb\t")).toStdString(), lines);
    EXPECT_THROW_MSG(Document(VoString("\x01")), VoInvalidXMLOperation, "Character not allowed in XML");
}

TEST_P(XMLObject, ChildrenAreFoundByNameAndTheFirstCounts)
{
    EXPECT_EQ(ValueOf<VoPoint>("<r><Z><X>9</X></Z><Y>2</Y><x> 1 </x><X>bad</X></r>"), VoPoint(1, 2));
    EXPECT_EQ(ValueOf<VoDeque<int>>("<r>text<Other>x</Other><Item>1</Item><!-- --><Item>2</Item></r>"),
              (VoDeque<int>{1, 2}));
    EXPECT_EQ(ValueOf<VoVariant>("<r><integer>5</integer><Double>bad</Double></r>"), VoVariant(5));
    EXPECT_EQ(ValueOf<VoVariant>("<r><Boolean>TRUE</Boolean></r>"), VoVariant(true));
    EXPECT_EQ(ValueOf<VoVariant>("<r/>"), VoVariant());
    EXPECT_EQ(ValueOf<VoProperties>("<r><Property><Name>a</Name><Value/></Property>"
                                    "<Property><Value><Size>1</Size></Value><Name>A</Name></Property></r>"),
              (VoProperties{{"a", 1u}}));
}

TEST_P(XMLObject, WhatIsNoSuchValueIsRefused)
{
    for (const char* text : {"", "x", "5.0", "+5", "2147483648", "-2147483649", "0x5", "1 2"})
        EXPECT_THROW_MSG(ValueOf<int>("<r>" + std::string(text) + "</r>"), VoInvalidConversionException,
                         "Invalid conversion from " + VoString(text) + " to Integer");
    for (const char* text : {"", "-1", "18446744073709551616", "1.0", "+1"})
        EXPECT_THROW_MSG(ValueOf<std::size_t>("<r>" + std::string(text) + "</r>"), VoInvalidConversionException,
                         "Invalid conversion from " + VoString(text) + " to Size");
    EXPECT_THROW_MSG(ValueOf<VoTimeDuration>("<r>1s</r>"), VoInvalidConversionException,
                     "Invalid conversion from 1s to long long");
    EXPECT_THROW_MSG(ValueOf<VoVariant>("<r><Boolean>1</Boolean></r>"), VoInvalidConversionException,
                     "Invalid conversion from 1 to Boolean");
    EXPECT_THROW_MSG(ValueOf<double>("<r>0.1</r>"), VoInvalidParameterException, "Invalid string length");
    EXPECT_THROW_MSG(ValueOf<VoVariant>("<r><Null/></r>"), VoUnknownXMLElementException, "Unknown element: Null");
    EXPECT_THROW_MSG(ValueOf<VoVariant>("<r><Bogus/></r>"), VoUnknownXMLElementException, "Unknown element: Bogus");
    EXPECT_THROW_MSG(ValueOf<Texts>("<r><First>a</First></r>"), VoNullXMLStreamElementException,
                     "Null XML stream element");
    EXPECT_THROW_MSG(ValueOf<VoDateTime>("<r>2024-05-01T12:34:56Z</r>"), VoUnknownXMLAttributeException,
                     "Unknown attribute: rep");
    EXPECT_THROW_MSG(ValueOf<VoDateTime>("<r rep='mars'>2024-05-01T12:34:56Z</r>"), VoInvalidConversionException,
                     "Invalid conversion from mars to VoDateTime");
}

TEST_P(XMLObject, ALocaleWithCommasChangesNoDocument)
{
    const VoProperties values{{"i", 1234567}, {"d", 1234.5}, {"s", 7654321u}};
    const std::string document = Document(values);
    const vo::test::CommaLocale comma;
    EXPECT_EQ(Document(values), document);
    EXPECT_EQ(Returned(values), values);
}

TEST(XMLObjectFormat, ChildrenLieInTheTypesNamespaceInTheOrderOfTheFormat)
{
    const auto document = Written([](VoXMLStreamWriter& w) {
        const auto root = w.createElement("root");
        w.writeNamespace(VoXMLTypesNamespace(), "vo");
        VoXMLObject<VoProperty>::Write(*root, VoProperty("n", Texts("a", "b")));
    });
    EXPECT_EQ(document, "<root xmlns:vo=\"" + VoXMLTypesNamespace().toStdString() +
                            "\"><vo:Name>n</vo:Name><vo:Value><vo:StringPair><vo:First>a</vo:First>"
                            "<vo:Second>b</vo:Second></vo:StringPair></vo:Value></root>\n");
    EXPECT_TRUE(VoXMLTypesNamespace().endsWith("/schemas/application/votypes/"));
    const auto date = Written([](VoXMLStreamWriter& w) {
        VoXMLObject<VoDateTime>::Write(*w.createElement("r"), VoDateTime(VoTimePoint(VoSeconds(1714566896))));
    });
    EXPECT_EQ(date, "<r rep=\"utc\">2024-05-01T12:34:56.000000000Z</r>\n");
}

TEST(XMLObjectFormat, ADateIsLoadedFromItsElement)
{
    TextReader reader("<r rep='local'>2024-05-01T12:34:56.5-01:30</r>");
    const VoUniquePtr<VoDateTime> date = VoDateTime::XMLLoader(*reader->nextElement());
    EXPECT_EQ(date->toUtc().toString().toStdString(), "2024-05-01T14:04:56.500000000Z");
    EXPECT_FALSE(date->isUtc());
}
