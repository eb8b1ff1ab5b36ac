#include <VoTestSupport.h>

#include <Core/VoColour.h>

namespace {

using Light = std::array<double, 3>;
using Matrix = std::array<Light, 3>;

double Linear(std::uint8_t part)
{
    const double c = part / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double Dot(const Light& a, const Light& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// CIELAB of what somebody sees, with the matrices of Machado, Oliveira and Fernandes (2009) for full deficiency.
Light Seen(const VoColour& colour, const Matrix& vision)
{
    const Light light = {Linear(colour.red()), Linear(colour.green()), Linear(colour.blue())};
    Light seen;
    for (std::size_t i = 0; i < 3; ++i)
        seen[i] = std::clamp(Dot(vision[i], light), 0.0, 1.0);
    const auto f = [](double t) { return t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116; };
    const double x = f(Dot({0.4124564, 0.3575761, 0.1804375}, seen) / 0.95047);
    const double y = f(Dot({0.2126729, 0.7151522, 0.0721750}, seen));
    const double z = f(Dot({0.0193339, 0.1191920, 0.9503041}, seen) / 1.08883);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

constexpr Matrix Visions[] = {
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {{{0.152286, 1.052583, -0.204868}, {0.114503, 0.786281, 0.099216}, {-0.003882, -0.048116, 1.051998}}},
    {{{0.367322, 0.860646, -0.227968}, {0.280085, 0.672501, 0.047413}, {-0.011820, 0.042940, 0.968881}}},
    {{{1.255528, -0.076749, -0.178779}, {-0.078411, 0.930809, 0.147602}, {0.004733, 0.691367, 0.303900}}},
};

constexpr VoColour White(255, 255, 255);

} // namespace

TEST(VoColour, SeriesAreToldApartByEveryKindOfColourVision)
{
    constexpr double clearlyDifferent = 25; // about 2.3 can just be seen
    for (const Matrix& vision : Visions) {
        for (std::size_t i = 0; i < 8; ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const Light a = Seen(VoSeriesColour(i), vision);
                const Light b = Seen(VoSeriesColour(j), vision);
                EXPECT_GT(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), clearlyDifferent) << i << " and " << j;
            }
        }
    }
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_GE(VoSeriesColour(i).contrast(White), 3) << i;
}

TEST(VoColour, ContrastsAreThoseOfTheStandard)
{
    EXPECT_DOUBLE_EQ(White.contrast(VoColour()), 21);
    EXPECT_NEAR(VoColour::FromText("#777").contrast(White), 4.48, 0.005);
    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i) {
        const VoColour colour = VoColour::FromARGB(static_cast<std::uint32_t>(random()) | 0xff000000);
        const VoColour background = VoColour::FromARGB(static_cast<std::uint32_t>(random()) | 0xff000000);
        const VoColour readable = colour.readableOn(background);
        EXPECT_GE(readable.contrast(background), 4.5) << colour << " on " << background;
        EXPECT_EQ(readable == colour, colour.contrast(background) >= 4.5);
    }
}

TEST(VoColour, TextsAreReadOrRefused)
{
    const std::pair<const char*, VoColour> cases[] = {
        {"#14f8", {0x11, 0x44, 0xff, 0x88}},   {" #0a0B0c ", {10, 11, 12}},   {"#0a0b0c0d", {10, 11, 12, 13}},
        {"rebeccapurple", {0x66, 0x33, 0x99}}, {"transparent", {0, 0, 0, 0}},
    };
    for (const auto& [text, colour] : cases) {
        EXPECT_EQ(VoColour::FromText(text), colour) << text;
        EXPECT_EQ(VoColour::FromText(colour.toString()), colour) << text;
    }
    EXPECT_EQ(VoColour(0, 255, 255).name(), "aqua");
    for (const char* text : {"", "#", "#12", "#12345", "#1234567", "#123456789", "#12g", "123", "blu", "# 123"})
        EXPECT_THROW_MSG(VoColour::FromText(text), VoInvalidConversionException, VoString("Invalid colour: ") + text);
}

TEST(VoColour, OtherCoordinatesComeBack)
{
    for (std::uint32_t rgb = 0; rgb < (1u << 24); rgb += 4099) {
        const VoColour colour = VoColour::FromARGB(rgb | 0xff000000);
        ASSERT_EQ(VoColour::FromHSV(colour.hsv()), colour);
        ASSERT_EQ(VoColour::FromHSL(colour.hsl()), colour);
    }
    EXPECT_THROW_MSG(VoColour::FromHSV({std::nan(""), 0, 0}), VoInvalidParameterException, "Invalid colour");
}

TEST(VoColour, MixesAsLightDoes)
{
    const VoColour black;
    EXPECT_EQ(black.mixed(White, 0.5), VoColour(188, 188, 188));
    EXPECT_EQ(black.mixed(White, std::nan("")), black);
    EXPECT_EQ(black.mixed(White, 7), White);
    EXPECT_EQ(VoColour(255, 0, 0).mixed(VoColour(0, 0, 255, 0), 0.5), VoColour(255, 0, 0, 128));
    EXPECT_EQ(black.withAlpha(128).over(White), black.mixed(White, 127 / 255.0));
}
