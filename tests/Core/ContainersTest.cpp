#include <VoTestSupport.h>

#include <Core/VoByteArray.h>
#include <Core/VoDeque.h>
#include <Core/VoHostTypes.h>
#include <Core/VoList.h>
#include <Core/VoNumericMatrix.h>
#include <Core/VoPair.h>
#include <Core/VoPoint.h>
#include <Core/VoPointD.h>
#include <Core/VoProperties.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUniquePtr.h>
#include <Core/VoVector.h>
#include <Core/VoWeakPtr.h>
#include <IO/VoIODevice.h>
#include <Maths/VoMaths.h>
#include <Time/VoDateTime.h>

#include <cstdint>
#include <deque>

namespace {

struct Base
{
    explicit Base(int* deaths)
        : m_deaths(deaths)
    {
    }
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;
    virtual ~Base() { ++*m_deaths; }
    int* m_deaths;
};

struct Derived : Base
{
    using Base::Base;
    int value = 7;
};

struct Other : Base
{
    using Base::Base;
};

} // namespace

TEST(VoDeque, RandomOperationsAgreeWithTheStandardDeque)
{
    std::mt19937 random(20240601);
    VoDeque<int> ours;
    std::deque<int> theirs;
    for (int step = 0; step < 5000; ++step) {
        const int value = static_cast<int>(random() % 1000);
        switch (random() % 8) {
        case 0:
        case 1:
            ours.pushBack(value);
            theirs.push_back(value);
            break;
        case 2:
            ours.pushFront(value);
            theirs.push_front(value);
            break;
        case 3:
            if (theirs.empty()) {
                EXPECT_THROW_MSG(ours.popBack(), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
            } else {
                ours.popBack();
                theirs.pop_back();
            }
            break;
        case 4:
            if (theirs.empty()) {
                EXPECT_THROW_MSG(ours.popFront(), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
            } else {
                ours.popFront();
                theirs.pop_front();
            }
            break;
        case 5: {
            const auto at = static_cast<std::ptrdiff_t>(random() % (theirs.size() + 1));
            ours.insert(ours.begin() + at, value);
            theirs.insert(theirs.begin() + at, value);
            break;
        }
        case 6:
            if (!theirs.empty()) {
                const auto at = static_cast<std::ptrdiff_t>(random() % theirs.size());
                ours.erase(ours.begin() + at);
                theirs.erase(theirs.begin() + at);
            }
            break;
        default:
            ASSERT_EQ(theirs.size(), ours.size());
            EXPECT_EQ(std::find(theirs.begin(), theirs.end(), value) != theirs.end(), ours.contains(value));
        }
    }
    ASSERT_EQ(theirs.size(), ours.size());
    for (std::size_t i = 0; i < theirs.size(); ++i)
        ASSERT_EQ(theirs[i], ours[i]) << i;
}

TEST(VoDeque, EveryAccessBeyondTheEndIsRefused)
{
    VoDeque<VoString> deque{VoString("a"), VoString("b")};
    EXPECT_THROW_MSG(deque[2], VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    EXPECT_THROW_MSG(deque.at(9), VoIndexOutOfBoundsException, "Index out of bounds [9,2]");
    deque.clear();
    EXPECT_THROW_MSG(deque.front(), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
    EXPECT_THROW_MSG(deque.back(), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
    EXPECT_THROW_MSG(VoList<int>().popFront(), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
    EXPECT_THROW_MSG(VoVector<int>{1}[1], VoIndexOutOfBoundsException, "Index out of bounds [1,1]");
}

TEST(VoDeque, CanBeAppendedToItselfAndIsEmptyAfterAMove)
{
    VoDeque<int> deque{1, 2};
    deque.append(deque);
    EXPECT_EQ((VoDeque<int>{1, 2, 1, 2}), deque);
    VoDeque<int> moved(std::move(deque));
    EXPECT_EQ(4u, moved.size());
    EXPECT_TRUE(deque.isEmpty() && deque == VoDeque<int>() && deque.begin() == deque.end());
    deque.insert(deque.end(), 5);
    EXPECT_EQ(5, deque.front());
    static_assert(std::is_nothrow_move_constructible_v<VoDeque<int>> &&
                  std::is_nothrow_move_assignable_v<VoDeque<int>>);
    static_assert(sizeof(VoDeque<VoString>) == sizeof(void*), "rows of tables hold many empty ones");
}

TEST(Containers, RefuseWhatCannotBeHeldByTheLibrarysErrors)
{
    VoDeque<int> deque{1};
    VoVector<int> vector{1};
    const auto most = static_cast<std::size_t>(-1);
    EXPECT_THROW(VoVector<double>(most).size(), VoBadAllocException);
    EXPECT_THROW(VoDeque<double>(most).size(), VoBadAllocException);
    EXPECT_THROW(deque.resize(most), VoBadAllocException);
    EXPECT_THROW(vector.resize(most, 3), VoBadAllocException);
    EXPECT_THROW(vector.reserve(most), VoBadAllocException);
    EXPECT_THROW(VoMatrix<double>(std::size_t{1} << 30, std::size_t{1} << 30), VoOverflowException);
    EXPECT_THROW(VoString('c', most), VoBadAllocException);
    EXPECT_EQ(1u, deque.size() * vector.size());
    EXPECT_EQ(VoString(nullptr, 5).size(), 0u);
}

TEST(Values, AreWalkedHashedAndWritten)
{
    VoString text("ab");
    for (char& c : text)
        ++c;
    const VoByteArray bytes(text.c_str(), text.size());
    VoNumericMatrix<int> matrix(2, 2, 3);
    std::string walked;
    for (const char c : VoStringView(text))
        walked += c;
    for (const char c : bytes)
        walked += c;
    for (const int cell : std::as_const(matrix))
        walked += std::to_string(cell);
    EXPECT_EQ(walked, "bcbc3333");
    EXPECT_EQ(std::as_const(matrix).row(1)[0].get(), 3);
    EXPECT_EQ(std::as_const(matrix).column(1).size(), 2u);

    const auto hash = [](const auto& value) { return std::hash<std::decay_t<decltype(value)>>()(value); };
    EXPECT_EQ(hash(bytes), hash(VoByteArray("bc", 2)));
    EXPECT_EQ(hash(VoProperty("Width", "A")), hash(VoProperty("WIDTH", "a")));
    EXPECT_EQ(hash(VoPointD(0.0, 1)), hash(VoPointD(-0.0, 1)));
    EXPECT_NE(hash(VoPoint(0, 1)), hash(VoPoint(1, 0)));
    EXPECT_EQ(hash(VoDateTime()), hash(VoDateTime().toLocal()));

    std::ostringstream stream;
    stream << VoProperties{{"Width", 1}, {"Title", "Gain"}} << VoProperties() << MakeVoPair(VoString("a"), 2);
    EXPECT_EQ(stream.str(), "{Width = 1, Title = Gain}{}[a,2]");
    EXPECT_EQ(VoIndexOutOfBoundsException("m", 3, text.size()).message(), "m [3,2]");
    VoIODevice::Mode mode = VoIODevice::Read;
    mode |= VoIODevice::Text;
    mode &= VoIODevice::Text;
    EXPECT_EQ(mode, VoIODevice::Text);
    static_assert(!std::is_constructible_v<VoVariant, wchar_t> && !std::is_constructible_v<VoVariant, char16_t>);
}

TEST(VoUniquePtr, OwnsConvertsAndRefusesToDereferenceNothing)
{
    int deaths = 0;
    {
        VoUniquePtr<Base> base = VoUniquePtr<Derived>::Make(&deaths);
        EXPECT_TRUE(DynamicCast<Other>(std::move(base)).isNull());
        ASSERT_TRUE(base) << "a failed cast must leave the object where it was";
        VoUniquePtr<Derived> derived = DynamicCast<Derived>(std::move(base));
        EXPECT_EQ(7, derived->value);
        EXPECT_THROW_MSG(*base, VoNullPointerException, "VoUniquePtr dereferencing nullptr");
        EXPECT_THROW_MSG(base->m_deaths, VoNullPointerException, "VoUniquePtr dereferencing nullptr");
        EXPECT_EQ(0, deaths);
    }
    EXPECT_EQ(1, deaths);
    VoUniquePtr<Base> some = VoUniquePtr<Derived>::Make(&deaths);
    VoUniquePtr<Base> none;
    swap(some, none);
    EXPECT_TRUE(some == nullptr && some != none && none == none);
}

TEST(VoSharedPtr, SharesAcrossCastsAndWeakPointersNoticeTheEnd)
{
    int deaths = 0;
    VoWeakPtr<Base> weak;
    EXPECT_TRUE(weak.expired());
    {
        VoSharedPtr<Derived> derived(VoUniquePtr<Derived>::Make(&deaths));
        VoSharedPtr<Base> base = derived;
        weak = VoWeakPtr<Derived>(derived);
        EXPECT_EQ(base, derived);
        EXPECT_EQ(2, base.useCount());
        EXPECT_EQ(7, base.dynamicCast<Derived>()->value);
        EXPECT_TRUE(base.dynamicCast<Other>().isNull());
        std::shared_ptr<Base> standard = base;
        derived.reset();
        base.reset();
        EXPECT_EQ(&deaths, weak->m_deaths);
        EXPECT_EQ(0, deaths);
    }
    EXPECT_EQ(1, deaths);
    EXPECT_TRUE(weak.expired());
    EXPECT_THROW_MSG(weak->m_deaths, VoNullPointerException, "VoSharedPtr dereferencing nullptr");
    EXPECT_THROW_MSG(*VoSharedPtr<int>(), VoNullPointerException, "VoSharedPtr dereferencing nullptr");
}

TEST(VoMatrix, CheckedAccessNamesTheOffendingIndexAndItsBound)
{
    VoMatrix<int> matrix(2, 3, 1);
    matrix.at(1, 2) = 5;
    EXPECT_EQ(5, matrix.data()[5]) << "row by row";
    EXPECT_THROW_MSG(matrix.at(2, 0), VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    EXPECT_THROW_MSG(matrix.at(0, 3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
    matrix.column(2)[0].get() = 9;
    EXPECT_EQ(9, matrix(0, 2)) << "the references of a column lead into the matrix";
    EXPECT_THROW_MSG(matrix.row(2), VoIndexOutOfBoundsException, "Index out of bounds [2,2]");
    const std::size_t half = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_THROW_MSG((VoMatrix<int>(half, half)), VoOverflowException, "Overflow - result too large");
}

namespace {

struct ThrowsWhenCopied
{
    ThrowsWhenCopied() = default;
    ThrowsWhenCopied(const ThrowsWhenCopied& other)
        : armed(other.armed)
    {
        if (armed)
            throw VoInvalidCallException("copied");
    }
    ThrowsWhenCopied& operator=(const ThrowsWhenCopied&) = default;
    bool armed = false;
};

} // namespace

TEST(VoMatrix, HasCellsForItsShapeAfterMovesAndFailedCopies)
{
    VoNumericMatrix<double> from(2, 3, 1);
    VoNumericMatrix<double> to(std::move(from));
    EXPECT_EQ(to(1, 2), 1);
    EXPECT_THROW_MSG(from.at(0, 0), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
    EXPECT_TRUE((from *= 2).transposed() == VoNumericMatrix<double>());
    to = VoNumericMatrix<double>(1, 1, 7);
    EXPECT_TRUE(to.rows() == 1 && to.at(0, 0) == 7);

    VoMatrix<ThrowsWhenCopied> armed(2, 2);
    armed.at(1, 1).armed = true;
    VoMatrix<ThrowsWhenCopied> target(1, 1);
    EXPECT_THROW(target = armed, VoInvalidCallException);
    EXPECT_TRUE(target.rows() == 1 && target.begin() + 1 == target.end());
}

TEST(VoNumericMatrix, RowOperationsSolveALinearSystem)
{
    VoNumericMatrix<double> m(2, 3);
    const std::array<double, 6> cells{0, 2, 8, 3, 1, 10};
    std::copy(cells.begin(), cells.end(), m.data());
    m.swapRows(0, 1);
    m.divideRow(0, 3);
    m.multiplyRow(1, 0.5);
    m.addScaledRow(0, 1, -1.0 / 3);
    EXPECT_DOUBLE_EQ(2, m(0, 2));
    EXPECT_DOUBLE_EQ(4, m(1, 2));
    EXPECT_DOUBLE_EQ(4, m.transposed()(2, 1));
}

TEST(HostTypes, TheHashTableIteratesInOrderOfItsKeys)
{
    YHashTable<std::string> table;
    for (const int key : {5, -1, 3, 5})
        table.insert(key, std::to_string(key));
    EXPECT_FALSE(table.remove(4));
    EXPECT_TRUE(table.remove(3));
    std::string keys;
    for (const auto& [key, value] : table)
        keys += value + ";";
    EXPECT_EQ("-1;5;", keys);
    EXPECT_EQ(nullptr, table.find(3));
}

TEST(VoMaths, RandomIntegersCoverTheClosedRangeEvenly)
{
    std::array<int, 6> counts{};
    for (int i = 0; i < 6000; ++i) {
        const long long value = VoMaths::RandomInteger(-2, 3);
        ASSERT_GE(value, -2);
        ASSERT_LE(value, 3);
        ++counts[static_cast<std::size_t>(value + 2)];
    }
    for (const int count : counts) {
        EXPECT_GT(count, 800); // 1000 expected; seven standard deviations away
        EXPECT_LT(count, 1200);
    }
    const long long whole = VoMaths::RandomInteger(INT64_MIN, INT64_MAX);
    EXPECT_EQ(whole, VoMaths::RandomInteger(whole, whole));
    EXPECT_THROW_MSG(VoMaths::RandomInteger(1, 0), VoInvalidParameterException, "Empty range");
}

TEST(VoMaths, NearEqualityIsRelativeWithASmallAbsoluteFloor)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(VoMaths::NearlyEqual(1e20, 1e20 * (1 + 1e-10)));
    EXPECT_FALSE(VoMaths::NearlyEqual(1e20, 1e20 * (1 + 1e-8)));
    EXPECT_TRUE(VoMaths::NearlyEqual(0, 1e-13));
    EXPECT_FALSE(VoMaths::NearlyEqual(0, 1e-11));
    EXPECT_TRUE(VoMaths::NearlyEqual(infinity, infinity));
    EXPECT_FALSE(VoMaths::NearlyEqual(infinity, 1e308));
    EXPECT_FALSE(VoMaths::NearlyEqual(std::nan(""), std::nan("")));
}
