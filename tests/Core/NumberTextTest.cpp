#include <VoTestSupport.h>
#include <Words.h>

#include <Core/VoStringConverter.h>
#include <Core/detail/NumberText.h>

#include <climits>
#include <cstdio>

namespace {

using vo::test::Words;

// The test program never sets a C locale, so the C functions are the known answer. But not all show the sign of what is
// no number, or give a plain zero for what is none.
std::string Printed(const char* format, double value)
{
    if (std::isnan(value))
        return std::signbit(value) ? "-nan" : "nan";
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

bool SameBits(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

void ExpectParsedLikeC(const std::string& text)
{
    char* end = nullptr;
    const double read = std::strtod(text.c_str(), &end);
    const double expected = end == text.c_str() ? 0.0 : read;
    const vo::detail::ParsedDouble parsed = vo::detail::ParseDouble(text);
    EXPECT_TRUE(SameBits(VoString(text).toDouble(), expected)) << text;
    EXPECT_EQ(parsed.consumed, static_cast<std::size_t>(end - text.c_str())) << '"' << text << '"';
    EXPECT_TRUE(SameBits(parsed.value, expected)) << '"' << text << "\": " << parsed.value << ", not " << expected;
}

double RandomDouble(std::mt19937_64& engine)
{
    const std::uint64_t bits = engine();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

TEST(NumberText, PrintsLikeC)
{
    std::vector<double> values = {0.0,    -0.0,   1.5,      2.5,       1e5,          1e6,          999999.5,
                                  1e-5,   0.0001, 1e308,    -1e308,    5e-324,       0.1,          1e15,
                                  123456, 1e21,   HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
    std::mt19937_64 engine(7);
    for (int i = 0; i < 20000; ++i)
        values.push_back(i % 2 ? RandomDouble(engine) : static_cast<double>(engine() % 2000000) / 64.0 - 9999.0);
    for (const double value : values) {
        EXPECT_EQ(vo::detail::FixedText(value), Printed("%f", value));
        EXPECT_EQ(vo::detail::GeneralText(value), Printed("%g", value));
        EXPECT_EQ(vo::detail::GeneralText(value, 17), Printed("%.17g", value));
    }
}

TEST(NumberText, ReadsDoublesLikeC)
{
    for (const char* text : {"", " ", "- 1", " \t\n\v\f\r7"})
        ExpectParsedLikeC(text);
    for (const std::string& text : Words(
             "garbage 1 -1 +1 +-1 --1 .5 5. . -. 1e 1e+ 0X88P+-52 0x1p-+3 1e+5 1E-5x 1.5.5 1,5 inf -INF infinity "
             "INFINITYx "
             "infinit nan NAN -nan nan( nan(1) nan(x_1)y nano in 0x 0xg 0x1 -0X1P3 0x.8 0x. 0x1.8p1 0x1p 0x1p+ "
             "0x1p-1074 "
             "0x1p-1075 0x1p1024 0x1p9999999999999999999 1e999 -1e999 1e-999 -1e-999 1e309 1e-330 1e-323 2.4e-324 "
             "2.5e-324 "
             "1e99999999999999999999 1e-99999999999999999999 0e99999999999999999999 0.0e-999 1.7976931348623157e308 "
             "1.7976931348623159e308 179769313486231580793e289 0.000001e310 0.0000001e315 100000000000000000000000e290 "
             "9007199254740993 9007199254740992.999999999999999999999999999999999999 0x1.fffffffffffff7p1023 "
             "0x1.fffffffffffff8p1023 0x.0000001p-1040 0x0.0p99999 0x10000000000000000p0"))
        ExpectParsedLikeC(text);
    const std::string zeros(400, '0');
    for (const std::string& text : {"0x1" + zeros + "p-500", "0x." + zeros + "1p+500", "0x1" + zeros + "p-1600",
                                    "1" + zeros + "e-100", "." + zeros + "1e100", "1" + zeros + "e-400"})
        ExpectParsedLikeC(text);

    std::mt19937_64 engine(11);
    const std::string alphabet = "0123456789012345678901234567890123456789+-.eE xXpPaAfFinN";
    for (int i = 0; i < 30000; ++i) {
        std::string text(engine() % 14, ' ');
        for (char& c : text)
            c = alphabet[engine() % alphabet.size()];
        ExpectParsedLikeC(text);
        ExpectParsedLikeC("0x" + text);
        ExpectParsedLikeC(Printed(i % 2 ? "%.16e" : "%a", RandomDouble(engine)));
    }
}

TEST(NumberText, ReadsIntegersLikeCAndSizesLikeAStream)
{
    std::vector<std::string> texts =
        Words("garbage 7 42 +5 +-5 -0 -1 007 0x10 1e3 1.9 2147483647 2147483648 -2147483648 -2147483649 99999999999 "
              "9223372036854775807 9223372036854775808 -9223372036854775808 -9223372036854775809 18446744073709551615 "
              "18446744073709551616 -18446744073709551615 -18446744073709551616 99999999999999999999999");
    for (const char* text : {"", " \t-7x", " 7x", "- 5"})
        texts.emplace_back(text);
    for (const std::string& text : texts) {
        const int expected = static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
        EXPECT_EQ(vo::detail::ParseInt(text), expected) << text;
        EXPECT_EQ(VoString(text).toInt(), expected) << text;
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        std::size_t size = 0;
        stream >> size;
        EXPECT_EQ(VoString(text).toSizeT(), size) << text;
    }
    EXPECT_EQ(vo::detail::ParseInt("99999999999"), 1215752191);
}

TEST(VoStringLongLongConverter, RoundTripsAndRefusesEverythingElse)
{
    VoStringLongLongConverter converter;
    for (const long long value : {0LL, -1LL, 42LL, LLONG_MAX, LLONG_MIN})
        EXPECT_EQ(std::as_const(converter).convert(converter.convert(value)), value);
    for (const char* text : {"", " 1", "1 ", "+1", "1.0", "0x1", "--1", "x", "9223372036854775808"})
        EXPECT_THROW_MSG(converter.convert(VoString(text)), VoInvalidConversionException,
                         "Invalid conversion from " + VoString(text) + " to long long");
}

} // namespace
