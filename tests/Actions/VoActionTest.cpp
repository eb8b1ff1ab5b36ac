#include <Actions/VoAction.h>

#include <Threading/VoReceiver.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

namespace {

using Property = VoAction::Property;

TEST(VoAction, ListenersHearOfWhatDiffersAndOfNothingElse)
{
    VoAction action("view.grid", "grid");
    std::vector<Property> heard;
    const VoReceiver receiver = action.connect([&](Property property) {
        heard.push_back(property);
        if (property == Property::Text)
            action.setDescription(action.text()); // told after the text
    });
    action.setText("grid");
    action.setText("Grid");
    action.setChecked(true); // cannot be checked yet
    action.setCheckable(true);
    action.setChecked(true);
    action.setCheckable(false);
    action.setEnabled(true);
    action.setEnabled(false);
    const std::vector<Property> expected = {Property::Text,    Property::Description, Property::Checkable,
                                            Property::Checked, Property::Checked,     Property::Checkable,
                                            Property::Enabled};
    EXPECT_EQ(heard, expected);
    EXPECT_TRUE(action.description().equal("Grid", VoString::CaseSensitive));
    EXPECT_FALSE(action.isChecked());
}

TEST(VoAction, TriggeringChecksAndAFailureUnchecks)
{
    std::vector<bool> calls;
    VoAction action("view.grid", "Grid", [&](bool checked) {
        calls.push_back(checked);
        if (calls.size() == 3)
            throw VoInvalidCallException("no grid");
    });
    EXPECT_TRUE(action.trigger());
    action.setCheckable(true);
    EXPECT_TRUE(action.trigger());
    EXPECT_THROW_MSG(action.trigger(), VoInvalidCallException, "no grid");
    EXPECT_TRUE(action.isChecked());
    action.setEnabled(false);
    EXPECT_FALSE(action.trigger());
    EXPECT_EQ(calls, (std::vector<bool>{false, true, false}));
    for (const char* id : {"", "two words"})
        EXPECT_THROW_MSG(VoAction{id}, VoInvalidParameterException, VoString("Invalid action identifier: ") + id);
}

TEST(VoAction, WhatListenersThrowStaysWithThem)
{
    const vo::test::LogCapture log;
    VoAction action("a");
    const VoReceiver receiver = action.connect([](Property) { throw VoInvalidCallException("deaf"); });
    EXPECT_NO_THROW(action.setText("b"));
    EXPECT_EQ(log.count(vo::logging::Level::Error, "actions", "Exception in listener: deaf"), 1u);
}

} // namespace
