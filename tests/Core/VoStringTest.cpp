#include <VoTestSupport.h>

#include <Core/VoCaseSensitiveString.h>
#include <Core/VoHostTypes.h>
#include <Core/VoUUID.h>
#include <Core/detail/UTF8.h>

#include <QtCore/QString>

#include <climits>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace {

// What must not compile: each of these once meant something else than it says.
static_assert(!std::is_convertible_v<int, VoString>, "5 is neither \"5\" nor a control character");
static_assert(!std::is_constructible_v<VoString, bool>, "true is not \"1\"");
static_assert(!std::is_constructible_v<VoString, void*>);
static_assert(!std::is_constructible_v<VoString, wchar_t>, "a wide character is not its code");
static_assert(!std::is_assignable_v<VoString&, int>);
static_assert(!std::is_assignable_v<VoString&, bool>);
static_assert(!std::is_constructible_v<bool, const VoString&>, "if (string) tests a pointer that is never null");
static_assert(!std::is_constructible_v<VoStringView, VoString&&>, "would dangle");
static_assert(std::is_nothrow_move_constructible_v<VoString> && std::is_nothrow_move_assignable_v<VoString>);
static_assert(std::is_nothrow_move_constructible_v<VoCaseSensitiveString>);
static_assert(std::is_nothrow_swappable_v<VoString>);

template <typename A, typename B, typename = void>
constexpr bool CanBeAdded = false;
template <typename A, typename B>
constexpr bool CanBeAdded<A, B, std::void_t<decltype(std::declval<A>() + std::declval<B>())>> = true;
static_assert(CanBeAdded<const VoString&, char> && CanBeAdded<VoString, char>);
static_assert(!CanBeAdded<const VoString&, int> && !CanBeAdded<int, const VoString&>);
static_assert(!CanBeAdded<const VoString&, double> && !CanBeAdded<const VoString&, bool>);

const std::string WithZero("a\0b", 3);

TEST(VoString, IsMadeFromEveryKindOfText)
{
    const QString wide = QString::fromUtf8("x\xC3\xA9y");
    const VoString hello("hello");
    const VoUUID uuid("{ABC}");
    EXPECT_EQ(VoString().toStdString(), "");
    EXPECT_EQ(VoString("text").toStdString(), "text");
    EXPECT_EQ(VoString(nullptr).toStdString(), "");
    EXPECT_EQ(VoString(WithZero).toStdString(), WithZero);
    EXPECT_EQ(VoString(WithZero.c_str()).toStdString(), "a");
    EXPECT_EQ(VoString(WithZero.data(), WithZero.size()).toStdString(), WithZero);
    EXPECT_EQ(VoString('c').toStdString(), "c");
    EXPECT_EQ(VoString('c', 3).toStdString(), "ccc");
    EXPECT_EQ(VoString(3, 'a').toStdString(), std::string(97, '\3')) << "the byte comes first";
    EXPECT_EQ(VoString(wide).toStdString(), "x\xC3\xA9y");
    EXPECT_EQ(VoString(QStringView(wide).mid(1)).toStdString(), "\xC3\xA9y");
    EXPECT_EQ(VoString(YString(WithZero)).toStdString(), WithZero);
    EXPECT_EQ(VoString(TempString::Own("temp")).toStdString(), "temp");
    EXPECT_EQ(VoString(hello.substring(1, 3)).toStdString(), "ell");
    EXPECT_EQ(VoString(uuid).toStdString(), "{ABC}");
    const VoString sliced = uuid;
    EXPECT_TRUE(sliced == "{abc}") << "a plain copy ignores case";
}

TEST(VoString, IsMadeFromNumbers)
{
    EXPECT_EQ(VoString(-42).toStdString(), "-42");
    EXPECT_EQ(VoString(INT_MIN).toStdString(), "-2147483648");
    EXPECT_EQ(VoString(LLONG_MIN).toStdString(), "-9223372036854775808");
    EXPECT_EQ(VoString(ULLONG_MAX).toStdString(), "18446744073709551615");
    EXPECT_EQ(VoString(std::size_t(7)).toStdString(), "7");
    EXPECT_EQ(VoString(-7L).toStdString(), "-7");
    EXPECT_EQ(VoString(std::uint8_t(65)).toStdString(), "65");
    EXPECT_EQ(VoString(1.5).toStdString(), "1.500000");
    EXPECT_EQ(VoString(1.5f).toStdString(), "1.500000");
    EXPECT_EQ(VoString(2.5).toStdString(), "2.500000");
    EXPECT_EQ(VoString::ToString(2.5).toStdString(), "2.5");
    EXPECT_EQ(VoString(1e308).size(), 316u);
}

TEST(VoString, MixesWithOtherTexts)
{
    const VoString s("Ab");
    const QString q = QString::fromLatin1("aB");
    const std::string std = "AB";
    EXPECT_TRUE(VoString() == nullptr);
    EXPECT_FALSE(s == std::string("Ab\0", 3)) << "zero bytes count";

    EXPECT_EQ(("x" + s).toStdString(), "xAb");
    EXPECT_EQ(('x' + s).toStdString(), "xAb");
    EXPECT_EQ((s + 'x').toStdString(), "Abx");
    EXPECT_EQ((s + q).toStdString(), "AbaB");
    EXPECT_EQ((q + s).toStdString(), "aBAb");
    EXPECT_EQ((s + std).toStdString(), "AbAB");
    EXPECT_EQ((s + s.substring(1)).toStdString(), "Abb");
    EXPECT_EQ((s + s + "x" + 'y' + q + s).toStdString(), "AbAbxyaBAb");
    static_assert(std::is_same_v<decltype(q + s), VoString> && std::is_same_v<decltype("x" + s), VoString>);

    EXPECT_TRUE(s[1L] == 'b' && s[1u] == 'b' && s[1] == 'b');
}

TEST(VoString, AssignmentTakesTextsAndNullClears)
{
    VoString s("start");
    EXPECT_EQ((s = "text").toStdString(), "text");
    EXPECT_EQ((s = 'c').toStdString(), "c");
    EXPECT_EQ((s = QString::fromLatin1("qt")).toStdString(), "qt");
    s = {};
    EXPECT_TRUE(s.isEmpty());
    s = "again";
    s = nullptr;
    EXPECT_TRUE(s.isEmpty());
}

TEST(VoString, MovedFromStringsReadAsEmptyAndCanBeUsedAgain)
{
    VoString source("a text too long to be stored without the heap");
    const VoStringView view(source);
    const VoString target(std::move(source));
    EXPECT_EQ(&view[0], target.c_str()) << "views stay valid";

    // NOLINTBEGIN(bugprone-use-after-move)
    EXPECT_TRUE(source.isEmpty());
    EXPECT_STREQ(source.c_str(), "");
    EXPECT_TRUE(source == "" && source.locale() == std::locale::classic() && !source.containsWhiteSpace());
    EXPECT_TRUE(source.trimmed().isEmpty() && source.tokenize(",").size() == 1u);
    source.trim();
    source.spaceCapitals();
    source.replace("a", "b", VoString::CaseSensitive);
    VoString copy = target;
    copy = source;
    EXPECT_TRUE(copy.isEmpty());
    source.append("new");
    EXPECT_EQ(source.toStdString(), "new");
    // NOLINTEND(bugprone-use-after-move)
}

TEST(VoString, CopiesAreIndependent)
{
    const VoString a("one");
    VoString b(a);
    b[0] = 'O';
    EXPECT_EQ(a.toStdString(), "one");
    VoString empty;
    VoString other(empty);
    other.toStdString() = "filled";
    EXPECT_TRUE(empty.isEmpty() && VoString().isEmpty()) << "what empty strings share is not changed";
}

TEST(VoString, AccessBeyondTheEndIsRefused)
{
    VoString s("abc");
    EXPECT_EQ(s.at(2), 'c');
    s.at(0) = 'x';
    EXPECT_THROW_MSG(s.at(3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
    EXPECT_THROW_MSG(std::as_const(s).at(7), VoIndexOutOfBoundsException, "Index out of bounds [7,3]");
    EXPECT_TRUE(s.substring(3).isEmpty());
    EXPECT_THROW_MSG(s.substring(4), VoIndexOutOfBoundsException, "Index out of bounds [4,3]");
    EXPECT_THROW_MSG(s.substring(5, 1), VoIndexOutOfBoundsException, "Index out of bounds [5,3]");
    char buffer[4] = "...";
    EXPECT_EQ(s.copy(buffer, 9, 1), 2u);
    EXPECT_STREQ(buffer, "bc.");
    EXPECT_THROW_MSG(s.copy(buffer, 1, 4), VoIndexOutOfBoundsException, "Index out of bounds [4,3]");
    EXPECT_THROW_MSG(s.resize(std::string().max_size() + 1, ' '), VoBadAllocException,
                     "Bad memory allocation: string length");
    EXPECT_EQ(s.toStdString(), "xbc");
}

TEST(VoString, ArgumentsMayBePartsOfTheStringItself)
{
    VoString s("abcdefghijklmnopqrstuvwxyz");
    s += s;
    EXPECT_EQ(s.size(), 52u);
    s += s.substring(50);
    s.append(s.c_str() + 52);
    EXPECT_EQ(s.substring(50).toString().toStdString(), "yzyzyz");
    s = s.substring(0, 3);
    EXPECT_EQ(s.toStdString(), "abc");
    s = s.c_str() + 1;
    EXPECT_EQ(s.toStdString(), "bc");
    s.replace(s, s, VoString::CaseSensitive);
    EXPECT_EQ(s.toStdString(), "bc");
    s.replace("b", s, VoString::CaseSensitive);
    EXPECT_EQ(s.toStdString(), "bcc");
    s = std::move(s) + s;
    EXPECT_EQ(s.toStdString(), "bccbcc");
}

TEST(VoString, EditsInPlace)
{
    struct Row
    {
        const char* text;
        const char* trimmed;
        const char* spaced;
    };
    const Row rows[] = {
        {"HelloWorld", "HelloWorld", "Hello World"},
        {"ABC", "ABC", "A B C"},
        {"A B", "A B", "A B"},
        {"A", "A", "A"},
        {"", "", ""},
        {" \tA \r\n", "A", " \tA \r\n"},
        {" \n ", "", " \n "},
        {"aB1C", "aB1C", "a B1 C"},
    };
    for (const Row& row : rows) {
        VoString text(row.text);
        EXPECT_EQ(text.trimmed().toString().toStdString(), row.trimmed);
        EXPECT_EQ(text.spacedCapitals().toStdString(), row.spaced);
        text.trim();
        EXPECT_EQ(text.toStdString(), row.trimmed);
    }
    VoString grown("ab");
    grown.resize(4, '.');
    EXPECT_EQ(grown.toStdString(), "ab..");
    grown.resize(1, '.');
    EXPECT_EQ(grown.toStdString(), "a");
}

TEST(VoString, AnswersQuestions)
{
    const VoString s("Hello World");
    EXPECT_TRUE(s.contains("WORLD") && s.contains('w') && s.contains(std::string("o w")));
    EXPECT_TRUE(s.contains(QString::fromLatin1("hello")) && s.contains(s.substring(3)));
    EXPECT_FALSE(s.contains("WORLD", VoString::CaseSensitive));
    EXPECT_TRUE(s.contains(VoStringView("World"), VoString::CaseSensitive));
    EXPECT_TRUE(s.lessThan(VoString("hello world"), VoString::CaseSensitive));
    EXPECT_FALSE(s.lessThan(VoString("hello world"), VoString::CaseInsensitive));
    EXPECT_TRUE(s.containsWhiteSpace());
    EXPECT_EQ(s.findLastOf('o'), 7u);
    EXPECT_THROW_MSG(s.findLastOf('O'), VoNotFoundException, "Item not found: O");
    EXPECT_EQ(VoString::NewLine().toStdString(), "\r\n");
    std::string letters;
    for (int c = 0; c < 256; ++c)
        letters += VoString::IsLetter(static_cast<char>(c)) ? std::string(1, static_cast<char>(c)) : "";
    EXPECT_EQ(letters, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
}

TEST(VoString, ConvertsToWideTexts)
{
    const VoString text("a\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(text.toWString(), (std::wstring{L'a', 0xE9, 0xD83D, 0xDE00})) << "UTF-16 units";
    EXPECT_EQ(VoString::FromWString(text.toWString()).toStdString(), text.toStdString());
    EXPECT_EQ(text.toQString().size(), 4);
    EXPECT_EQ(VoString(text.toQString()).toStdString(), text.toStdString());

    const VoString withZeroByte(WithZero);
    EXPECT_EQ(withZeroByte.toQString(), QStringLiteral("a"));
    EXPECT_EQ(withZeroByte.toWString(), std::wstring(L"a\0b", 3));
    EXPECT_EQ(VoString("\xFF").toWString(), std::wstring(1, 0xFFFD));
    EXPECT_EQ(VoString("\xFF").toQString(), QString(QChar(0xFFFD)));
}

TEST(VoString, ConvertsToTheHostsTypes)
{
    const VoString text(WithZero);
    EXPECT_EQ(text.toYString(), YString(WithZero));
    EXPECT_EQ(YString(text), YString(WithZero));
    const PrintfArg argument = text;
    EXPECT_EQ(argument.text(), text.c_str());
    const char* terminated = text;
    EXPECT_EQ(terminated, text.tocs());
}

TEST(VoString, PadsDigitsWithZeros)
{
    struct Row
    {
        int value;
        int width;
        const char* text;
    };
    const Row rows[] = {{-5, 3, "-005"}, {1234, 2, "1234"}, {0, 0, "0"},   {-12, 1, "-12"},
                        {7, -3, "7"},    {0, 2, "00"},      {-1, 1, "-1"}, {INT_MIN, 11, "-02147483648"}};
    for (const Row& row : rows)
        EXPECT_EQ(VoString::Pad(row.value, row.width).toStdString(), row.text);
}

TEST(VoString, RandomTextsUseTheirWholeAlphabetAndNothingElse)
{
    const std::string lower = "abcdefghijklmnopqrstuvwxyz";
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string digits = "0123456789";
    const std::map<int, std::string> alphabets = {
        {-1, lower + upper + digits}, {0, lower + upper + digits}, {1, digits}, {2, lower}, {3, upper},
        {4, lower + upper},           {5, lower + upper + digits}};
    for (const auto& [type, alphabet] : alphabets) {
        const VoString text = VoString::Random(20000, static_cast<VoString::RandomType>(type));
        EXPECT_EQ(text.size(), 20000u);
        EXPECT_EQ(text.toStdString().find_first_not_of(alphabet), std::string::npos) << type;
        for (const char c : alphabet)
            EXPECT_TRUE(text.contains(VoString(c), VoString::CaseSensitive)) << type << ' ' << c;
    }
    EXPECT_TRUE(VoString::Random(0, VoString::Letters).isEmpty());
    EXPECT_NE(VoString::Random(40, VoString::Letters), VoString::Random(40, VoString::Letters));
}

TEST(VoString, GoesThroughTheStandardLibraryAndBackWithEveryByte)
{
    const std::string bytes("a\0b\xff", 4);
    const VoString text{std::string_view(bytes)};
    EXPECT_EQ(text.toStdStringView(), bytes);
    EXPECT_EQ(VoStringView(std::string_view(bytes)).toStdStringView(), bytes);
    VoString copy;
    std::copy(text.cbegin(), text.cend(), std::back_inserter(copy));
    EXPECT_EQ(copy.toStdString(), bytes);
    static_assert(!std::is_convertible_v<std::string_view, VoString>, "would make calls ambiguous");
}

TEST(VoString, ARequiredNumberIsTheWholeText)
{
    EXPECT_EQ(VoString("-9223372036854775808").requireInteger(), std::numeric_limits<std::int64_t>::min());
    for (const char* text : {"", "-", "+1", " 1", "1 ", "1.0", "0x1", "9223372036854775808", "12a"})
        EXPECT_THROW_MSG(VoString(text).requireInteger(), VoInvalidParameterException,
                         VoString("Not a whole number of 64 bits: ") + text);
    EXPECT_EQ(VoString("-1.5e3").requireDouble(), -1500.0);
    EXPECT_EQ(VoString("1e-999").requireDouble(), 0.0);
    for (const char* text : {"", "-", ".", "+1", " 1", "1 ", "1,5", "0x1", "inf", "nan", "1e999", "1e", "1-2"})
        EXPECT_THROW_MSG(VoString(text).requireDouble(), VoInvalidParameterException,
                         VoString("Not a finite number: ") + text);
    EXPECT_THROW(VoString(std::string("1\0", 2)).requireDouble(), VoInvalidParameterException);
}

// As far as the framework's conversions give the same bytes back.
TEST(UTF8, ValidBeginningsEndWhereTheFrameworkReplacesSomething)
{
    std::mt19937 random(6);
    for (int i = 0; i < 5000; ++i) {
        std::string text(i % 3 == 0 ? random() % 80 : 0, 'a');
        for (std::size_t extra = random() % 8; extra > 0; --extra)
            text += "a\x7f\x80\x8f\x90\x9f\xa0\xbf\xc1\xc2\xdf\xe0\xed\xf0\xf4\xf5"[random() % 16];
        text.append(random() % 80, 'a');
        QByteArray valid = QByteArray::fromStdString('x' + text); // a mark of the byte order stays where it is
        while (QString::fromUtf8(valid).toUtf8() != valid)
            valid.chop(1);
        ASSERT_EQ(vo::detail::ValidUTF8Prefix(text) + 1, static_cast<std::size_t>(valid.size())) << i;
    }
}

} // namespace
