#include <Subsystem/VoLogging.h>

#include <Threading/VoReceiver.h>

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <Subsystem/detail/LogFiles.h>

#include <QtCore/QtDebug>
#include <QtCore/QtGlobal>

using vo::logging::Level;
using vo::logging::Logger;
using vo::logging::Record;

namespace {

// 2024-02-29T12:30:00.250Z
const VoTimePoint LeapDay{VoTimeDuration(VoMilliseconds(1709209800250))};

Record RecordOf(const VoString& text, Level level = Level::Information, VoTimePoint time = LeapDay)
{
    return {level, "updater", text, time, std::thread::id()};
}

} // namespace

TEST(VoLogging, RecordsCarryLevelCategoryTextAndThread)
{
    const vo::test::LogCapture log;
    Logger& logger = Logger::Get("test levels");
    logger.diagnostic("1");
    logger.information("2");
    logger.warning("3");
    logger.error("4");
    logger.critical("5");
    const std::vector<Record> records = log.records();
    ASSERT_EQ(records.size(), 5u);
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(records[i].level), i);
        EXPECT_EQ(records[i].text.toStdString(), std::to_string(i + 1));
        EXPECT_EQ(records[i].category.toStdString(), "test levels");
        EXPECT_EQ(records[i].thread, std::this_thread::get_id());
    }
}

TEST(VoLogging, OneLoggerPerCategoryWhateverTheCase)
{
    const Logger& logger = Logger::Get("Test Case");
    EXPECT_EQ(&logger, &Logger::Get("test case"));
    EXPECT_NE(&Logger::Get("test case"), &Logger::Get("test other"));
    EXPECT_EQ(Logger::Get("TEST CASE").category().toStdString(), "Test Case");
}

TEST(VoLogging, RecordsBelowTheLevelOfTheirLoggerAreDropped)
{
    const vo::test::LogCapture log;
    vo::logging::SetLevel("test level", Level::Warning);
    Logger::Get("test level").information("dropped");
    Logger::Get("test level").warning("kept");
    vo::logging::SetLevel("test level", Level::Diagnostic);
    Logger::Get("test level").diagnostic("kept too");
    EXPECT_EQ(log.texts("test level"), (std::vector<std::string>{"kept", "kept too"}));
}

TEST(VoLogging, IsDisabledWhereNoSinkListens)
{
    Logger& logger = Logger::Get("test sinks");
    EXPECT_FALSE(logger.isEnabled(Level::Critical));
    {
        const VoReceiver warnings = vo::logging::AddSink([](const Record&) {}, Level::Warning);
        EXPECT_TRUE(logger.isEnabled(Level::Warning));
        EXPECT_FALSE(logger.isEnabled(Level::Information));
        const VoReceiver all = vo::logging::AddSink([](const Record&) {});
        EXPECT_TRUE(logger.isEnabled(Level::Diagnostic));
    }
    EXPECT_FALSE(logger.isEnabled(Level::Critical));
    vo::logging::EnableStandardError();
    EXPECT_TRUE(logger.isEnabled(Level::Warning));
    EXPECT_FALSE(logger.isEnabled(Level::Information));
    vo::logging::DisableStandardError();
    EXPECT_THROW_MSG(vo::logging::AddSink(nullptr), VoInvalidParameterException, "Invalid callback");
}

TEST(VoLogging, ASinkMayLogThrowAndRemoveItself)
{
    const vo::test::LogCapture log;
    int calls = 0;
    VoReceiver receiver;
    receiver = vo::logging::AddSink([&](const Record& record) {
        ++calls;
        Logger::Get("test nested").error("dropped: " + record.text);
        receiver = VoReceiver();
        throw VoInvalidUseException("swallowed");
    });
    Logger::Get("test sink").information("first");
    Logger::Get("test sink").information("second");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(log.records().size(), 2u);
    EXPECT_TRUE(log.texts("test nested").empty());
}

TEST(VoLogging, WritesOneLineARecordToStandardError)
{
    testing::internal::CaptureStderr();
    Logger::Get("test stderr").critical("not shown: nobody asked for it");
    vo::logging::EnableStandardError();
    Logger::Get("test stderr").information("not shown");
    Logger::Get("test stderr").warning("two\nlines");
    vo::logging::DisableStandardError();
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_THAT(shown,
                testing::AllOf(testing::HasSubstr(" warning [test stderr] ("), testing::EndsWith(") two\\nlines\n"),
                               testing::Not(testing::HasSubstr("not shown"))));
}

TEST(VoLogging, WhatSteersTerminalsIsEscapedInLines)
{
    const std::pair<std::string, std::string> rows[] = {
        {"plain C:\\x \xc3\xa4", "plain C:\\x \xc3\xa4"},
        {"a\r\n\tb", "a\\r\\n\\tb"},
        {std::string("\0\x1b[31m\x7f", 7), "\\x00\\x1b[31m\\x7f"},
        {"\xc2\x9b\xc2\xa0", "\\x9b\xc2\xa0"},
        {"\x9b\xff\xc2", "\\x9b\\xff\\xc2"},
        {"\xe2\x80\xa8\xe2\x81\xa6\xe2\x80\xaf", "\\u2028\\u2066\xe2\x80\xaf"}};
    const std::string prefix = "2024-02-29T12:30:00.250Z information [updater] (";
    for (const auto& [text, escaped] : rows) {
        const std::string line = vo::logging::FormatRecord(RecordOf(VoString(text))).toStdString();
        EXPECT_EQ(line.substr(0, prefix.size()), prefix);
        EXPECT_EQ(line.substr(line.find(") ") + 2), escaped);
    }
}

TEST(VoLogging, QtMessagesGoToTheirOwnCategory)
{
    const vo::test::LogCapture log;
    vo::logging::InstallQtHandler();
    qWarning("from the framework");
    qDebug("more");
    qInstallMessageHandler(nullptr);
    EXPECT_EQ(log.count(Level::Warning, "qt", "from the framework"), 1u);
    EXPECT_EQ(log.count(Level::Diagnostic, "qt", "more"), 1u);
}

TEST(VoLogging, SinksComeAndGoWhileThreadsLog)
{
    const vo::test::LogCapture log;
    std::atomic<bool> done{false};
    vo::test::Threads threads(3, [&] {
        while (!done)
            Logger::Get("test threads").information("text");
    });
    for (int i = 0; i < 300; ++i) {
        auto calls = std::make_unique<std::atomic<int>>(0); // a late call would touch freed memory
        VoReceiver receiver = vo::logging::AddSink([&calls](const Record&) { ++*calls; });
        while (*calls == 0)
            std::this_thread::yield();
        receiver = VoReceiver();
        calls.reset();
    }
    done = true;
    threads.join();
    EXPECT_GE(log.records().size(), 300u);
}

TEST(VoLogging, SetUpWritesBelowTheGivenDirectoryWhileTheReceiverLives)
{
    const vo::test::LogCapture log;
    const vo::test::ScratchFolder folder;
    {
        const VoReceiver receiver = vo::logging::SetUp(folder.path("data"));
        Logger::Get("test files").information("written");
    }
    Logger::Get("test files").information("too late");
    EXPECT_THAT(
        folder.tree("data/logs"),
        testing::ElementsAre(testing::Pair(testing::_, testing::AllOf(testing::HasSubstr(" information [test files] ("),
                                                                      testing::EndsWith(") written\n")))));
}

TEST(LogFiles, WarningsAreOnDiskAtOnce)
{
    const vo::test::ScratchFolder folder;
    vo::logging::LogFiles files(folder.path("logs"));
    files.write(RecordOf("gathered"));
    EXPECT_EQ(folder.read("logs/2024-02-29-0001.log"), "");
    files.write(RecordOf("urgent", Level::Warning));
    EXPECT_THAT(folder.read("logs/2024-02-29-0001.log"), testing::ContainsRegex("gathered\n.*urgent\n"));
}

TEST(LogFiles, ADayHasItsFilesAndAFullOneIsFollowedByTheNext)
{
    const vo::test::ScratchFolder folder;
    const VoString large('x', vo::logging::LogFiles::FileCapacity);
    {
        vo::logging::LogFiles files(folder.path("logs"));
        files.write(RecordOf(large));
        files.write(RecordOf("second file"));
        files.write(RecordOf("next day", Level::Error, LeapDay + VoHours(24)));
    }
    vo::logging::LogFiles again(folder.path("logs"));
    again.write(RecordOf("goes on", Level::Error, LeapDay + VoHours(25)));
    EXPECT_THAT(
        folder.tree("logs"),
        testing::ElementsAre(testing::Key("2024-02-29-0001.log"), testing::Key("2024-02-29-0002.log"),
                             testing::Pair("2024-03-01-0001.log", testing::ContainsRegex("next day\n.*goes on\n"))));
}

TEST(LogFiles, OnlyTheNewestFiveAreKeptAndForeignFilesAreLeftAlone)
{
    const vo::test::ScratchFolder folder;
    folder.write("notes.log", "mine");
    folder.write("2020-01-01-0001.log.bak", "mine");
    vo::logging::LogFiles files(folder.path("."));
    for (int day = 0; day < 8; ++day)
        files.write(RecordOf("x", Level::Error, LeapDay + VoHours(24 * day)));
    std::string names;
    for (const auto& [name, content] : folder.tree("."))
        names += name + " ";
    EXPECT_EQ(names, "2020-01-01-0001.log.bak 2024-03-03-0001.log 2024-03-04-0001.log 2024-03-05-0001.log "
                     "2024-03-06-0001.log 2024-03-07-0001.log notes.log ");
}

TEST(LogFiles, TroubleWithTheFilesIsSilent)
{
    const vo::test::ScratchFolder folder;
    folder.write("logs", "a file where the directory should be");
    vo::logging::LogFiles files(folder.path("logs"));
    files.write(RecordOf("lost", Level::Critical));
    EXPECT_EQ(folder.read("logs"), "a file where the directory should be");
}
