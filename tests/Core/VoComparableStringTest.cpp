#include <VoTestSupport.h>

#include "StringTestLocale.h"

#include <Core/VoCaseSensitiveString.h>

namespace {

using Mode = VoComparableString::Comparison;
constexpr Mode Insensitive = VoComparableString::CaseInsensitive;
constexpr Mode Sensitive = VoComparableString::CaseSensitive;
constexpr std::size_t None = VoComparableString::invalid_position;

std::string Text(const VoComparableString& string)
{
    std::ostringstream stream;
    stream << string;
    return stream.str();
}

template <typename Pieces>
std::vector<std::string> Texts(const Pieces& pieces)
{
    std::vector<std::string> texts;
    for (const VoComparableString& piece : pieces)
        texts.push_back(Text(piece));
    return texts;
}

// The definitions, byte by byte through the facet and without any of the shortcuts of the library.
class SlowString
{
public:
    SlowString(std::string bytes, std::locale locale)
        : m_bytes(std::move(bytes))
        , m_locale(std::move(locale))
    {
    }

    int difference(char a, char b, Mode mode) const
    {
        const auto& facet = std::use_facet<std::ctype<char>>(m_locale);
        if (mode != Sensitive) {
            a = facet.tolower(a);
            b = facet.tolower(b);
        }
        return static_cast<signed char>(a) - static_cast<signed char>(b);
    }

    int compare(const std::string& other, Mode mode) const
    {
        for (std::size_t i = 0; i < m_bytes.size() && i < other.size(); ++i)
            if (const int d = difference(m_bytes[i], other[i], mode))
                return d;
        return m_bytes.size() == other.size() ? 0 : m_bytes.size() < other.size() ? -1 : 1;
    }

    bool matches(std::size_t at, const std::string& part, Mode mode) const
    {
        if (at + part.size() > m_bytes.size())
            return false;
        for (std::size_t i = 0; i < part.size(); ++i)
            if (difference(m_bytes[at + i], part[i], mode) != 0)
                return false;
        return true;
    }

    std::size_t find(const std::string& needle, std::size_t from, Mode mode) const
    {
        if (needle.empty() || from >= m_bytes.size())
            return None;
        for (std::size_t i = from; i < m_bytes.size(); ++i)
            if (matches(i, needle, mode))
                return i;
        return None;
    }

    // Scans end positions, as the rule for tokens is put.
    std::vector<std::string> tokens(const std::string& separator, Mode mode) const
    {
        const std::size_t length = separator.size();
        if (length > m_bytes.size())
            return {m_bytes};
        std::vector<std::string> result;
        std::size_t start = 0;
        for (std::size_t end = length; end <= m_bytes.size();) {
            if (!matches(end - length, separator, mode)) {
                ++end;
                continue;
            }
            result.push_back(m_bytes.substr(start, end - length - start));
            start = end;
            end += length;
        }
        result.push_back(m_bytes.substr(start));
        return result;
    }

    // In place, moving past each replacement.
    std::string replaced(const std::string& from, const std::string& to, Mode mode) const
    {
        SlowString work = *this;
        for (std::size_t i = 0; !from.empty() && i + from.size() <= work.m_bytes.size();) {
            if (!work.matches(i, from, mode)) {
                ++i;
                continue;
            }
            work.m_bytes.replace(i, from.size(), to);
            i += to.size();
        }
        return work.m_bytes;
    }

private:
    std::string m_bytes;
    std::locale m_locale;
};

class RandomTexts
{
public:
    std::size_t number(std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_engine); }

    std::string text(std::size_t maxLength)
    {
        static const std::string alphabet("aAbB@[`{zZ\xC4\xE4\0", 13);
        const std::size_t letters = 1 + number(alphabet.size());
        std::string result(number(maxLength + 1), '\0');
        for (char& c : result)
            c = alphabet[number(letters)];
        return result;
    }

    // A text in which matches of `part` and near misses are likely.
    std::string textAround(const std::string& part, std::size_t maxLength)
    {
        std::string result = text(maxLength);
        for (std::size_t copies = number(3); copies > 0; --copies)
            result.insert(number(result.size() + 1), part.substr(0, number(part.size() + 1) + number(2)));
        return result;
    }

    // The same text but for what bit 0x20 makes of a few bytes.
    std::string inOtherCase(std::string text)
    {
        for (char& c : text)
            if (number(8) == 0)
                c = static_cast<char>(c ^ 0x20);
        return text;
    }

private:
    std::mt19937 m_engine{20260117};
};

// A view of bytes that nothing stands behind, so that reading too far is an error that the sanitizers see.
class BareView
{
public:
    explicit BareView(const std::string& bytes)
        : m_bytes(bytes.begin(), bytes.end())
    {
        m_bytes.shrink_to_fit();
    }
    VoStringView operator*() const { return VoStringView(m_bytes.data(), m_bytes.size()); }

private:
    std::vector<char> m_bytes;
};

class AgainstTheDefinition : public testing::TestWithParam<bool>
{
protected:
    std::locale m_locale = GetParam() ? vo::test::OddCharacters::Locale() : std::locale::classic();
    vo::test::ScopedGlobalLocale m_global{m_locale};
    RandomTexts m_random;
};

INSTANTIATE_TEST_SUITE_P(ClassicAndOddLocale, AgainstTheDefinition, testing::Bool());

TEST_P(AgainstTheDefinition, ComparisonAgreesOnRandomTexts)
{
    for (int i = 0; i < 20000; ++i) {
        const std::string common = m_random.text(i % 2 ? 5 : 90);
        const std::string a = common + m_random.text(3);
        const std::string b =
            (m_random.number(4) ? m_random.inOtherCase(common) : m_random.text(90)) + m_random.text(2);
        const BareView bare(a);
        const BareView otherBare(b);
        const VoString string(a);
        const VoString other(b);
        const SlowString slow(a, m_locale);
        for (const Mode mode : {Insensitive, Sensitive, Mode(2), Mode(-1)}) {
            const int expected = slow.compare(b, mode);
            ASSERT_EQ(string.compare(other, mode), expected) << a << " and " << b << ", mode " << mode;
            ASSERT_EQ((*bare).compare(*otherBare, mode), expected);
            ASSERT_EQ(string.equal(other, mode), expected == 0);
            ASSERT_EQ(string.startsWith(other, mode), slow.matches(0, b, mode));
            ASSERT_EQ(string.endsWith(other, mode), b.size() <= a.size() && slow.matches(a.size() - b.size(), b, mode));
        }
        const int expected = slow.compare(b, Insensitive);
        ASSERT_EQ(string == other, expected == 0);
        ASSERT_EQ(*bare == *otherBare, expected == 0);
        ASSERT_EQ(string != other, expected != 0);
        ASSERT_EQ(string < other, expected < 0);
        ASSERT_EQ(string <= other, expected <= 0);
        ASSERT_EQ(string > other, expected > 0);
        ASSERT_EQ(string >= other, expected >= 0);
        if (expected == 0) {
            ASSERT_EQ(std::hash<VoString>()(string), std::hash<VoString>()(other));
            ASSERT_EQ(std::hash<VoString>()(string), std::hash<VoStringView>()(*otherBare));
        }
    }
}

TEST_P(AgainstTheDefinition, SearchesAgreeOnRandomTexts)
{
    for (int i = 0; i < 20000; ++i) {
        const std::string needle = m_random.text(i % 3 ? 4 : 40);
        const std::string text = m_random.textAround(needle, i % 2 ? 12 : 120);
        const std::size_t from = m_random.number(text.size() + 3);
        const VoString string(text);
        const SlowString slow(text, m_locale);
        for (const Mode mode : {Insensitive, Sensitive}) {
            const std::size_t expected = slow.find(needle, from, mode);
            ASSERT_EQ(string.find(VoString(needle), from, mode), expected)
                << needle << " in " << text << " from " << from << ", mode " << mode;
            ASSERT_EQ((*BareView(text)).find(*BareView(needle), from, mode), expected);
            if (needle.size() == 1) {
                ASSERT_EQ(string.find(needle[0], from, mode), expected);
            }
            if (!needle.empty()) {
                ASSERT_EQ(Texts(string.tokenize(VoString(needle), mode)), slow.tokens(needle, mode));
            }
        }
    }
}

TEST_P(AgainstTheDefinition, ReplacementAgreesOnRandomTexts)
{
    for (int i = 0; i < 10000; ++i) {
        const std::string from = m_random.text(3);
        std::string to = m_random.text(5);
        const std::string text = m_random.textAround(from, i % 2 ? 12 : 120);
        const std::string terminated = to.substr(0, to.find('\0'));
        for (const Mode mode : {Insensitive, Sensitive, Mode(7)})
            ASSERT_EQ(VoString(text).replaced(VoString(from), VoString(to), mode).toStdString(),
                      SlowString(text, m_locale).replaced(from, terminated, mode))
                << from << " to " << to << " in " << text << ", mode " << mode;
    }
}

TEST(VoComparableString, EqualityFollowsTheLeftOperand)
{
    const VoString lower("abc");
    const VoCaseSensitiveString exact(VoString("ABC"));
    EXPECT_TRUE(lower == exact && exact != lower && "abc" != exact && "ABC" == exact && "aBc" == lower);
    EXPECT_TRUE(std::string("ABC") == lower && std::string("abc") != exact && !(exact == lower));
    const VoString sliced = exact;
    EXPECT_TRUE(sliced == lower);
}

TEST(VoComparableString, CaseSensitiveStringsKeepTheInsensitiveOrders)
{
    const VoCaseSensitiveString lower(VoString("abc"));
    const VoCaseSensitiveString upper(VoString("ABC"));
    EXPECT_TRUE(upper < lower);
    EXPECT_FALSE(lower < upper);
    for (const auto& [a, b] : {std::pair(&lower, &upper), std::pair(&upper, &lower)}) {
        EXPECT_TRUE(*a <= *b && *a >= *b && !(*a > *b) && a->compare(*b) == 0);
        EXPECT_TRUE(a->find(*b) == 0u && a->startsWith(*b));
    }
    const std::hash<VoCaseSensitiveString> hash;
    EXPECT_NE(hash(lower), hash(upper));
}

TEST(VoComparableString, OddSearchesFindNothing)
{
    const VoString text("abcabc");
    EXPECT_EQ(text.find(""), None);
    EXPECT_EQ(text.find(static_cast<const char*>(nullptr)), None);
    EXPECT_EQ(text.find("a", None), None);
    EXPECT_EQ(text.find("a", 0, Mode(2)), None);
    EXPECT_EQ(text.find('a', 0, Mode(-1)), None);
    EXPECT_EQ(VoString().find('a'), None);
    EXPECT_FALSE(text.contains("a", Mode(2)));
}

TEST(VoComparableString, AModeIsNotTakenForAStart)
{
    const VoString text("xX");
    EXPECT_EQ(text.find("X", Sensitive), 1u);
    EXPECT_EQ(text.find('X', Sensitive), 1u);
    EXPECT_EQ(text.find(VoString("X"), Sensitive), 1u);
    EXPECT_EQ(text.find("x", Insensitive), 0u);
}

TEST(VoComparableString, TokensAreWhatIsBetweenSeparators)
{
    EXPECT_EQ(Texts(VoString("").tokenize(",")), std::vector<std::string>{""});
    EXPECT_EQ(Texts(VoString("").tokenize("")), std::vector<std::string>{""});
    EXPECT_EQ(Texts(VoString("abc").tokenize("")), std::vector<std::string>{"abc"});
    EXPECT_EQ(Texts(VoString("oneANDtwoandthree").tokenize("And")), (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(Texts(VoString("1x2X3").tokenize("X", Sensitive)), (std::vector<std::string>{"1x2", "3"}));
}

TEST(VoComparableString, NumbersAreRecognised)
{
    // Integers are written as the library writes them; a number may stand between blanks.
    const std::string numbers[] = {"42",
                                   "-7",
                                   "0",
                                   "007",
                                   "+5",
                                   "-0",
                                   "1.0",
                                   "1e3",
                                   "0x1p3",
                                   "nan",
                                   "-INF",
                                   "1e999",
                                   "2147483647",
                                   "-2147483648",
                                   "2147483648",
                                   "99999999999",
                                   "1e3x",
                                   "1,5",
                                   "",
                                   "-",
                                   "- 5",
                                   "x",
                                   std::string("1\0", 2),
                                   std::string("1\0002", 3)};
    for (const std::string& number : numbers) {
        char* end = nullptr;
        std::strtod(number.c_str(), &end);
        const bool isDouble = !number.empty() && end == number.data() + number.size();
        const bool isInteger = std::to_string(std::atoi(number.c_str())) == number;
        for (const std::string& text : {number, " " + number + " ", "\t" + number + "\r\n"}) {
            const VoString longer(text + "9");
            const VoStringView view = longer.substring(0, text.size());
            EXPECT_TRUE(VoString(text).isDouble() == isDouble && view.isDouble() == isDouble) << text;
            EXPECT_TRUE(VoString(text).isInteger() == isInteger && view.isInteger() == isInteger) << text;
        }
    }
}

TEST(VoComparableString, PrintsZeroBytesAndHonoursTheWidth)
{
    std::ostringstream stream;
    stream << VoString(std::string("a\0b", 3)) << '|';
    stream.width(4);
    stream << VoStringView("xy");
    EXPECT_EQ(stream.str(), std::string("a\0b|  xy", 8));
}

} // namespace
