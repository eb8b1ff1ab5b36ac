#include <Core/VoProperties.h>
#include <Core/VoStringView.h>
#include <Core/VoUUID.h>
#include <Core/VoVariant.h>
#include <FileSystem/VoFilePath.h>
#include <VoTestSupport.h>

#include <QtCore/QString>

#include <type_traits>

namespace {

using Texts = VoPair<VoString, VoString>;
using Paths = VoPair<VoFilePath, VoFilePath>;

// One value of each kind, in the order of the kinds.
std::vector<VoVariant> OneOfEach()
{
    return {VoVariant(),
            VoVariant(true),
            VoVariant(VoFilePath("C:\\a")),
            VoVariant(Paths("C:\\a", "b")),
            VoVariant(3),
            VoVariant(2.5),
            VoVariant(std::size_t(3)),
            VoVariant("text"),
            VoVariant(Texts("a", "b"))};
}

} // namespace

TEST(VoVariant, EveryKindShowsItsTextAndOnlyItsOwnAccessorAnswers)
{
    const char* const texts[] = {"null", "true", "C:\\a", "[C:\\a,b]", "3", "2.5", "3", "text", "[a,b]"};
    const auto accessors = std::vector<std::function<void(const VoVariant&)>>{
        [](const VoVariant& v) { v.asBoolean(); },      [](const VoVariant& v) { v.asFilePath(); },
        [](const VoVariant& v) { v.asFilePathPair(); }, [](const VoVariant& v) { v.asInteger(); },
        [](const VoVariant& v) { v.asDouble(); },       [](const VoVariant& v) { v.asSize(); },
        [](const VoVariant& v) { v.asString(); },       [](const VoVariant& v) { v.asStringPair(); }};
    const std::vector<VoVariant> values = OneOfEach();
    for (std::size_t kind = 0; kind < values.size(); ++kind) {
        ASSERT_EQ(static_cast<std::size_t>(values[kind].type()), kind);
        EXPECT_EQ(values[kind].toString().toStdString(), texts[kind]);
        for (std::size_t asked = 1; asked <= accessors.size(); ++asked) {
            const auto access = [&] { accessors[asked - 1](values[kind]); };
            const auto name = [](std::size_t k) { return VoVariant::TypeString(static_cast<VoVariant::Type>(k)); };
            if (asked == kind) {
                EXPECT_NO_THROW(access());
                continue;
            }
            EXPECT_THROW_MSG(access(), VoBadVariantAccessException,
                             VoString("Bad variant access [requested = ") + name(asked) + "] [actual = " + name(kind) +
                                 "]");
        }
    }
}

TEST(VoVariant, TheArgumentsTypeChoosesTheKind)
{
    EXPECT_EQ(VoVariant(5u).type(), VoVariant::Size);
    EXPECT_EQ(VoVariant(5ULL).asSize(), 5u);
    EXPECT_EQ(VoVariant(short(5)).type(), VoVariant::Integer);
    EXPECT_EQ(VoVariant(1.5f).type(), VoVariant::Double);
    EXPECT_EQ(VoVariant(QStringLiteral("\u00e9")).asString(), "\xc3\xa9");
    EXPECT_EQ(VoVariant(std::string("s")).asString(), "s");
    EXPECT_EQ(VoVariant(VoStringView("v")).asString(), "v");
    EXPECT_EQ(VoVariant(VoUUID("{U}")).asString().toStdString(), "{U}");
    EXPECT_EQ(VoVariant(static_cast<const char*>(nullptr)).asString(), "");
    EXPECT_FALSE((std::is_constructible_v<VoVariant, long>));
    EXPECT_FALSE((std::is_constructible_v<VoVariant, long long>));
    EXPECT_FALSE((std::is_constructible_v<VoVariant, int*>));
    EXPECT_FALSE((std::is_constructible_v<VoVariant, std::nullptr_t>));
    EXPECT_FALSE((std::is_constructible_v<VoVariant, char>));
}

TEST(VoVariant, KindsAreOrderedByNumberAndValuesByTheirOwnRules)
{
    const double nan = std::nan("");
    struct
    {
        VoVariant left, right;
        int result;
    } const rows[] = {
        {3, 2.0, -1},
        {true, 0, -3},
        {VoVariant(), false, -1},
        {VoVariant(), VoVariant(), 0},
        {false, true, -1},
        {-1, 1, -1},
        {2, 1, 1},
        {0.0, -0.0, 0},
        {nan, nan, 1},
        {nan, 1.0, 1},
        {1.0, nan, 1},
        {std::numeric_limits<std::size_t>::max(), std::size_t(1), 1},
        {"ABC", "abc", 0},
        {"abc", "ABD", -1},
        {Texts("A", "b"), Texts("a", "C"), -1},
        {Texts("B", "a"), Texts("a", "C"), 1},
        {VoFilePath("C:\\X"), VoFilePath("c:\\x"), 0},
        {Paths("a", "B"), Paths("A", "a"), 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.left.compare(row.right), row.result) << row.left << " against " << row.right;
        if (row.left != row.right)
            continue;
        EXPECT_EQ(std::hash<VoVariant>()(row.left), std::hash<VoVariant>()(row.right)) << row.left;
    }
}

TEST(VoVariant, KindNamesAreFoundWithoutRegardToCase)
{
    for (int kind = VoVariant::Boolean; kind <= VoVariant::StringPair; ++kind) {
        const auto type = static_cast<VoVariant::Type>(kind);
        EXPECT_EQ(VoVariant::StringType(VoVariant::TypeString(type)), type);
    }
    EXPECT_EQ(VoVariant::StringType("integer"), VoVariant::Integer);
    for (const char* text : {"null", "bogus", "", " Integer", "Unknown"})
        EXPECT_EQ(VoVariant::StringType(text), VoVariant::Null) << text;
    EXPECT_STREQ(VoVariant::TypeString(static_cast<VoVariant::Type>(9)), "Unknown");
    EXPECT_STREQ(VoVariant::TypeString(static_cast<VoVariant::Type>(-1)), "Unknown");
}

TEST(VoVariant, MovedFromIsNullAndCopiesAreTheirOwn)
{
    for (const VoVariant& value : OneOfEach()) {
        VoVariant source = value;
        VoVariant taken = std::move(source);
        EXPECT_EQ(taken, value);
        EXPECT_TRUE(source.isNull()); // NOLINT: the state after a move is promised
        EXPECT_THROW(source.asInteger(), VoBadVariantAccessException);
        source.set(7);
        taken.set(std::move(source));
        EXPECT_EQ(taken.asInteger(), 7);
    }
}

TEST(VoProperties, AddingAKnownNameReplacesTheValueInPlace)
{
    VoProperties set{{"Width", 1}, {"Name", "x"}, {"WIDTH", 2}};
    set << VoProperty("", VoVariant(3.0));
    set.add("name", VoVariant());
    std::ostringstream shown;
    set.forEach([&](const VoProperty& p) { shown << p << "; "; });
    EXPECT_EQ(shown.str(), "Width = 2; Name = null;  = 3; ");
    EXPECT_EQ(VoProperties({"a", 1}).size(), 1u);
}

TEST(VoProperties, LookupsAnswerOrThrowAndNeverAdd)
{
    const VoProperties set{{"Width", 1}};
    EXPECT_EQ(set.get("wIDTH").name().toStdString(), "Width");
    EXPECT_EQ(set.value("width", 9).asInteger(), 1);
    EXPECT_EQ(set.get("width", 9).value().asInteger(), 1);
    EXPECT_EQ(set.get("height", 9), VoProperty("height", 9));
    EXPECT_EQ(set.value("height", 9).asInteger(), 9);
    EXPECT_FALSE(set.hasProperty("height"));
    EXPECT_THROW_MSG(set.get("height"), VoNotFoundException, "Item not found: height");
    EXPECT_THROW_MSG(set.value("height"), VoNotFoundException, "Item not found: height");
    EXPECT_THROW_MSG(VoProperties().getReference(""), VoNotFoundException, "Item not found: ");
}

TEST(VoProperties, EqualityLooksAtOrderNamesAndValues)
{
    const VoProperties set{{"a", 1}, {"b", "x"}};
    EXPECT_EQ(set, (VoProperties{{"A", 1}, {"B", "X"}}));
    EXPECT_NE(set, (VoProperties{{"b", "x"}, {"a", 1}}));
    EXPECT_NE(set, (VoProperties{{"a", 1}}));
    EXPECT_NE(set, (VoProperties{{"a", 1}, {"b", "y"}}));
    VoProperties moved;
    moved.add("c", true);
    for (VoProperty& property : moved)
        property.setValue(false);
    EXPECT_FALSE(moved.value("C").asBoolean());
}
