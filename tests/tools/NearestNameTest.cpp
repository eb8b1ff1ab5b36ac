#include <Core/detail/NearestName.h>

#include <VoTestSupport.h>

using namespace vo::detail;

namespace {

const std::vector<std::string_view> Verbs = {"publish", "releases",  "show",           "diff",
                                             "plan",    "install",   "installed",      "verify",
                                             "repair",  "uninstall", "verify-release", "checksum"};

/// The definition taken literally, for short texts.
std::size_t SlowDistance(std::string_view a, std::string_view b)
{
    if (a.empty() || b.empty())
        return std::max(a.size(), b.size());
    std::size_t best = SlowDistance(a.substr(1), b.substr(1)) + (a[0] == b[0] ? 0 : 1);
    best = std::min(best, SlowDistance(a.substr(1), b) + 1);
    best = std::min(best, SlowDistance(a, b.substr(1)) + 1);
    if (a.size() > 1 && b.size() > 1 && a[0] == b[1] && a[1] == b[0])
        best = std::min(best, SlowDistance(a.substr(2), b.substr(2)) + 1);
    return best;
}

} // namespace

TEST(NearestName, FindsWhatWasMeant)
{
    struct
    {
        const char* typed;
        const char* meant; // null: nothing near
    } const rows[] = {
        {"instal", "install"},
        {"isntall", "install"},
        {"installled", "installed"},
        {"plna", "plan"},
        {"unistall", "uninstall"},
        {"verify-relase", "verify-release"},
        {"verify_release", "verify-release"},
        {"check", "checksum"},
        {"rel", "releases"},
        {"x", nullptr},
        {"", nullptr},
        {"download", nullptr},
        {"ver", nullptr}, // begins two of them
    };
    for (const auto& row : rows) {
        const auto nearest = NearestName(row.typed, Verbs);
        EXPECT_EQ(nearest.has_value(), row.meant != nullptr) << row.typed << " gave " << nearest.value_or("nothing");
        if (nearest && row.meant != nullptr) {
            EXPECT_EQ(*nearest, row.meant) << row.typed;
        }
    }
}

TEST(NearestName, AHugeTextIsNotMeasured)
{
    EXPECT_FALSE(NearestName(std::string(10000000, 'i'), Verbs));
    EXPECT_FALSE(NearestName("anything", {}));
}

TEST(NearestName, DistancesAgreeWithTheDefinition)
{
    std::mt19937 random(7);
    for (int i = 0; i < 500; ++i) {
        std::string texts[2];
        for (std::string& text : texts) {
            for (auto length = random() % 7; length > 0; --length)
                text += static_cast<char>('a' + random() % 3);
        }
        EXPECT_EQ(EditDistance(texts[0], texts[1]), SlowDistance(texts[0], texts[1])) << texts[0] << ' ' << texts[1];
    }
}
