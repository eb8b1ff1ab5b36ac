#include <Shell/VoShell.h>

#include <Application/VoGlobalValues.h>
#include <Application/VoValueDefinition.h>
#include <Core/VoProperties.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Shell/VoScriptException.h>
#include <Shell/detail/ShellLine.h>

#include <ScratchFolder.h>
#include <VoTestSupport.h>

namespace {

class Shell : public testing::Test
{
protected:
    Shell()
    {
        VoGlobalValues::Define({"Shell.Tolerance", 1e-3, "of tests", 0.0, 1.0});
        VoGlobalValues::Define({"Shell.Title", "one two", "of tests"});
        VoGlobalValues::Restore({});
        functions.add({"words",
                       "",
                       {{"first", VoVariant::Null, ""},
                        {"key", VoVariant::Integer, "", VoShellValue::Form::Single, VoShellValue(0)},
                        {"rest", VoVariant::String, "", VoShellValue::Form::List, VoShellValue(VoDeque<VoVariant>())}},
                       [](const VoFunctionCall& call) {
                           const VoShellValue& first = call.argument("first");
                           VoString text = first.form() == VoShellValue::Form::Single
                                               ? VoVariant::TypeString(first.variant().type())
                                               : VoShellValue::FormText(first.form());
                           text += " " + first.toText() + "|" + call.argument("key").toText();
                           for (const VoVariant& word : call.list("rest"))
                               text += "|" + word.asString();
                           return VoShellValue(text);
                       }});
        functions.add({"path", "", {{"path", VoVariant::FilePath, ""}}, [](const VoFunctionCall& call) {
                           return call.argument("path");
                       }});
        functions.add({"print", "", {{"text", VoVariant::String, ""}}, [](const VoFunctionCall& call) {
                           call.print(call.value("text").asString());
                           return VoShellValue();
                       }});
        functions.add({"stop", "", {}, [](const VoFunctionCall& call) {
                           call.stop().stop();
                           call.stop().throwIfStopped();
                           return VoShellValue();
                       }});
    }

    std::string text(const VoString& line) { return shell.run(line).toText().toStdString(); }

    VoFunctionRegistry functions;
    std::string out;
    VoShell shell{[this](const VoString& line) { out += line.toStdString() + "\n"; }, functions};
};

TEST_F(Shell, LinesBecomeCalls)
{
    const struct
    {
        const char* line;
        std::string text;
    } rows[] = {
        {"words 5", "Integer 5|0"},
        {"WORDS 5.5 # a comment", "Double 5.5|0"},
        {"words '5'", "String 5|0"},
        {"words a#b", "String a#b|0"},
        {"words \"a \"\"b\"\"  c\"", "String a \"b\"  c|0"},
        {"words 'as $it is'", "String as $it is|0"},
        {"words C:\\new\\a", "String C:\\new\\a|0"},
        {"words \"\"", "String |0"},
        {"words x 3 a 'b c' d", "String x|3|a|b c|d"},
        {"words rest=[a, b c] first=x", "String x|0|a|b|c"},
        {"words key=\"4\" y", "String y|4"},
        {"words a=b", "String a=b|0"},
        {"words [1 2.5, on]", "List [1, 2.5, on]|0"},
        {"words ['1' '2']", "List [1, 2]|0"},
        {"words []", "List []|0"},
        {"words $Shell.Tolerance", "Double 0.001|0"},
        {"words $shell.title", "String one two|0"},
        {"words \"<$Shell.Title>\" 1 ${Shell.Title}x $Shell.Title. $$5 5$",
         "String <one two>|1|one twox|one two.|$5|5$"},
        {"words \xc3\xa4", "String \xc3\xa4|0"},
        {"path a/b", std::filesystem::path("a/b").make_preferred().string()},
        {"", ""},
        {"  # nothing", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(row.line), row.text) << row.line;
    text("words 5");
    EXPECT_EQ(text("words $_"), "String Integer 5|0|0");
}

TEST_F(Shell, EveryTextCanBeWrittenAsAWord)
{
    std::mt19937 random(20261122);
    const std::string bytes = "ab $_\"'[],=#\\{}\t\n\xc3\xa4";
    for (int i = 0; i < 2000; ++i) {
        std::string word;
        for (int length = std::uniform_int_distribution<int>(0, 8)(random); length > 0; --length)
            word += bytes[std::uniform_int_distribution<std::size_t>(0, bytes.size() - 1)(random)];
        ASSERT_EQ(text("print " + vo::detail::QuotedShellWord(VoString(word))), "");
        ASSERT_EQ(out, word + "\n");
        out.clear();
    }
}

TEST_F(Shell, WhatIsWrongIsToldWithItsColumn)
{
    const struct
    {
        const char* line;
        const char* message;
    } rows[] = {
        {"words x abc", "Invalid argument \"key\" of words: \"abc\", wanted Integer, at column 9"},
        {"words \xc3\xa4\xc3\xb6 key=abc", "Invalid argument \"key\" of words: \"abc\", wanted Integer, at column 14"},
        {"words x key=1 key=2", "Argument given twice: \"key\" of words, at column 19"},
        {"words 'a", "Quote is not closed, at column 7"},
        {"words \xc3\xa4 [1", "List is not closed, at column 9"},
        {"words ${a", "Value is not closed, at column 7"},
        {"help a b", "Too many arguments for help; usage: help [name]"},
        {"source", "Missing argument for source; usage: source file"},
        {"set Shell.Tolerance 7", "Invalid value for Shell.Tolerance: 7 (Double), allowed: Double from 0 to 1"},
        {"set Shell.Tolerance x", "Invalid value for Shell.Tolerance: x, allowed: Double from 0 to 1"},
    };
    for (const auto& row : rows)
        EXPECT_THROW_MSG(shell.run(row.line), VoInvalidParameterException, row.message) << row.line;
    EXPECT_THROW_MSG(shell.run("words $nothing"), VoNotFoundException, "Item not found: $nothing, at column 7");
    EXPECT_THROW_MSG(shell.run("wrds 1"), VoUndefinedFunctionException,
                     "Undefined function: wrds; did you mean words?");
    EXPECT_THROW_MSG(shell.run("sorce x"), VoUndefinedFunctionException,
                     "Undefined function: sorce; did you mean source?");
    EXPECT_THROW_MSG(shell.run(VoString('x', 100000)), VoInvalidParameterException, "Line is too long");
}

TEST_F(Shell, SetsAndShowsGlobalValues)
{
    shell.run("set Shell.tolerance 0.5");
    EXPECT_EQ(VoGlobalValues::Value("Shell.Tolerance").asDouble(), 0.5);
    shell.run("set Shell.Title $Shell.Tolerance ");
    shell.run("set Shell.Title");
    EXPECT_EQ(out, "Shell.Title = 0.5  # String; of tests\n");
    shell.run("reset Shell.Title");
    EXPECT_FALSE(VoGlobalValues::IsSet("Shell.Title"));
    shell.run("help words");
    EXPECT_NE(out.find("words first [key=0] [rest...]"), std::string::npos);
}

TEST_F(Shell, ScriptsSourceScriptsBesideThem)
{
    const vo::test::ScratchFolder scratch;
    std::filesystem::create_directory(scratch.native("sub"));
    scratch.write("main.vo", "\xef\xbb\xbfprint one\r\nsource sub/more.vo\nwords 3\n");
    scratch.write("sub/more.vo", "print two # $_folder\nsource last.vo");
    scratch.write("sub/last.vo", "print $_folder/x\n\nwords a b\n");
    scratch.write("endless.vo", "source endless.vo\n");
    const std::string last = scratch.native("sub/last.vo").string();
    EXPECT_THROW_MSG(shell.runScript(scratch.path("main.vo")), VoScriptException,
                     VoString(scratch.native("main.vo").string() +
                              ", line 2: " + scratch.native("sub/more.vo").string() + ", line 2: " + last +
                              ", line 3: Invalid argument \"key\" of words: \"b\", wanted Integer, at column 9"));
    EXPECT_EQ(out, "one\ntwo\n" + scratch.native("sub").string() + "/x\n");
    EXPECT_THROW(shell.runScript(scratch.path("endless.vo")), VoScriptException);
    EXPECT_THROW_MSG(shell.runScript(scratch.path("none.vo")), VoFileNotFoundException,
                     "File not found: " + scratch.path("none.vo").path());
    scratch.write("sub/last.vo", "stop\nprint never");
    EXPECT_THROW_MSG(shell.runScript(scratch.path("main.vo")), VoUserCancelledException, "User cancelled");
    EXPECT_EQ(out.find("never"), std::string::npos);
}

TEST_F(Shell, RelativePathsAreOfItsDirectory)
{
    const vo::test::ScratchFolder scratch;
    scratch.write("a.txt", "x");
    scratch.write("a.vo", "path a.txt\n");
    shell.setDirectory(VoDirectoryPath::FromText(scratch.path("").path() + "\\"));
    EXPECT_EQ(text("path a.txt"), scratch.native("a.txt").string());
    EXPECT_EQ(text("path /a.txt"), std::filesystem::path("/a.txt").make_preferred().string());
    std::string results;
    shell.setOnResult([&](const VoShellValue& value) { results += value.toText().toStdString(); });
    shell.run("source a.vo"); // within a line: shown to nobody
    shell.runText("path ../x\n", "text");
    EXPECT_EQ(results, (scratch.native().parent_path() / "x").string());
}

TEST_F(Shell, CompletesWhatIsTyped)
{
    const vo::test::ScratchFolder scratch;
    scratch.write("alpha.csv", "");
    scratch.write("b c.csv", "");
    std::filesystem::create_directory(scratch.native("keys"));
    shell.setDirectory(VoDirectoryPath::FromText(scratch.path("").path() + "\\"));
    const struct
    {
        const char* typed;
        std::size_t start;
        const char* words;
    } rows[] = {
        {"wo", 0, "words "},
        {"  s", 2, "set source stop "},
        {"help pa", 5, "path "},
        {"words k", 6, "key= keys/ "},
        {"words x key=", 12, "\"b c.csv\" alpha.csv keys/ "},
        {"path \"al", 6, "alpha.csv "},
        {"path b", 5, "\"b c.csv\" "},
        {"path \"b", 6, "b c.csv "},
        {"path a/$Shell.Ti", 7, "$Shell.Title "},
        {"set shell.to", 4, "Shell.Tolerance "},
        {"path nowhere/x", 5, ""},
    };
    for (const auto& row : rows) {
        const VoShell::Completions completions = shell.completions(row.typed, 1000);
        std::string words;
        for (const VoString& word : completions.words)
            words += word.toStdString() + " ";
        std::replace(words.begin(), words.end(), '\\', '/'); // as the system separates names
        EXPECT_EQ(words, row.words) << row.typed;
        EXPECT_EQ(completions.start, row.start) << row.typed;
    }
}

TEST(VoAbstractShell, IsTheHostsOrTheEmbeddedOne)
{
    class HostShell final : public VoAbstractShell
    {
    public:
        VoShellValue run(const VoString& line, const VoStopFlag&) override { return "host: " + line; }
    };
    VoAbstractShell::SetHost(std::make_shared<HostShell>());
    EXPECT_EQ(VoAbstractShell::Current()->run("x", {}).toText().toStdString(), "host: x");
    VoAbstractShell::SetHost(nullptr);
    EXPECT_TRUE(VoAbstractShell::Current()->run("file.exists /", {}) == VoShellValue(true));
}

} // namespace
