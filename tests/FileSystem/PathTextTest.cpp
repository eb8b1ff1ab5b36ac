#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoPathException.h>
#include <VoTestSupport.h>

#include <random>
#include <string>
#include <vector>

// What all kinds of paths have in common: normalisation, roots, and ".." pieces.

namespace {

std::string Normalised(const std::string& text)
{
    return VoFilePath(VoString(text)).path().toStdString();
}

// The rule in its plainest form: rewrite until nothing changes.
std::string NormalisedSlowly(std::string text)
{
    const std::string blanks = " \t\n\v\f\r";
    while (!text.empty() && blanks.find(text.front()) != std::string::npos)
        text.erase(0, 1);
    while (!text.empty() && blanks.find(text.back()) != std::string::npos)
        text.pop_back();
    for (char& byte : text)
        if (byte == '/')
            byte = '\\';
    for (std::size_t i; (i = text.find("\\\\", 1)) != std::string::npos;)
        text.erase(i, 1);
    return text;
}

std::string RandomText(std::mt19937& random, const std::string& alphabet)
{
    std::string text(std::uniform_int_distribution<std::size_t>(0, 14)(random), '\0');
    for (char& byte : text)
        byte = alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(random)];
    return text;
}

} // namespace

TEST(PathText, IsNormalisedWhenAPathIsMade)
{
    const std::pair<const char*, const char*> rows[] = {
        {" C:/Temp//x/ ", "C:\\Temp\\x\\"},
        {"\\\\srv\\share\\", "\\\\srv\\share\\"},
        {"//srv//share", "\\\\srv\\share"},
        {"\\\\\\\\x", "\\\\x"},
        {"/tmp/x", "\\tmp\\x"},
        {"///tmp/x", "\\\\tmp\\x"},
        {"a\\/\\/b", "a\\b"},
        {"/", "\\"},
        {"", ""},
        {" \t\n ", ""},
        {"\t a b \n", "a b"},
        {"http://h/x", "http:\\h\\x"},
    };
    for (const auto& [text, normalised] : rows)
        EXPECT_EQ(Normalised(text), normalised) << '"' << text << '"';
}

TEST(PathText, IsNormalisedAsTheSlowRuleSaysAndOnlyOnce)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = RandomText(random, "\\/\\/ab:. ");
        ASSERT_EQ(Normalised(text), NormalisedSlowly(text)) << '"' << text << '"';
        ASSERT_EQ(Normalised(Normalised(text)), Normalised(Normalised(text)));
    }
}

TEST(PathText, ALongRunOfSeparatorsTakesNoLongTime)
{
    EXPECT_EQ(Normalised("a" + std::string(4000000, '/') + "b"), "a\\b");
}

TEST(PathText, RootIsTheServerOrEverythingToTheFirstColon)
{
    struct
    {
        const char* text;
        const char* root;
        bool rooted;
    } const rows[] = {
        {"C:\\x", "C:", true},
        {"C:x", "C:", true},
        {":", ":", true},
        {"\\\\srv\\share", "\\\\srv", true},
        {"\\\\srv", "\\\\srv", true},
        {"\\\\?\\C:\\x", "\\\\?", true},
        {"\\tmp\\x", "", true},
        {"\\", "", true},
        {"a\\b", "", false},
        {"", "", false},
        {"\\tmp\\a:b", "\\tmp\\a:", true},
    };
    for (const auto& row : rows) {
        const VoFilePath path(row.text);
        EXPECT_EQ(path.rootName().toString().toStdString(), row.root) << row.text;
        EXPECT_EQ(path.isAbsolute(), *row.root != '\0') << row.text;
        EXPECT_EQ(path.isRelative(), *row.root == '\0') << row.text;
        EXPECT_EQ(path.isRooted(), row.rooted) << row.text;
    }
}

TEST(PathText, ResolvingRemovesEachClimbWithThePieceBeforeIt)
{
    const std::pair<const char*, const char*> rows[] = {
        {"C:\\a\\..\\b\\", "C:\\b\\"},
        {"C:\\a\\b\\..\\..\\", "C:\\"},
        {"a\\..\\", ""},
        {"\\a\\..\\", "\\"},
        {"\\\\srv\\share\\..\\x\\", "\\\\srv\\x\\"},
        {"a\\.\\..\\b\\", "a\\b\\"},
        {"x..\\y\\", "x..\\y\\"},
        {"...\\", "...\\"},
        {"\\tmp\\a:b\\..\\c\\", "\\tmp\\c\\"},
        {"a\\b\\", "a\\b\\"},
    };
    for (const auto& [text, resolved] : rows) {
        VoDirectoryPath path(text);
        path.resolve();
        EXPECT_EQ(path.path().toStdString(), resolved) << text;
    }
}

TEST(PathText, NothingClimbsOverARoot)
{
    for (const char* text :
         {"..\\x\\", "C:\\..\\x\\", "\\..\\x\\", "\\\\srv\\..\\x\\", "a\\..\\..\\", "C:x\\..\\y\\"}) {
        VoDirectoryPath path(text);
        EXPECT_THROW_MSG(path.resolve(), VoPathException, "Unable to resolve as relative path is invalid") << text;
        EXPECT_EQ(path, VoString(text)) << "unchanged after the failure";
    }
}

TEST(PathText, AClimbWithoutSeparatorIsLeftAloneUnlessAnotherIsResolved)
{
    const VoDirectoryPath base("C:\\d\\");
    EXPECT_EQ(base.file("a\\..").path().toStdString(), "C:\\d\\a\\..");
    EXPECT_EQ(base.file("a\\..\\b").path().toStdString(), "C:\\d\\b");
    EXPECT_EQ(base.file("a\\..\\b\\..").path().toStdString(), "C:\\d");
}

// A stack of names is what a path stands for.
TEST(PathText, ResolvingAgreesWithAStackOfNames)
{
    std::mt19937 random(2);
    const std::vector<std::string> names = {"..", "a", "b", "..x", "."};
    for (int i = 0; i < 5000; ++i) {
        std::string text = "R:\\";
        std::vector<std::string> stack;
        bool possible = true;
        for (int n = std::uniform_int_distribution<int>(0, 7)(random); n > 0; --n) {
            const std::string& name = names[std::uniform_int_distribution<std::size_t>(0, names.size() - 1)(random)];
            text += name + "\\";
            if (name != "..")
                stack.push_back(name);
            else if (stack.empty())
                possible = false;
            else
                stack.pop_back();
        }
        VoDirectoryPath path{VoString(text)};
        if (!possible) {
            EXPECT_THROW(path.resolve(), VoPathException) << text;
            continue;
        }
        std::string expected = "R:\\";
        for (const std::string& name : stack)
            expected += name + "\\";
        path.resolve();
        EXPECT_EQ(path.path().toStdString(), expected) << text;
    }
}
