#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoPathException.h>
#include <FileSystem/VoUrl.h>
#include <RandomBytes.h>
#include <VoTestSupport.h>

#include <unordered_set>

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

} // namespace

TEST(PathText, IsNormalisedAsTheSlowRuleSaysAndOnlyOnce)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = vo::test::RandomBytes(random, random() % 15, "\\/\\/ab:. \t\n");
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

TEST(PathText, ParentsAreThoseOfFilesAndDirectoriesAlike)
{
    const std::pair<const char*, const char*> rows[] = {{"C:\\a\\x", "C:\\a\\"},
                                                        {"C:\\a", "C:\\"},
                                                        {"a", ""},
                                                        {"C:x", ""},
                                                        {"\\x", "\\"},
                                                        {"\\\\srv\\x", "\\\\srv\\"},
                                                        {"C:\\a\\b\\", "C:\\a\\"},
                                                        {"C:\\", ""},
                                                        {"a\\b\\", "a\\"},
                                                        {"a\\", ""},
                                                        {"\\a\\", "\\"},
                                                        {"\\", ""},
                                                        {"\\\\srv\\share\\", "\\\\srv\\"},
                                                        {"\\\\srv\\", ""},
                                                        {"", ""},
                                                        {"a:b\\c\\", "a:b\\"}};
    for (const auto& [text, parent] : rows) {
        const VoFilePath file(text);
        EXPECT_EQ(file.parent().path().toStdString(), parent) << text;
        EXPECT_EQ(file.parentPath().toString().toStdString(), parent) << text;
        if (file.isDirectory() || file.isNull()) {
            EXPECT_EQ(VoDirectoryPath(text).parent().path().toStdString(), parent) << text;
        }
    }
}

template <typename Path>
class PathComparison : public testing::Test
{
};

using PathClasses = testing::Types<VoFilePath, VoDirectoryPath, VoUrl>;
TYPED_TEST_SUITE(PathComparison, PathClasses);

TYPED_TEST(PathComparison, IsWithoutRegardToCaseWithTextsOnEitherSide)
{
    const TypeParam a("a\\"), upper("A\\"), b("B\\");
    EXPECT_TRUE(a == upper && a == VoString("A\\") && VoString("A\\") == a && a != b && a != VoString("A"));
    EXPECT_TRUE(a < b && b > a && upper <= a && upper >= a && !(b < a) && !(a > b));
    EXPECT_EQ((std::unordered_set<TypeParam>{a, upper, b}).size(), 2U);
    std::ostringstream stream;
    stream << upper;
    EXPECT_EQ(stream.str(), "A\\");
    EXPECT_EQ(TypeParam::Serialize(TypeParam::Deserialize("A\\")).toStdString(), "A\\");
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
    const std::vector<std::string> names = {"..", "a", "b", "..x", ".", "x..", "..."};
    const std::vector<std::string> roots = {"R:\\", "", "\\", "\\\\srv\\"};
    for (int i = 0; i < 20000; ++i) {
        const std::string& root = roots[static_cast<std::size_t>(i) % 4];
        std::string text = root;
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
            EXPECT_THROW_MSG(path.resolve(), VoPathException, "Unable to resolve as relative path is invalid") << text;
            EXPECT_EQ(path.path().toStdString(), text) << "unchanged after the failure";
            continue;
        }
        std::string expected = root;
        for (const std::string& name : stack)
            expected += name + "\\";
        path.resolve();
        EXPECT_EQ(path.path().toStdString(), expected) << text;
    }
}
