#include <Application/VoLayeredProperties.h>

#include <Application/detail/PropertiesFile.h>
#include <Application/detail/VariantText.h>
#include <Core/VoProperties.h>
#include <Threading/VoReceiver.h>

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

using Layer = VoLayeredProperties::Layer;
using vo::detail::ValueMap;

namespace {

class VoLayeredPropertiesTest : public testing::Test
{
protected:
    VoLayeredProperties::Sources sources() const
    {
        return {folder.path("machine.xml"), folder.path("user.xml"), "VO_"};
    }

    void write(const char* name, const ValueMap& values) const
    {
        folder.write(name, vo::detail::PropertiesText(values).toStdString());
    }

    ValueMap read(const char* name) const { return vo::detail::PropertiesFromText(VoString(folder.read(name))); }

    const vo::test::ScratchFolder folder;
};

const VoValueDefinition Grid{"editor.grid", 10, "", 1, 100};

} // namespace

TEST_F(VoLayeredPropertiesTest, HigherLayersHideLowerOnesAndTellWhereAValueIsFrom)
{
    const vo::test::LogCapture log;
    write("machine.xml", {{"editor.grid", 20}, {"Machine", "m"}});
    VoLayeredProperties properties(sources());
    const auto expect = [&](int value, Layer layer) {
        EXPECT_EQ(properties.value("Editor.GRID"), VoVariant(value));
        EXPECT_EQ(properties.layer("editor.grid"), layer);
    };
    expect(20, Layer::Machine);
    properties.define(Grid);
    expect(20, Layer::Machine);
    properties.set("editor.grid", 30);
    expect(30, Layer::User);
    qputenv("VO_EDITOR_GRID_SIZE", QByteArrayLiteral("40"));
    qputenv("VO_OTHER", QByteArrayLiteral("four"));
    properties.define({"editor.grid-size", 1});
    properties.define({"other", 1});
    qunsetenv("VO_EDITOR_GRID_SIZE");
    qunsetenv("VO_OTHER");
    EXPECT_EQ(properties.value("editor.grid-size"), VoVariant(40));
    EXPECT_EQ(log.texts("properties"), (std::vector<std::string>{"Environment variable VO_OTHER ignored: Invalid value "
                                                                 "for other: four, allowed: Integer"}));
    properties.setOverride("EDITOR.grid", "50");
    expect(50, Layer::CommandLine);
    EXPECT_THROW_MSG(properties.setOverride("editor.grid", "500"), VoInvalidParameterException,
                     "Invalid value for editor.grid: 500, allowed: Integer from 1 to 100");
    EXPECT_EQ(properties.group("Editor"), (VoProperties{{"grid", 50}, {"grid-size", 40}}));
}

TEST_F(VoLayeredPropertiesTest, WhatADefinitionDoesNotAllowIsRefusedOrIgnoredWithAWarning)
{
    const vo::test::LogCapture log;
    write("user.xml", {{"editor.grid", 1000}, {"kept", "as it is"}});
    VoLayeredProperties properties(sources());
    properties.define(Grid);
    properties.define({"fixed", "f", "", {}, {}, {}, true});
    EXPECT_EQ(properties.layer("editor.grid"), Layer::Default);
    EXPECT_EQ(log.texts("properties"),
              (std::vector<std::string>{"Value in " + folder.path("user.xml").path().toStdString() +
                                        " ignored: editor.grid = 1000, allowed: Integer from 1 to 100"}));
    EXPECT_THROW_MSG(properties.set("editor.grid", "5"), VoInvalidParameterException,
                     "Invalid value for editor.grid: 5 (String), allowed: Integer from 1 to 100");
    EXPECT_THROW_MSG(properties.setText("fixed", "g"), VoInvalidUseException, "Property is read-only: fixed");
    EXPECT_THROW_MSG(properties.define({"editor-grid", 1}), VoInvalidParameterException,
                     "Properties share an environment variable: editor.grid, editor-grid");
    properties.set("new", 1);
    properties.save();
    EXPECT_EQ(read("user.xml").at("editor.grid"), VoVariant(1000)); // not ours to remove
}

TEST_F(VoLayeredPropertiesTest, EveryValueComesBackFromTheFileAsItWas)
{
    std::mt19937 random(7);
    ValueMap values{{"none", {}},
                    {"comma", VoPair<VoString, VoString>(",", " ")},
                    {"paths", VoPair<VoFilePath, VoFilePath>("c:\\a", VoFilePath::CreateUnchecked("b\\\\c\n"))},
                    {"mark", "\xef\xbb\xbfx\xef\xbf\xbf"},
                    {"nan", std::numeric_limits<double>::quiet_NaN()}};
    for (int i = 0; i < 300; ++i) {
        std::string text;
        for (std::size_t length = random() % 6; length > 0; --length)
            text += static_cast<char>(random() % 3 ? random() % 256 : " ,\n<&]"[random() % 6]);
        values["random " + VoString(i)] = VoString(text);
    }
    const ValueMap back = vo::detail::PropertiesFromText(vo::detail::PropertiesText(values));
    ASSERT_EQ(back.size(), values.size());
    for (const auto& [name, value] : values)
        EXPECT_TRUE(vo::detail::IsSameVariant(back.at(name), value)) << name.toStdString();
}

TEST_F(VoLayeredPropertiesTest, TwoWhoSaveDifferentNamesLoseNothingAndSeeEachOther)
{
    VoLayeredProperties first(sources());
    VoLayeredProperties second(sources()); // as another process would
    std::vector<std::string> told;
    const VoReceiver receiver = second.connect([&](const VoValueChange& change) {
        told.push_back((change.name + "=" + change.newValue.toString()).toStdString());
        if (change.name == "a")
            second.save(); // no lock is held
    });
    first.set("a", 1);
    first.set("both", 1);
    first.save();
    second.set("b", 2);
    second.set("both", 2);
    EXPECT_FALSE(second.isSaved());
    second.save();
    EXPECT_EQ(told, (std::vector<std::string>{"b=2", "both=2", "a=1"}));
    EXPECT_EQ(read("user.xml"), (ValueMap{{"a", 1}, {"b", 2}, {"both", 2}}));
    EXPECT_TRUE(first.reload());
    EXPECT_EQ(first.properties(), second.properties());
    EXPECT_FALSE(first.reload());
    first.reset("b");
    first.save();
    EXPECT_TRUE(second.reload());
    write("user.xml", {{"a", 9}}); // as long as before, perhaps within the same tick of the volume's clock
    EXPECT_TRUE(second.reload());
    EXPECT_EQ(second.value("a"), VoVariant(9));
}

TEST_F(VoLayeredPropertiesTest, ManyWhoSaveAtOnceLoseNothing)
{
    vo::test::Threads(4, [this](int t) {
        VoLayeredProperties own(sources());
        for (int i = 0; i < 10; ++i) {
            own.set("p" + VoString(t * 10 + i), i);
            own.save();
        }
    });
    EXPECT_EQ(read("user.xml").size(), 40u);
}

TEST_F(VoLayeredPropertiesTest, DamagedFilesAreKeptAsideUnderNewNamesAndSaid)
{
    const vo::test::LogCapture log;
    const std::string damaged[] = {"", "no xml", "<Properties><Property/></Properties>", "<Other/>",
                                   "<Properties><Property encoding='base64' kind='String'><Name>a</Name><Value><String>"
                                   "!</String></Value></Property></Properties>"};
    std::size_t count = 0;
    for (const std::string& text : damaged) {
        folder.write("user.xml", text);
        VoLayeredProperties properties(sources());
        properties.set("a", 1);
        properties.save();
        ++count;
        const std::string aside = count == 1 ? "user.xml.damaged" : "user.xml.damaged-" + std::to_string(count);
        EXPECT_EQ(folder.read(aside), text);
        ASSERT_EQ(log.texts("properties").size(), count) << text.substr(0, 100);
        const std::string said = log.texts("properties").back();
        EXPECT_EQ(said.find("Damaged properties: " + folder.path("user.xml").path().toStdString() + " ("), 0u) << said;
        EXPECT_NE(said.find("kept as " + folder.path(aside).path().toStdString()), std::string::npos) << said;
        EXPECT_EQ(read("user.xml"), (ValueMap{{"a", 1}}));
    }
    folder.write("machine.xml", "no xml");
    VoLayeredProperties properties(sources());
    EXPECT_EQ(log.texts("properties").size(), count + 1);
    EXPECT_EQ(folder.read("machine.xml"), "no xml");
}

TEST_F(VoLayeredPropertiesTest, WhatCannotBeReadIsNotReplaced)
{
    const vo::test::LogCapture log;
    std::filesystem::create_directory(folder.native("user.xml"));
    VoLayeredProperties properties(sources());
    EXPECT_EQ(log.records().size(), 1u);
    properties.set("a", 1);
    EXPECT_THROW(properties.save(), VoException);
    EXPECT_FALSE(properties.isSaved());
    std::filesystem::remove(folder.native("user.xml"));
    properties.save();
    EXPECT_EQ(read("user.xml"), (ValueMap{{"a", 1}}));
}
