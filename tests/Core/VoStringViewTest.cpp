#include <VoTestSupport.h>

#include <QtCore/QString>

namespace {

static_assert(std::is_nothrow_move_constructible_v<VoStringView> && std::is_nothrow_move_assignable_v<VoStringView>);

std::string Text(const VoStringView& view)
{
    return view.toString().toStdString();
}

TEST(VoStringView, ViewsPartsWithoutCopying)
{
    const VoString text("Hello World");
    const VoStringView world(text, 6, VoStringView::npos);
    EXPECT_EQ(Text(world), "World");
    EXPECT_EQ(&world[0], &text[6]);
    EXPECT_EQ(Text(world.substring(1, 3)), "orl");
    EXPECT_EQ(&world.substring(1, 3)[0], &text[7]);
    EXPECT_EQ(Text(VoStringView(text)), "Hello World");
    EXPECT_EQ(Text(VoStringView("abc")), "abc");
    EXPECT_EQ(Text(VoStringView("abc", 2)), "ab");
    EXPECT_TRUE(VoStringView().isEmpty() && VoStringView(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_TRUE(VoStringView(nullptr, 5).isEmpty());
}

TEST(VoStringView, BoundsAreThoseOfTheView)
{
    const VoString text("abcdef");
    const VoStringView view(text, 1, 3);
    EXPECT_EQ(view.at(2), 'd');
    EXPECT_THROW_MSG(view.at(3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
    EXPECT_TRUE(view.substring(3).isEmpty());
    EXPECT_EQ(Text(view.substring(1, VoStringView::npos)), "cd");
    EXPECT_THROW_MSG(view.substring(4), VoIndexOutOfBoundsException, "Index out of bounds [4,3]");
    EXPECT_THROW_MSG(VoStringView(text, 7, 0), VoIndexOutOfBoundsException, "Index out of bounds [7,6]");
    EXPECT_EQ(view.find("E"), VoStringView::invalid_position) << "behind the view's end";
    EXPECT_EQ(view.find("C"), 1u) << "relative to the view";
}

TEST(VoStringView, LastOccurrenceIsSoughtBackwardsFromTheIndex)
{
    const VoString text("a.b.c.");
    const VoStringView view(text, 0, 5);
    EXPECT_EQ(view.findLastOf('.'), 3u);
    EXPECT_EQ(view.findLastOf('.', 3), 3u);
    EXPECT_EQ(view.findLastOf('.', 2), 1u);
    EXPECT_THROW_MSG(view.findLastOf('.', 0), VoNotFoundException, "Item not found: .");
    EXPECT_THROW_MSG(VoStringView().findLastOf('x', 3), VoNotFoundException, "Item not found: x");
}

TEST(VoStringView, NumbersAndTextsEndWithTheView)
{
    const VoString text("123\0tail", 8);
    EXPECT_EQ(text.substring(0, 2).toInt(), 12);
    EXPECT_EQ(text.substring(0).toInt(), 123);
    EXPECT_EQ(text.substring(3).toInt(), 0);
    EXPECT_EQ(text.substring(1, 1).toQString(), QStringLiteral("2"));
    EXPECT_EQ(text.substring(1).toQString(), QStringLiteral("23")) << "up to the zero byte";
    EXPECT_EQ(Text(text.substring(2, 3)), std::string("3\0t", 3));
}

} // namespace
