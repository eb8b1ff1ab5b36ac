// Also compiled, without being run, by each compiler at hand in the later language versions: the comparisons are those
// that C++20 may find the other way round, and those that the conversion to a pointer could take away.
#include <QtCore/QString>
#include <QtCore/QUrl>
#include <VoCore.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

class ClientsString : public VoString
{
public:
    using VoString::VoString;
};

template <typename A, typename B>
bool AreEqual(const A& a, const B& b, bool expected)
{
    return (a == b) == expected && (b == a) == expected && (a != b) != expected && (b != a) != expected;
}

// Whether all operators say, either way round, what the sign of a comparison means.
template <typename A, typename B>
bool AreOrdered(const A& a, const B& b, int sign)
{
    const bool forward =
        (a < b) == (sign < 0) && (a <= b) == (sign <= 0) && (a > b) == (sign > 0) && (a >= b) == (sign >= 0);
    const bool back =
        (b > a) == (sign < 0) && (b >= a) == (sign <= 0) && (b < a) == (sign > 0) && (b <= a) == (sign >= 0);
    return forward && back && AreEqual(a, b, sign == 0);
}

template <typename A>
void ExpectOrderWithEveryKindOfText(const A& a, const VoString& b, int sign)
{
    const VoComparableString& any = b;
    EXPECT_TRUE(AreOrdered(a, b, sign) && AreOrdered(a, any, sign));
    EXPECT_TRUE(AreOrdered(a, VoStringView(b), sign));
    EXPECT_TRUE(AreOrdered(a, ClientsString(b.c_str()), sign));
    EXPECT_TRUE(AreOrdered(a, b.c_str(), sign));
    EXPECT_TRUE(AreOrdered(a, b.toStdString(), sign));
    EXPECT_TRUE(AreOrdered(a, b.toStdStringView(), sign));
    EXPECT_TRUE(AreOrdered(a, b.toQString(), sign));
    EXPECT_TRUE(AreEqual(a, VoUUID(VoString(a)), true));
    EXPECT_TRUE(AreEqual(a, VoUrl(b), sign == 0));
}

TEST(StringComparison, AgreesAmongAllKindsOfTexts)
{
    for (const char* left : {"apple", "Mango", "zebra"}) {
        for (const char* right : {"APPLE", "banana", "Zebra"}) {
            SCOPED_TRACE(std::string(left) + " " + right);
            const VoString a(left);
            const VoComparableString& any = a;
            const int sign = a.compare(right);
            ExpectOrderWithEveryKindOfText(a, right, sign);
            ExpectOrderWithEveryKindOfText(VoStringView(left), right, sign);
            ExpectOrderWithEveryKindOfText(ClientsString(left), right, sign);
            EXPECT_TRUE(AreOrdered(any, any, 0) && AreOrdered(any, VoString(right), sign));
            EXPECT_TRUE(AreOrdered(any, VoStringView(right), sign) && AreOrdered(any, right, sign));
            EXPECT_TRUE(AreEqual(VoFilePath(left), right, sign == 0) &&
                        AreEqual(VoFilePath(left), VoString(right), sign == 0));
            EXPECT_TRUE(AreEqual(VoFilePath(left), VoStringView(right), sign == 0));

            const int exactSign = std::strcmp(left, right);
            const VoCaseSensitiveString exact(left);
            const VoComparableString& anyRight = VoCaseSensitiveString(right);
            EXPECT_TRUE((exact == right) == (exactSign == 0) && (exact != VoString(right)) == (exactSign != 0));
            EXPECT_TRUE((exact < right) == (exactSign < 0) && (right > exact) == (exactSign < 0));
            EXPECT_TRUE((exact < VoStringView(right)) == (exactSign < 0) && (exact <= right) == (sign <= 0));
            EXPECT_TRUE((any == VoCaseSensitiveString(right)) == (sign == 0)) << "the left operand decides";
            EXPECT_TRUE((any != anyRight) == (sign != 0));
        }
    }
    const std::vector<VoString> fruits{"apple", "mango", "zebra"};
    EXPECT_EQ(std::lower_bound(fruits.begin(), fruits.end(), "banana") - fruits.begin(), 1);
}

template <typename T, typename = void>
constexpr bool IsDereferenced = false;
template <typename T>
constexpr bool IsDereferenced<T, std::void_t<decltype(*std::declval<T>())>> = true;
template <typename A, typename B, typename = void>
constexpr bool IsSubtracted = false;
template <typename A, typename B>
constexpr bool IsSubtracted<A, B, std::void_t<decltype(std::declval<A>() - std::declval<B>())>> = true;
template <typename A, typename B, typename = void>
constexpr bool IsCompared = false;
template <typename A, typename B>
constexpr bool IsCompared<A, B, std::void_t<decltype(std::declval<A>() < std::declval<B>())>> = true;

// What the conversion to a pointer would let in by accident.
static_assert(IsCompared<VoString, const char*> && !IsCompared<VoString, int> && !IsCompared<long, VoStringView>);
static_assert(!IsDereferenced<VoString> && !IsDereferenced<const VoCaseSensitiveString&>);
static_assert(!IsSubtracted<VoString, int> && !IsSubtracted<VoString, VoString> &&
              !IsSubtracted<const char*, VoString>);
static_assert(!std::is_convertible_v<VoString, bool> && !std::is_convertible_v<VoString, const void*>);

// A view kept of a temporary would dangle.
static_assert(!std::is_constructible_v<VoStringView, decltype(VoString().trimmed())>);
static_assert(!std::is_constructible_v<VoStringView, decltype(VoString().tokenize(",")[0])>);
static_assert(!std::is_constructible_v<VoStringView, decltype(VoFilePath("a").path())>);

TEST(TemporaryString, GivesTextsThatOutliveIt)
{
    const auto read = [](const char* text) { return VoString(text) + " that is too long to be kept inside an object"; };
    std::string pieces;
    for (const auto& piece : read(" a, b,c ").tokenize(","))
        pieces += piece.toStdString() + ";";
    EXPECT_EQ(pieces, " a; b;c  that is too long to be kept inside an object;");
    const auto trimmed = read("  x").trimmed();
    const auto rest = read("abc").substring(1);
    const auto& last = read("a|b").tokenize("|", VoString::CaseSensitive).back();
    EXPECT_EQ(trimmed, "x that is too long to be kept inside an object");
    EXPECT_EQ(rest, "bc that is too long to be kept inside an object");
    EXPECT_EQ(last, "b that is too long to be kept inside an object");
    EXPECT_EQ(read("x").substring(2, 4).trimmed(), "that");

    const auto path = [&read] { return VoFilePath("C:\\folder\\" + read("name") + ".txt"); };
    EXPECT_EQ(path().filename().toString(), read("name") + ".txt");
    EXPECT_EQ(path().extension(), "txt");
    std::string chunks;
    for (const auto& chunk : path().parent().chunks())
        chunks += chunk.toStdString() + ";";
    for (const auto& chunk : path().path().tokenize("\\"))
        chunks += chunk.toStdString() + ";";
    EXPECT_EQ(chunks, "C:;folder;C:;folder;" + read("name").toStdString() + ".txt;");
    const auto& value = VoProperty("name", read("value")).value().asString();
    EXPECT_EQ(value, read("value"));
}

} // namespace
