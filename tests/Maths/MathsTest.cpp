#include <VoTestSupport.h>

#include <Core/VoMathsException.h>
#include <Maths/VoMaths.h>

#include <cmath>
#include <limits>

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

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

TEST(Maths, RoundsTheExactValueToDecimals)
{
    struct Row
    {
        double value;
        int digits;
        double rounded;
    };
    const Row rows[] = {{2.5, 0, 3},
                        {-2.5, 0, -3},
                        {0.5, 0, 1},
                        {0.49999999999999994, 0, 0},
                        {2.675, 2, 2.67}, // the nearest double lies below 2.675
                        {1.115, 2, 1.11}, // so does this, but its product with 100 rounds to the half
                        {1.005, 2, 1.0},
                        {8.125, 2, 8.13},
                        {-8.125, 2, -8.13},
                        {1234.5678, -2, 1200},
                        {1250, -2, 1300},
                        {-1250, -2, -1300},
                        {1249.9999999999998, -2, 1200},
                        {5e15 + 1, 1, 5e15 + 1},
                        {1e300, 22, 1e300},
                        {1.2345678901234567e18, 5, 1.2345678901234567e18},
                        {1e-30, 22, 0},
                        {Infinity, 3, Infinity}};
    for (const Row& row : rows)
        EXPECT_EQ(VoMaths::Round(row.value, row.digits), row.rounded) << row.value << " to " << row.digits;
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
    EXPECT_THROW_MSG(VoMaths::Interpolate(1, 2, 0, 2, 1), VoDivideByZeroException, "Divide by zero");
    EXPECT_DOUBLE_EQ(VoMaths::DegreesToRadians(180), std::acos(-1.0));
}

} // namespace
