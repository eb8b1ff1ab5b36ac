#include <Application/VoGlobalValue.h>

#include <Core/VoProperties.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

namespace {

const VoGlobalValue<double> Tolerance({"Test.Tolerance", 1e-3, "Relative error", 1e-12, 1.0});

// Puts every global value back when a test ends.
struct Restored
{
    const VoProperties before = VoGlobalValues::Changed();
    ~Restored() { VoGlobalValues::Restore(before); }
};

} // namespace

TEST(VoGlobalValues, TextsBecomeValuesOfTheDefinedKindOrAreRefusedWithWhatIsAllowed)
{
    using Texts = std::vector<const char*>;
    const struct
    {
        VoValueDefinition definition;
        const char* form;
        std::vector<std::pair<const char*, const char*>> taken; // and what they become
        Texts refused;
    } rows[] = {
        {{"A", 0.5, "", 0.0, 1.0},
         "Double from 0 to 1",
         {{"0.25", "0.25"}, {" 1e-3 ", "0.001"}},
         {"1,5", "2", "nan", ""}},
        {{"A", "red", "", {}, {}, {"red", "b"}}, "String, one of: red, b", {{"RED", "RED"}}, {"blue"}},
        {{"A", 3, "", 1}, "Integer of at least 1", {{"7", "7"}}, {"0", "2147483648", "7 apples"}},
        {{"A", std::size_t(1), "", {}, std::size_t(9)}, "Size up to 9", {{"9", "9"}}, {"-1", "10"}},
        {{"A", std::size_t(1)}, "Size", {{"18446744073709551615", "18446744073709551615"}}, {"18446744073709551616"}},
        {{"A", false}, "Boolean", {{"On", "true"}, {"0", "false"}}, {"2"}},
        {{"A", VoPair<VoString, VoString>("a", "b")}, "StringPair", {{"[x,y]", "[x,y]"}, {"x,y", "[x,y]"}}, {"x"}},
        {{"A", VoFilePath("a")}, "FilePath", {{"c:/b", "c:\\b"}}, {}}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.definition.allowedForm(), row.form);
        for (const auto& [text, value] : row.taken)
            EXPECT_EQ(row.definition.fromText(text).toString().toStdString(), value) << row.form;
        for (const char* const text : row.refused)
            EXPECT_THROW_MSG(row.definition.fromText(text), VoInvalidParameterException,
                             VoString("Invalid value for A: ") + text + ", allowed: " + row.form);
    }
}

TEST(VoGlobalValues, DefinitionsThatCannotBeUsedAreRefused)
{
    const std::pair<VoValueDefinition, const char*> rows[] = {
        {{"", 1}, "Invalid value name: "},
        {{"1st", 1}, "Invalid value name: 1st"},
        {{"a b", 1}, "Invalid value name: a b"},
        {{"Test.Null"}, "Value without a default: Test.Null"},
        {{"Test.Range", 5, "", 0, 4}, "Invalid value for Test.Range: 5 (Integer), allowed: Integer from 0 to 4"},
        {{"Test.Bound", 5, "", 0.5}, "Invalid value for Test.Bound: 0.5 (Double), allowed: Integer"}};
    EXPECT_THROW_MSG(VoGlobalValues::Define({"test.tolerance", 1e-3}), VoInvalidCallException,
                     "Global value already defined: test.tolerance");
    for (const auto& [definition, message] : rows) {
        EXPECT_THROW_MSG(VoGlobalValues::Define(definition), VoInvalidParameterException, message);
    }
}

TEST(VoGlobalValues, AreSetReadAndResetByAnySpellingOfTheirNames)
{
    const Restored restored;
    VoGlobalValues::SetText("TEST.tolerance", "0.25");
    EXPECT_EQ(Tolerance.value(), 0.25);
    EXPECT_TRUE(Tolerance.isSet());
    EXPECT_THROW_MSG(Tolerance.set(2.0), VoInvalidParameterException,
                     "Invalid value for Test.Tolerance: 2 (Double), allowed: Double from 1e-12 to 1");
    EXPECT_EQ(Tolerance.value(), 0.25);
    Tolerance.reset();
    EXPECT_FALSE(Tolerance.isSet());
    EXPECT_THROW_MSG(VoGlobalValues::Value("Test.Nobody"), VoNotFoundException, "Item not found: Test.Nobody");
    EXPECT_THROW_MSG(VoGlobalValue<int>::Named("Test.Tolerance"), VoInvalidCastException,
                     "Invalid cast from Double to Integer");
}

TEST(VoGlobalValues, RestoreGivesBackWhatWasBeforeOrChangesNothingAndLeavesReadOnlyOnesAlone)
{
    const Restored restored;
    const VoGlobalValue<int> runs({"Test.Runs", 0, "", {}, {}, {}, true});
    EXPECT_THROW_MSG(runs.set(1), VoInvalidUseException, "Global value is read-only: Test.Runs");
    runs.publish(1);
    const VoGlobalValue<VoString> title({"Test.Title", "none"});
    Tolerance.set(0.5);
    const VoProperties before = VoGlobalValues::Changed();
    Tolerance.set(0.75);
    title.set("NONE"); // another text, although it compares equal
    EXPECT_TRUE(title.isSet());
    EXPECT_THROW(VoGlobalValues::Restore({{"Test.Title", "x"}, {"Test.Tolerance", 7.0}}), VoInvalidParameterException);
    EXPECT_EQ(title.value().toStdString(), "NONE");
    VoGlobalValues::Restore(before);
    EXPECT_EQ(Tolerance.value(), 0.5);
    EXPECT_EQ(title.value().toStdString(), "none");
    EXPECT_EQ(runs.value(), 1);
}

TEST(VoGlobalValues, ChangesAreToldInTheirOrderAlsoThoseMadeWhileTelling)
{
    const Restored restored;
    const vo::test::LogCapture log;
    const VoGlobalValue<int> step({"Test.Step", 0});
    std::string told;
    const VoReceiver failing = step.connect([](int) { throw VoInvalidUseException("callback's fault"); });
    const VoReceiver all = VoGlobalValues::Connect([&](const VoValueChange& change) {
        told += (change.name + " " + change.oldValue.toString() + "-" + change.newValue.toString() + ";").toStdString();
        if (change.name == "Test.Step" && step.value() < 3)
            step.set(step.value() + 1);
    });
    step.set(1);
    step.set(3); // no change
    Tolerance.set(0.5);
    EXPECT_EQ(told, "Test.Step 0-1;Test.Step 1-2;Test.Step 2-3;Test.Tolerance 0.001-0.5;");
    EXPECT_EQ(log.texts("application").size(), 3u);
    EXPECT_EQ(log.texts("application")[0], "Exception in callback for Test.Step: callback's fault");
}

TEST(VoGlobalValues, ThreadsSetAndReadAndEveryChangeIsToldOnceInOrder)
{
    const Restored restored;
    const VoGlobalValue<int> counter({"Test.Counter", 0});
    std::vector<VoValueChange> changes; // told by one thread at a time
    {
        const VoReceiver receiver =
            VoGlobalValues::Connect("Test.Counter", [&](const VoValueChange& change) { changes.push_back(change); });
        const vo::test::Threads threads(4, [&](int t) {
            for (int i = 0; i < 200; ++i)
                counter.set((t + 1) * 1000 + i);
        });
    }
    ASSERT_EQ(changes.size(), 800u);
    for (std::size_t i = 1; i < changes.size(); ++i)
        ASSERT_EQ(changes[i].oldValue, changes[i - 1].newValue) << i;
    EXPECT_EQ(changes.back().newValue, VoVariant(counter.value()));
}
