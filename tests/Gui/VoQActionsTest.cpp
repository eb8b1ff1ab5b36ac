#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <Actions/VoAction.h>
#include <Actions/VoUndoStack.h>
#include <Core/VoColour.h>
#include <Gui/VoQActions.h>

#include <QtGui/QColor>
#include <QtWidgets/qaction.h> // the name that both versions of the framework have

using QActions = vo::test::GuiTest;

TEST_F(QActions, AreKeptTheSameBothWays)
{
    int calls = 0;
    bool last = false;
    VoAction action("view.grid", "Fish & chips", [&](bool checked) {
        ++calls;
        last = checked;
    });
    action.setShortcut("Ctrl+Shift+G");
    action.setCheckable(true);
    QObject parent;
    QAction* const shown = VoQActions::Make(action, &parent);
    EXPECT_EQ(shown->text(), QStringLiteral("Fish && chips"));
    EXPECT_EQ(shown->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+G")));

    shown->trigger();
    EXPECT_TRUE(calls == 1 && last && action.isChecked() && shown->isChecked());
    action.trigger();
    EXPECT_TRUE(calls == 2 && !last && !action.isChecked() && !shown->isChecked());
    shown->setChecked(true);
    EXPECT_FALSE(action.isChecked()); // from the event loop
    QCoreApplication::processEvents();
    EXPECT_TRUE(calls == 2 && action.isChecked());

    shown->setText(QStringLiteral("&Open && go"));
    EXPECT_EQ(action.text(), VoString("Open & go"));
    EXPECT_EQ(shown->text(), QStringLiteral("&Open && go"));
    shown->setEnabled(false);
    EXPECT_FALSE(action.isEnabled());
    action.setEnabled(true);
    EXPECT_TRUE(shown->isEnabled());
}

TEST_F(QActions, OutliveWhatTheyWereMadeOf)
{
    QObject parent;
    auto action = std::make_unique<VoAction>("x", "X");
    auto history = std::make_unique<VoUndoStack>();
    history->push(
        "Rename", [] {}, [] {});
    const std::vector<QAction*> shown = {VoQActions::Make(*action, &parent), VoQActions::MakeUndo(*history, &parent)};
    action.reset();
    history.reset();
    for (QAction* const each : shown) {
        each->setText(QStringLiteral("y"));
        each->trigger();
        EXPECT_FALSE(each->isEnabled());
    }
}

TEST_F(QActions, OfAHistoryTellWhatIsNextAndWhatFails)
{
    int value = 0;
    VoString told;
    VoUndoStack history;
    QObject parent;
    QAction* const undo = VoQActions::MakeUndo(history, &parent, "Undo", [&](const VoString& text) { told = text; });
    QAction* const redo = VoQActions::MakeRedo(history, &parent, "Again:");
    EXPECT_FALSE(undo->isEnabled() || redo->isEnabled());
    EXPECT_EQ(undo->text(), QStringLiteral("Undo"));
    history.push(
        "Set R&D", [&] { value = 1; }, [&] { value = 0; });
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Set R&&D"));
    undo->trigger();
    EXPECT_TRUE(value == 0 && !undo->isEnabled() && redo->isEnabled());
    EXPECT_EQ(redo->text(), QStringLiteral("Again: Set R&&D"));
    redo->trigger();
    EXPECT_TRUE(value == 1 && undo->isEnabled() && !redo->isEnabled());
    history.push(
        "Fail", [] {}, [] { throw VoInvalidCallException("no way"); });
    undo->trigger();
    EXPECT_TRUE(told.contains("no way"));
}

// The colours of the framework are another implementation of the same rules.
TEST(Colours, AreThoseOfTheFramework)
{
    for (const QString& name : QColor::colorNames()) {
        const QColor colour(name);
        const VoColour mine = VoColour::FromText(VoString(name));
        ASSERT_EQ(mine.argb(), colour.rgba()) << VoString(name);
        EXPECT_EQ(VoColour::FromText(mine.withAlpha(255).toString()).argb(), QColor(colour.name()).rgba());
    }
    for (std::uint32_t rgb = 0; rgb < (1u << 24); rgb += 8191) {
        const QColor colour = QColor::fromRgb(rgb);
        const VoColour mine = VoColour::FromARGB(rgb | 0xff000000);
        ASSERT_NEAR(mine.hsv().saturation, colour.hsvSaturationF(), 1e-4) << mine;
        ASSERT_NEAR(mine.hsl().saturation, colour.hslSaturationF(), 1e-4) << mine;
        ASSERT_NEAR(mine.hsl().lightness, colour.lightnessF(), 1e-4) << mine;
        ASSERT_NEAR(mine.hsl().hue, std::max<double>(colour.hslHueF(), 0) * 360, 0.02) << mine;
    }
}
