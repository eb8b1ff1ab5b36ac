#include <Documents/detail/WorksheetLayout.h>
#include <VoTestSupport.h>

#include <tuple>

using vo::detail::WorksheetLayout;

namespace {

using Position = std::pair<std::size_t, std::size_t>; // row, column
using Ranges = std::vector<std::tuple<std::size_t, std::size_t, std::size_t, std::size_t>>;

/// The same by the plainest means: every covered position is written down.
class PlainLayout
{
public:
    void startRow()
    {
        ++row;
        column = 0;
    }

    bool isNextCovered() const { return m_covered.count({row, column + 1}) != 0; }

    bool rowsAreMissing() const { return !m_covered.empty() && m_covered.rbegin()->first > row; }

    void place(std::size_t columns, std::size_t rows)
    {
        ++column;
        std::size_t last = column;
        while (last < column + columns - 1 && m_covered.count({row, last + 1}) == 0)
            ++last;
        if (last > column || rows > 1)
            merges.emplace_back(column, row, last, row + rows - 1);
        for (std::size_t r = row; r < row + rows; ++r)
            for (std::size_t c = column; c <= last; ++c)
                if (r != row || c != column)
                    m_overlaps = !m_covered.insert({r, c}).second || m_overlaps;
    }

    void skip() { ++column; }
    bool overlaps() const { return m_overlaps; }

    std::size_t row = 0;
    std::size_t column = 0;
    Ranges merges;

private:
    std::set<Position> m_covered;
    bool m_overlaps = false;
};

Ranges RangesOf(const WorksheetLayout& layout)
{
    Ranges ranges;
    for (const auto& range : layout.merges())
        ranges.emplace_back(range.firstColumn, range.firstRow, range.lastColumn, range.lastRow);
    return ranges;
}

} // namespace

TEST(WorksheetLayout, CoversTheSamePositionsAsWritingThemAllDown)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        const unsigned widest = 1 + seed % 7;
        WorksheetLayout layout;
        PlainLayout plain;
        for (int row = 0; row < 30; ++row) {
            layout.startRow();
            plain.startRow();
            const auto cells = static_cast<unsigned>(random() % 9);
            for (unsigned cell = 0;; ++cell) {
                for (; plain.isNextCovered(); plain.skip(), layout.skip())
                    ASSERT_TRUE(layout.isNextCovered()) << seed;
                ASSERT_FALSE(layout.isNextCovered()) << seed << ": " << plain.row << ", " << plain.column + 1;
                ASSERT_EQ(layout.nextColumn(), plain.column + 1);
                if (cell == cells)
                    break;
                const std::size_t columns = 1 + random() % widest;
                const std::size_t rows = 1 + random() % widest;
                layout.place(columns == 1 ? random() % 2 : columns, rows);
                plain.place(columns, rows);
            }
            ASSERT_EQ(layout.rowsAreMissing(), plain.rowsAreMissing()) << seed;
        }
        EXPECT_EQ(RangesOf(layout), plain.merges) << seed;
        EXPECT_FALSE(plain.overlaps()) << seed;
    }
}

TEST(WorksheetLayout, AHugeRangeCostsNoMoreThanASmallOne)
{
    WorksheetLayout layout;
    layout.startRow();
    layout.place(WorksheetLayout::MaximumColumn, WorksheetLayout::MaximumRow); // 17 billion positions
    while (layout.row() < 100000) {
        EXPECT_TRUE(layout.rowsAreMissing());
        layout.startRow();
        ASSERT_TRUE(layout.isNextCovered());
    }
}

TEST(WorksheetLayout, RefusesWhatAWorksheetCannotHaveAndChangesNothing)
{
    constexpr const char* message = "Cell lies outside the limits of a worksheet";
    WorksheetLayout layout;
    EXPECT_THROW_MSG(layout.place(1, 1), VoInvalidCallException, message) << "there is no row yet";
    layout.startRow();
    const std::size_t most = static_cast<std::size_t>(-1);
    const std::pair<std::size_t, std::size_t> spans[] = {
        {WorksheetLayout::MaximumColumn + 1, 1}, {most, 1}, {1, WorksheetLayout::MaximumRow + 1}, {1, most}};
    for (const auto& [columns, rows] : spans)
        EXPECT_THROW_MSG(layout.place(columns, rows), VoInvalidCallException, message);
    EXPECT_EQ(layout.nextColumn(), 1U);
    EXPECT_TRUE(layout.merges().empty());
    for (std::size_t i = 0; i < WorksheetLayout::MaximumColumn; ++i)
        layout.place(1, 1);
    EXPECT_THROW_MSG(layout.place(1, 1), VoInvalidCallException, message);
    while (layout.row() < WorksheetLayout::MaximumRow)
        layout.startRow();
    EXPECT_THROW_MSG(layout.place(1, 2), VoInvalidCallException, message);
    layout.place(1, 1);
    EXPECT_THROW_MSG(layout.startRow(), VoInvalidCallException, message);
}
