#include <Shell/VoFunctionRegistry.h>

#include <FileSystem/VoFilePath.h>
#include <Threading/VoReceiver.h>

#include <VoTestSupport.h>

using Form = VoShellValue::Form;

namespace {

VoFunction Named(const VoString& name)
{
    return {name, "", {}, [name](const VoFunctionCall&) { return VoShellValue(name); }};
}

// A function with a parameter of every sort, that gives back what it was called with.
VoFunction Everything()
{
    return {"all",
            "Gives back what it gets.",
            {{"real", VoVariant::Double, ""},
             {"path", VoVariant::FilePath, "", Form::Single, VoShellValue(VoFilePath("none"))},
             {"count", VoVariant::Size, "", Form::Single, VoShellValue(std::size_t(7))},
             {"pair", VoVariant::StringPair, "", Form::Single, VoShellValue()},
             {"rest", VoVariant::Integer, "", Form::List, VoShellValue(VoDeque<VoVariant>())}},
            [](const VoFunctionCall& call) {
                VoString text;
                for (const char* name : {"real", "path", "count", "pair", "rest"})
                    text += call.argument(name).toText() + ";";
                return text;
            }};
}

TEST(VoFunctionRegistry, ArgumentsBecomeWhatParametersWantWhereNothingIsLost)
{
    VoFunctionRegistry registry;
    registry.add(Everything());
    const auto called = [&](const VoDeque<VoShellValue>& arguments) {
        return registry.call("ALL", arguments).variant().asString().toStdString();
    };
    const VoDeque<VoVariant> words = {"a", "b"};
    EXPECT_EQ(called({1}), "1;none;7;;[];");
    EXPECT_EQ(called({1, "x", 3, words, 4, 5}), "1;x;3;[a,b];[4, 5];");
    EXPECT_EQ(called({1.5, VoFilePath("y"), std::size_t(3), words, VoDeque<VoVariant>{4, std::size_t(6)}}),
              "1.5;y;3;[a,b];[4, 6];");

    const VoString usage = "; usage: all real [path=none] [count=7] [pair] [rest...]";
    const struct
    {
        VoDeque<VoShellValue> arguments;
        VoString message;
    } refused[] = {
        {{}, "Missing argument \"real\" of all, wanted Double" + usage},
        {{"1"}, "Invalid argument \"real\" of all: \"1\" (String), wanted Double"},
        {{1, true}, "Invalid argument \"path\" of all: \"true\" (Boolean), wanted FilePath"},
        {{1, "x", -3}, "Invalid argument \"count\" of all: \"-3\" (Integer), wanted Size"},
        {{1, "x", 3, VoDeque<VoVariant>{"a"}}, "Invalid argument \"pair\" of all: \"[a]\" (list), wanted StringPair"},
        {{1, "x", 3, words, 1, std::size_t(1) << 40},
         "Invalid argument \"rest\" of all: \"1099511627776\" (Size), wanted list of Integer"},
        {{VoVariantTable(1, 1)}, "Invalid argument \"real\" of all: a table, wanted Double"},
    };
    for (const auto& row : refused)
        EXPECT_THROW_MSG(registry.call("all", row.arguments), VoInvalidParameterException, row.message);
    registry.add(Named("none"));
    EXPECT_THROW_MSG(registry.call("none", {1}), VoInvalidParameterException,
                     "Too many arguments for none: \"1\" (Integer); usage: none");
    VoStopFlag stop;
    stop.stop();
    EXPECT_THROW_MSG(registry.call("none", {}, stop), VoUserCancelledException, "User cancelled");
}

TEST(VoFunctionRegistry, AnUnknownNameIsToldWithTheNearestOnes)
{
    VoFunctionRegistry registry;
    for (const char* name : {"table.load", "table.save", "Table.Rows", "echo", "file.copy"})
        registry.add(Named(name));
    const struct
    {
        const char* name;
        const char* message;
    } rows[] = {
        {"tabel.load", "Undefined function: tabel.load; did you mean table.load?"},
        {"Table.", "Undefined function: Table.; did you mean table.load or table.rows or table.save?"},
        {"ECO", "Undefined function: ECO; did you mean echo?"},
        {"file", "Undefined function: file; did you mean file.copy?"},
        {"quit", "Undefined function: quit"},
        {"", "Undefined function: "},
        {"e\ncho", "Undefined function: e\\ncho; did you mean echo?"},
    };
    for (const auto& row : rows)
        EXPECT_THROW_MSG(registry.call(row.name, {}), VoUndefinedFunctionException, row.message);
}

TEST(VoFunctionRegistry, RefusesWhatCannotBeCalled)
{
    VoFunctionRegistry registry;
    registry.add(Named("once"));
    EXPECT_THROW_MSG(registry.add(Named("ONCE")), VoInvalidCallException, "Function already registered: ONCE");
    EXPECT_THROW_MSG(registry.add(Named("no way")), VoInvalidParameterException, "Invalid function name: no way");
    const VoFunctionParameter needed{"a", VoVariant::Integer, ""};
    const VoFunctionParameter optional{"b", VoVariant::Integer, "", Form::Single, VoShellValue(1)};
    const VoFunctionParameter wrong{"c", VoVariant::Integer, "", Form::Single, VoShellValue("1")};
    const struct
    {
        VoDeque<VoFunctionParameter> parameters;
        const char* why;
    } rows[] = {{{needed, needed}, "two parameters \"a\""},
                {{optional, needed}, "parameter \"a\" needs a default"},
                {{wrong}, "the default of \"c\" is no Integer"},
                {{{"1", VoVariant::Integer, ""}}, "parameter \"1\" has no usable name"}};
    for (const auto& row : rows) {
        VoFunction function = Named("f");
        function.parameters = row.parameters;
        EXPECT_THROW_MSG(registry.add(function), VoInvalidParameterException,
                         VoString("Invalid function f: ") + row.why);
    }
    registry.add({"declared", "", {}, nullptr});
    EXPECT_THROW_MSG(registry.call("declared", {}), VoNotImplementedException, "Not implemented: declared");
}

TEST(VoFunctionRegistry, AsksTheHostAndTellsItOfChanges)
{
    const auto host = std::make_shared<VoFunctionRegistry>();
    host->add(Named("host.draw"));
    host->add(Named("Both"));
    VoFunctionRegistry registry;
    std::string heard;
    const VoReceiver receiver = registry.connect([&](const VoFunctionRegistry::Change& change) {
        heard += (change.isAdded ? "+" : "-") + change.name.toStdString();
    });
    registry.add(Named("both"));
    registry.setHost(host);
    EXPECT_TRUE(registry.call("HOST.draw", {}) == VoShellValue("host.draw"));
    EXPECT_EQ(registry.call("Both", {}).variant().asString().toStdString(), "both");
    const auto kept = registry.find("both");
    EXPECT_TRUE(registry.remove("BOTH"));
    EXPECT_FALSE(registry.remove("both"));
    EXPECT_EQ(kept->call({}).variant().asString().toStdString(), "both");
    EXPECT_EQ(registry.call("Both", {}).variant().asString().toStdString(), "Both");
    EXPECT_EQ(registry.names().size(), 2u);
    EXPECT_EQ(heard, "+both-both");
}

TEST(VoFunctionRegistry, ServesManyThreads)
{
    VoFunctionRegistry registry;
    std::atomic<int> calls{0};
    registry.add({"count", "", {}, [&](const VoFunctionCall&) { return VoShellValue(++calls); }});
    vo::test::Threads(4, [&](int t) {
        const VoString own = "f" + VoString(t);
        for (int i = 0; i < 200; ++i) {
            registry.add(Named(own));
            registry.call("count", {});
            EXPECT_TRUE(registry.find(own) != nullptr);
            EXPECT_GE(registry.names().size(), 2u);
            EXPECT_TRUE(registry.remove(own));
        }
    });
    EXPECT_EQ(calls, 800);
}

} // namespace
