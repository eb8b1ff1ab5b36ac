#include <SpecialNumbers.h>
#include <VoTestSupport.h>

#include <Maths/VoMaths.h>
#include <Maths/VoRandom.h>

#include <cstdio>
#include <tuple>

using vo::test::Infinity;
using vo::test::NotANumber;

namespace {

TEST(Maths, ComparesNumbersWithinTheirTolerance)
{
    struct Row
    {
        double a;
        double b;
        bool equal;
    };
    const Row rows[] = {{1, 1 + 0.9e-10, true},
                        {1, 1 + 1.1e-10, false},
                        {0, 0.9e-10, true},
                        {0, 1.1e-10, false},
                        {1e20, 1e20 + 0.9e10, true},
                        {-1e20, -1e20 - 1.1e10, false},
                        {1, -1, false},
                        {0.0, -0.0, true},
                        {Infinity, Infinity, true},
                        {Infinity, -Infinity, false},
                        {Infinity, 1e308, false},
                        {1e308, -1e308, false},
                        {NotANumber, NotANumber, false},
                        {NotANumber, 0, false}};
    for (const Row& row : rows) {
        EXPECT_EQ(VoMaths::Equal(row.a, row.b), row.equal) << row.a << ' ' << row.b;
        EXPECT_EQ(VoMaths::Equal(row.b, row.a), row.equal) << row.b << ' ' << row.a;
    }
    EXPECT_TRUE(VoMaths::IsZero(-0.9e-10));
    EXPECT_FALSE(VoMaths::IsZero(1.1e-10));
}

// The same by the exact decimal text of the value.
double RoundedText(double value, int digits)
{
    char buffer[700];
    std::string text(buffer,
                     static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, "%.150f", std::fabs(value))));
    text.insert(0, 30, '0');
    const std::size_t point = text.find('.');
    text.erase(point, 1);
    const std::size_t end = static_cast<std::size_t>(static_cast<int>(point) + digits);
    bool carry = text[end] >= '5';
    for (std::size_t i = end - 1; carry; --i) {
        carry = text[i] == '9';
        text[i] = carry ? '0' : static_cast<char>(text[i] + 1);
    }
    text = text.substr(0, end) + std::string(end < point ? point - end : 0, '0');
    text.insert(point, ".");
    return std::copysign(std::strtod(text.c_str(), nullptr), value);
}

// Sums, products and halves of numbers with few decimals, each to fewer and to more of them.
TEST(Maths, RoundsToTheNearestDoubleOfTheDecimalNumber)
{
    VoRandom random(17);
    for (int i = 0; i < 3000; ++i) {
        const auto decimal = [&] {
            return static_cast<double>(random.integer(-100000, 100000)) / std::pow(10.0, random.integer(0, 4));
        };
        const double odd[] = {decimal() + decimal(),
                              decimal() * decimal(),
                              decimal() / 8,
                              std::ldexp(random.uniform(), static_cast<int>(random.integer(-40, 100))),
                              std::ldexp(static_cast<double>(random.integer(1, 4000000001)), -3) * 1e6,
                              (0x1p52 + static_cast<double>(random.integer(0, 1000))) /
                                  std::pow(5.0, random.integer(0, 9))};
        for (double value : odd)
            for (int digits : {-3, 0, 1, 2, 3, 6, 12, 22})
                ASSERT_EQ(VoMaths::Round(value, digits), RoundedText(value, digits))
                    << testing::PrintToString(value) << " to " << digits;
    }
    for (const auto& [value, digits, rounded] : {std::tuple{1.7000000000000002, 1, 1.7},
                                                 {2.675, 2, 2.67}, // the nearest double lies below 2.675
                                                 {0.49999999999999994, 0, 0.0},
                                                 {1249.9999999999998, -2, 1200.0},
                                                 {1e300, 22, 1e300},
                                                 {1e-30, 22, 0.0},
                                                 {Infinity, 3, Infinity}})
        EXPECT_EQ(VoMaths::Round(value, digits), rounded) << value << " to " << digits;
    EXPECT_TRUE(std::isnan(VoMaths::Round(NotANumber, 2)));
    EXPECT_THROW_MSG(VoMaths::Round(1, 23), VoDomainException, "Value (23) is outside range [-22, 22]");
    EXPECT_THROW(VoMaths::Round(1, std::numeric_limits<int>::min()), VoDomainException);
}

TEST(Maths, ClampsAndInterpolates)
{
    EXPECT_EQ(VoMaths::Clamp(5, 1, 3), 3);
    EXPECT_EQ(VoMaths::Clamp(-Infinity, 1, 3), 1);
    EXPECT_EQ(VoMaths::Clamp(2, 1, 3), 2);
    EXPECT_TRUE(std::isnan(VoMaths::Clamp(NotANumber, 1, 3)));
    EXPECT_THROW(VoMaths::Clamp(2, 3, 1), VoDomainException);
    EXPECT_THROW(VoMaths::Clamp(2, NotANumber, 1), VoDomainException);

    EXPECT_EQ(VoMaths::Interpolate(1.5, 1, 10, 2, 20), 15);
    EXPECT_EQ(VoMaths::Interpolate(3, 1, 10, 2, 20), 30);
    for (double end : {0.1, 0.7})
        EXPECT_EQ(VoMaths::Interpolate(end, 0.1, 1.0 / 3, 0.7, 2.0 / 7), end == 0.1 ? 1.0 / 3 : 2.0 / 7);
    EXPECT_EQ(VoMaths::Interpolate(0.5, 0, 1e308, 1, -1e308), 0);
    EXPECT_EQ(VoMaths::Interpolate(1e308, -1e308, -1e308, 1.5e308, 1.5e308), 1e308);
    EXPECT_THROW_MSG(VoMaths::Interpolate(1, 2, 0, 2, 1), VoDivideByZeroException, "Divide by zero");

    EXPECT_DOUBLE_EQ(VoMaths::InterpolateLogarithmic(1e3, 1e2, -3, 1e5, 0), -2);
    EXPECT_EQ(VoMaths::InterpolateLogarithmic(1e5, 1e2, -3, 1e5, 0.1), 0.1);
    EXPECT_THROW(VoMaths::InterpolateLogarithmic(0, 1, 0, 2, 1), VoDomainException);
}

TEST(Maths, ConvertsAnglesAndRatios)
{
    EXPECT_DOUBLE_EQ(VoMaths::DegreesToRadians(180), std::acos(-1.0));
    EXPECT_DOUBLE_EQ(VoMaths::RadiansToDegrees(std::acos(0.0)), 90);
    EXPECT_DOUBLE_EQ(VoMaths::Decibels(100), 40);
    EXPECT_EQ(VoMaths::Decibels(0), -Infinity);
    EXPECT_DOUBLE_EQ(VoMaths::RatioOfDecibels(-20), 0.1);
    EXPECT_THROW(VoMaths::Decibels(-1), VoDomainException);
}

} // namespace
