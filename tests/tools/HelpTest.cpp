#include <VoTestSupport.h>
#include <vo/line/Command.h>
#include <vo/line/Help.h>
#include <vo/line/TextLayout.h>
#include <vo/line/Topics.h>
#include <vo/screen/Console.h>
#include <vo/screen/PlanView.h>

#include <Updater/VoUpdater.h>

#include <QtCore/QDir>
#include <cstdio>

using namespace vo::tool;

namespace {

std::vector<std::string> WordsOf(const VoString& text)
{
    std::istringstream stream(text.toStdString());
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

std::size_t LongestLine(const VoString& text)
{
    std::istringstream stream(text.toStdString());
    std::size_t longest = 0;
    for (std::string line; std::getline(stream, line);)
        longest = std::max(longest, line.size());
    return longest;
}

std::size_t CountLines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace

TEST(Help, FitsEveryTerminalAndLosesNoWord)
{
    for (const std::size_t width : {60, 72, 80, 100, 172}) {
        EXPECT_LE(LongestLine(OverviewText(width)), width);
        EXPECT_EQ(WordsOf(OverviewText(width)), WordsOf(OverviewText(1000)));
        EXPECT_LE(LongestLine(TopicText(nullptr, width)), std::max<std::size_t>(width, 80));
        for (const Command& command : Commands()) {
            EXPECT_LE(LongestLine(CommandText(command, width)), width) << command.name;
            EXPECT_EQ(WordsOf(CommandText(command, width)), WordsOf(CommandText(command, 1000))) << command.name;
        }
    }
}

TEST(Help, WrapsParagraphsAndKeepsBracketsAndLongWordsWhole)
{
    EXPECT_EQ(Wrapped("one two\nthree\n\nfour\n", 30).toStdString(), "one two three\n\nfour\n");
    EXPECT_EQ(Wrapped("aaaaaaaaaaaaaaaaaaaa bbb [--option VALUE] c", 26, "> ", 2).toStdString(),
              "> aaaaaaaaaaaaaaaaaaaa bbb\n  [--option VALUE] c\n");
    EXPECT_EQ(Wrapped("a xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx b", 24).toStdString(),
              "a\nxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\nb\n");
    EXPECT_EQ(Wrapped("", 20, "  left  ", 8).toStdString(), "  left\n");
}

TEST(PlanView, TellsByFoldersWhatDoesNotFit)
{
    vo::updater::InstallationPlan plan;
    const VoDirectoryPath root("\\app\\");
    for (int i = 0; i < 300; ++i) {
        vo::updater::InstallationPlan::File file;
        file.path = root.file("folder" + VoString(i % 30) + "\\file" + VoString(i));
        file.type = vo::updater::FileDifference::Added;
        file.bytes = 1000;
        plan.files.pushBack(file);
    }
    const auto shown = [&](std::optional<std::size_t> rows) {
        Console console(Console::Settings{});
        testing::internal::CaptureStdout();
        ShowPlanSteps(console, plan, root, rows);
        std::fflush(stdout);
        return QDir::fromNativeSeparators(QString::fromStdString(testing::internal::GetCapturedStdout())).toStdString();
    };
    const std::string all = shown(std::nullopt);
    EXPECT_EQ(CountLines(all), 300u);
    EXPECT_LT(all.find("folder1/file1 "), all.find("folder10/file10 ")) << "folder by folder";
    const std::string folders = shown(50);
    EXPECT_EQ(CountLines(folders), 31u);
    EXPECT_NE(folders.find("folder7/  10 to add  10.0 KB\n"), std::string::npos) << folders;
    const std::string few = shown(1);
    EXPECT_EQ(CountLines(few), 6u);
    EXPECT_NE(few.find("... and 26 more folders\n--all lists"), std::string::npos) << few;
}
