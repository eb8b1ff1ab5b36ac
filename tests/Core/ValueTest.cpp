#include <VoTestSupport.h>

#include <Core/VoByteArray.h>
#include <Core/VoByteArrayOLD.h>
#include <Core/VoChecksum.h>
#include <Core/VoProperties.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>
#include <Time/VoTimeZone.h>
#include <XML/VoXMLPath.h>

#include <QtCore/QByteArray>

#include <unordered_set>

// What all classes of values promise of copies and moves.

namespace {

template <typename T>
T Made(const char* text)
{
    if constexpr (std::is_same_v<T, VoByteArray> || std::is_same_v<T, VoByteArrayOLD>)
        return T(text, std::strlen(text));
    else if constexpr (std::is_same_v<T, VoChecksum>)
        return *text ? T(QByteArray(text)) : T();
    else if constexpr (std::is_same_v<T, VoProperties>)
        return *text ? T{VoProperty("name", text)} : T();
    else if constexpr (std::is_same_v<T, VoVariant>)
        return *text ? T(text) : T();
    else if constexpr (std::is_same_v<T, VoTimeZone>)
        return *text ? T(*text == 'a' ? "Europe/Berlin" : "Asia/Tokyo") : T();
    else if constexpr (std::is_same_v<T, VoDirectoryPath>)
        return T::FromText(text);
    else
        return T(text);
}

constexpr char Long[] = "a text too long to be stored without the heap";

template <typename T>
class Value : public testing::Test
{
};

using Classes = testing::Types<VoString, VoStringView, VoUUID, VoVariant, VoProperties, VoByteArray, VoByteArrayOLD,
                               VoChecksum, VoFilePath, VoDirectoryPath, VoUrl, VoXMLPath, VoTimeZone>;
TYPED_TEST_SUITE(Value, Classes);

TYPED_TEST(Value, IsCopiedWholeAndUsableAfterAMove)
{
    static_assert(std::is_nothrow_move_constructible_v<TypeParam>);
    const TypeParam value = Made<TypeParam>(Long);
    const TypeParam other = Made<TypeParam>("other");
    const TypeParam empty = Made<TypeParam>("");
    EXPECT_TRUE(value == Made<TypeParam>(Long) && !(value == other));
    TypeParam copy(value);
    TypeParam taken(std::move(copy));
    EXPECT_TRUE(taken == value && copy == empty); // NOLINT: what is left is promised
    copy = other;
    EXPECT_TRUE(copy == other && taken == value);
    copy = std::move(taken);
    EXPECT_TRUE(copy == value && taken == empty); // NOLINT
    TypeParam& same = copy;
    copy = same;
    EXPECT_TRUE(copy == value);
    copy = std::move(same);
    EXPECT_TRUE(copy == value);
    using std::swap;
    swap(taken = other, copy);
    EXPECT_TRUE(taken == value && copy == other);
}

template <typename T>
class HashedValue : public testing::Test
{
};

using HashedClasses = testing::Types<VoString, VoStringView, VoUUID, VoVariant, VoChecksum, VoFilePath, VoDirectoryPath,
                                     VoUrl, VoXMLPath>;
TYPED_TEST_SUITE(HashedValue, HashedClasses);

TYPED_TEST(HashedValue, IsFoundInSets)
{
    const std::unordered_set<TypeParam> set{Made<TypeParam>(Long), Made<TypeParam>("other"), Made<TypeParam>("other")};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(set.count(Made<TypeParam>("other")), 1u);
}

} // namespace
