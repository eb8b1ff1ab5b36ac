#include <Application/VoGlobalValue.h>

#include <Core/VoProperties.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

#include <cmath>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

const VoGlobalValue<double> Tolerance({"Test.Tolerance", 1e-3, "Relative error", 1e-12, 1.0});

// Puts every global value back when a test ends.
struct Restored
{
    const VoProperties before = VoGlobalValues::Changed();
    ~Restored() { VoGlobalValues::Restore(before); }
};

std::vector<std::string> Told(std::vector<VoValueChange> changes)
{
    std::vector<std::string> texts;
    for (const VoValueChange& change : changes)
        texts.push_back(
            (change.name + ": " + change.oldValue.toString() + " -> " + change.newValue.toString()).toStdString());
    return texts;
}

} // namespace

TEST(VoGlobalValues, TextsBecomeValuesOfTheDefinedKindOrAreRefusedWithWhatIsAllowed)
{
    const double nan = std::nan("");
    const VoValueDefinition number{"Number", 0.5, "", 0.0, 1.0};
    const VoValueDefinition colour{"Colour", "red", "", {}, {}, {"red", "green"}};
    const VoValueDefinition count{"Count", 3, "", 1};
    const VoValueDefinition size{"Size", std::size_t(1), "", {}, std::size_t(9)};
    const VoValueDefinition big{"Big", std::size_t(1)};
    const VoValueDefinition flag{"Flag", false};
    const VoValueDefinition pair{"Pair", VoPair<VoString, VoString>("a", "b")};
    const VoValueDefinition path{"Path", VoFilePath("a")};
    const struct
    {
        const VoValueDefinition& definition;
        const char* text;
        VoVariant value; // Null: refused
    } rows[] = {{number, "0.25", 0.25},
                {number, " 1e-3 ", 1e-3},
                {number, "1,5", {}},
                {number, "2", {}},
                {number, "nan", {}},
                {number, "", {}},
                {colour, "GREEN", "GREEN"},
                {colour, "blue", {}},
                {count, "7", 7},
                {count, "0", {}},
                {count, "2147483648", {}},
                {count, "7 apples", {}},
                {size, "9", std::size_t(9)},
                {size, "-1", {}},
                {size, "10", {}},
                {big, "18446744073709551615", std::numeric_limits<std::size_t>::max()},
                {big, "18446744073709551616", {}},
                {flag, "On", true},
                {flag, "0", false},
                {flag, "2", {}},
                {pair, "[x,y]", VoPair<VoString, VoString>("x", "y")},
                {pair, "x", {}},
                {path, "c:/b", VoFilePath("c:\\b")}};
    for (const auto& row : rows) {
        SCOPED_TRACE((row.definition.name + " " + row.text).toStdString());
        if (row.value.isNull())
            EXPECT_THROW_MSG(row.definition.fromText(row.text), VoInvalidParameterException,
                             "Invalid value for " + row.definition.name + ": " + row.text +
                                 ", allowed: " + row.definition.allowedForm());
        else
            EXPECT_EQ(row.definition.fromText(row.text), row.value);
    }
    EXPECT_FALSE(number.isAllowed(nan));
    EXPECT_EQ(number.allowedForm(), "Double from 0 to 1");
    EXPECT_EQ(count.allowedForm(), "Integer of at least 1");
    EXPECT_EQ(size.allowedForm(), "Size up to 9");
    EXPECT_EQ(colour.allowedForm(), "String, one of: red, green");
}

TEST(VoGlobalValues, DefinitionsThatCannotBeUsedAreRefused)
{
    const std::pair<VoValueDefinition, const char*> rows[] = {
        {{"", 1}, "Invalid value name: "},
        {{"1st", 1}, "Invalid value name: 1st"},
        {{"a b", 1}, "Invalid value name: a b"},
        {{VoString("x") + VoString('y', 100), 1}, nullptr},
        {{"Test.Null"}, "Value without a default: Test.Null"},
        {{"Test.Range", 5, "", 0, 4}, "Invalid value for Test.Range: 5 (Integer), allowed: Integer from 0 to 4"},
        {{"Test.Bound", 5, "", 0.5}, "Invalid value for Test.Bound: 0.5 (Double), allowed: Integer"},
        {{"test.tolerance", 1e-3}, "Global value already defined: test.tolerance"}};
    for (const auto& [definition, message] : rows) {
        try {
            VoGlobalValues::Define(definition);
            ADD_FAILURE() << definition.name.toStdString() << " was taken";
        } catch (const VoException& e) {
            EXPECT_STREQ(message ? message : e.what(), e.what());
        }
    }
    VoGlobalValues::Define({"Test.Tolerance", 1e-3, "Relative error", 1e-12, 1.0}); // the same again
}

TEST(VoGlobalValues, AreSetReadAndResetByAnySpellingOfTheirNames)
{
    const Restored restored;
    EXPECT_EQ(Tolerance.value(), 1e-3);
    VoGlobalValues::SetText("TEST.tolerance", "0.25");
    EXPECT_EQ(Tolerance.value(), 0.25);
    EXPECT_TRUE(Tolerance.isSet());
    EXPECT_THROW_MSG(Tolerance.set(2.0), VoInvalidParameterException,
                     "Invalid value for Test.Tolerance: 2 (Double), allowed: Double from 1e-12 to 1");
    EXPECT_THROW_MSG(VoGlobalValues::Set("Test.Tolerance", 1), VoInvalidParameterException,
                     "Invalid value for Test.Tolerance: 1 (Integer), allowed: Double from 1e-12 to 1");
    EXPECT_EQ(Tolerance.value(), 0.25);
    Tolerance.reset();
    EXPECT_FALSE(Tolerance.isSet());
    EXPECT_THROW_MSG(VoGlobalValues::Value("Test.Nobody"), VoNotFoundException, "Item not found: Test.Nobody");
    EXPECT_THROW_MSG(VoGlobalValue<int>::Named("Test.Tolerance"), VoInvalidCastException,
                     "Invalid cast from Double to Integer");
}

TEST(VoGlobalValues, ReadOnlyOnesChangeOnlyByTheirOwner)
{
    const VoGlobalValue<int> runs({"Test.Runs", 0, "", {}, {}, {}, true});
    EXPECT_THROW_MSG(runs.set(1), VoInvalidUseException, "Global value is read-only: Test.Runs");
    EXPECT_THROW_MSG(VoGlobalValues::SetText("test.runs", "1"), VoInvalidUseException,
                     "Global value is read-only: Test.Runs");
    runs.publish(1);
    VoGlobalValues::Restore({});
    EXPECT_EQ(runs.value(), 1);
    runs.publish(0);
}

TEST(VoGlobalValues, RestoreGivesBackWhatWasBeforeOrChangesNothing)
{
    const Restored restored;
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
}

TEST(VoGlobalValues, ChangesAreToldInTheirOrderAlsoThoseMadeWhileTelling)
{
    const Restored restored;
    const vo::test::LogCapture log;
    const VoGlobalValue<int> step({"Test.Step", 0});
    std::vector<VoValueChange> changes;
    const VoReceiver failing = step.connect([](int) { throw VoInvalidUseException("callback's fault"); });
    const VoReceiver all = VoGlobalValues::Connect([&](const VoValueChange& change) {
        changes.push_back(change);
        if (change.name == "Test.Step" && step.value() < 3)
            step.set(step.value() + 1);
    });
    step.set(1);
    step.set(3); // no change
    Tolerance.set(0.5);
    EXPECT_EQ(Told(changes), (std::vector<std::string>{"Test.Step: 0 -> 1", "Test.Step: 1 -> 2", "Test.Step: 2 -> 3",
                                                       "Test.Tolerance: 0.001 -> 0.5"}));
    EXPECT_EQ(
        log.count(vo::logging::Level::Error, "application", "Exception in callback for Test.Step: callback's fault"),
        3u);
}

TEST(VoGlobalValues, ThreadsSetAndReadAndEveryChangeIsToldOnceInOrder)
{
    const Restored restored;
    const VoGlobalValue<int> counter({"Test.Counter", 0});
    std::mutex mutex;
    std::vector<VoValueChange> changes;
    {
        const VoReceiver receiver = VoGlobalValues::Connect("Test.Counter", [&](const VoValueChange& change) {
            const std::lock_guard lock(mutex);
            changes.push_back(change);
        });
        std::vector<std::thread> threads;
        for (int t = 1; t <= 4; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < 200; ++i) {
                    counter.set(t * 1000 + i);
                    EXPECT_GE(counter.value(), 1000);
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    ASSERT_EQ(changes.size(), 800u);
    for (std::size_t i = 1; i < changes.size(); ++i)
        ASSERT_EQ(changes[i].oldValue, changes[i - 1].newValue) << i;
    EXPECT_EQ(changes.back().newValue, VoVariant(counter.value()));
}
