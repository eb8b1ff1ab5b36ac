#include <Subsystem/LogConfiguration.h>

#include <Core/VoProperties.h>
#include <Subsystem/detail/CrashRing.h>
#include <Subsystem/detail/LogFiles.h>
#include <Subsystem/detail/LogLevels.h>
#include <Threading/VoReceiver.h>

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#if !defined(_WIN32)
#include <csignal>
#include <unistd.h>
#endif

using vo::logging::Configuration;
using vo::logging::Configure;
using vo::logging::Level;
using vo::logging::Logger;
using vo::logging::Record;

namespace {

// Puts back what a process has that configures nothing.
struct Unconfigured
{
    ~Unconfigured() { Configure({}); }
};

std::string TextIn(const vo::test::Tree& files)
{
    std::string text;
    for (const auto& [name, content] : files)
        text += content;
    return text;
}

VoString PathText(const vo::test::ScratchFolder& folder, const char* name)
{
    return folder.path(name).path();
}

} // namespace

TEST(LogConfiguration, TheMostParticularRuleDecides)
{
    const auto rules = Configuration::FromText("updater=diagnostic, *=error ,up*=warning,upd*er=information,"
                                               "update builder=off\nDOWN*LOAD=critical,*a*b*=off,*a*c*=diagnostic")
                           .levels;
    const std::pair<const char*, int> rows[] = {
        {"updater", 0}, {"UPDATER", 0}, {"upstairs", 2}, {"upd-er", 1}, {"update builder", 5}, {"download", 4},
        {"dload", 3},   {"other", 3},   {"", 3},         {"xaxbx", 5},  {"aabbc", 0}};
    for (const auto& [category, threshold] : rows)
        EXPECT_EQ(vo::logging::ThresholdOf(category, rules), threshold) << category;
    EXPECT_EQ(vo::logging::ThresholdOf("other", Configuration::FromText("updater=off").levels), 2);
    EXPECT_FALSE(vo::logging::Matches("a*a", "a"));
}

TEST(LogConfiguration, SettingsAreReadFromTextsFilesAndProperties)
{
    const vo::test::ScratchFolder folder;
    const char* const settings[][2] = {{"folder", "c:/a"}, {"json", "b"},       {"SIZE", "2K"},
                                       {"files", "7"},     {"days", "30"},      {"system", "Error"},
                                       {"crash", "c.txt"}, {"colour", "never"}, {"stderr", "off"}};
    VoString text;
    std::string lines = "# all of it\r\n";
    VoProperties properties{{"logger", "other"}};
    for (const auto& [name, value] : settings) {
        text += VoString("@") + name + "=" + value + ",";
        lines += std::string("@") + name + " = " + value + "\n";
        properties.add(VoString("Log.") + name, value);
    }
    const VoFilePath path = folder.write("log.conf", lines);
    for (const Configuration& c :
         {Configuration::FromText(text), Configuration::FromFile(path), Configuration::FromProperties(properties)}) {
        EXPECT_EQ(c.folder.path() + "|" + c.jsonFolder.path() + "|" + c.crashFile.path(), "c:\\a|b|c.txt");
        EXPECT_EQ(c.fileSize * 10000 + c.files * 100 + c.days, 20480730u);
        EXPECT_EQ(c.systemLog, Level::Error);
        EXPECT_EQ(c.standardError, std::nullopt);
    }
    EXPECT_EQ(Configuration::FromText("").standardError, std::nullopt);
    EXPECT_EQ(Configuration::FromText("error").standardError, Level::Diagnostic);
    EXPECT_EQ(Configuration::FromProperties({{"log", "error"}}).levels.size(), 1u);
}

TEST(LogConfiguration, WrongSettingsAreRefusedWithWhatWouldBeRight)
{
    const std::pair<const char*, const char*> rows[] = {
        {"*=loud", "*=loud: the level is diagnostic, information, warning, error, critical or off"},
        {"@files=0", "@files=0: expected a whole number from 1 to 1000"},
        {"@size=1T", "@size=1T: expected a whole number from 1 to 1099511627776"},
        {"@size=2000000G", "@size=2000000G: expected a whole number from 1 to 1024"},
        {"@colour=\x1b[31m", "@colour=\\x1b[31m: expected auto, always or never"},
        {"@folder", "@folder: expected a path"},
        {"@fodler=x",
         "@fodler=x: unknown; there are @stderr, @colour, @folder, @json, @size, @files, @days, @system and "
         "@crash"}};
    for (const auto& [text, message] : rows)
        EXPECT_THROW_MSG(Configuration::FromText(text), VoInvalidParameterException,
                         VoString("Invalid log setting ") + message);
    qputenv("VO_LOG", "x=y");
    EXPECT_THROW_MSG(
        Configuration::FromEnvironment(), VoInvalidParameterException,
        "Invalid log setting x=y in VO_LOG: the level is diagnostic, information, warning, error, critical "
        "or off");
    qunsetenv("VO_LOG");
    const vo::test::ScratchFolder folder;
    folder.write("file", "");
    EXPECT_THROW(Configure(Configuration::FromText("@folder=" + PathText(folder, "file"))), VoFileException);
}

TEST(LogConfiguration, IsChangedWhileThreadsLogAndNoRecordIsLost)
{
    const Unconfigured restored;
    const vo::test::LogCapture quiet;
    const vo::test::ScratchFolder folder;
    const VoString lines = PathText(folder, "lines");
    Configure(Configuration::FromText("test keep=information,@stderr=off,@size=20K,@files=1000,@folder=" + lines));
    vo::test::Threads threads(3, [](int t) {
        for (int i = 0; i < 300; ++i) {
            Logger::Get("test keep").information("record " + VoString(t * 1000 + i));
            Logger::Get("test keep").diagnostic("dropped");
        }
    });
    for (int i = 0; i < 20; ++i)
        Configure(Configuration::FromText("test keep=information,@stderr=off,@size=20K,@files=1000,@folder=" + lines +
                                          (i % 2 ? VoString() : ",@json=" + PathText(folder, "json"))));
    threads.join();
    std::set<std::string> records;
    std::istringstream all(TextIn(folder.tree("lines")));
    for (std::string line; std::getline(all, line);)
        records.insert(line.substr(line.find(") ") + 2));
    EXPECT_EQ(records.size(), 900u);
    EXPECT_EQ(records.count("dropped"), 0u);
    Configure(Configuration::FromText("@stderr=off,@json=" + PathText(folder, "json")));
    Logger::Get("test keep").warning("for programs");
    EXPECT_THAT(TextIn(folder.tree("json")), testing::HasSubstr("\"for programs\""));
}

TEST(LogConfiguration, JSONLinesComeBackAsTheyWereLogged)
{
    const std::string text = "a \"quoted\"\n\x1b[31m \xc3\xa4 \\ text";
    const VoString line = vo::logging::FormatJSON({Level::Warning, "test", VoString(text), VoTimePoint(), {}});
    EXPECT_FALSE(line.contains("\n"));
    const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(line.toStdString())).object();
    EXPECT_EQ(object[QStringLiteral("text")].toString().toStdString(), text);
}

TEST(LogConfiguration, StandardErrorIsColouredWhereThatIsWanted)
{
    const Unconfigured restored;
    for (const char* const colour : {"always", "auto", "never"}) { // captured, it is no terminal
        Configure(Configuration::FromText(VoString("error,@colour=") + colour));
        testing::internal::CaptureStderr();
        Logger::Get("test colour").error("text");
        Logger::Get("test colour").warning("dropped");
        const std::string shown = testing::internal::GetCapturedStderr();
        EXPECT_EQ(shown.find("\x1b[31m") == 0, std::string(colour) == "always") << shown;
        EXPECT_EQ(shown.find("dropped"), std::string::npos);
    }
}

TEST(LogFiles, SharedOnesAreKeptWithinSizeNumberAndAgeAndRemovalByOthersIsNoticed)
{
    const vo::test::ScratchFolder folder;
    const vo::logging::LogFiles::Settings settings{1000, 4, 3, false, true};
    folder.write("2024-02-25-0001.log", "five days ago");
    folder.write("2020-01-01-0001.jsonl", "another format");
    vo::logging::LogFiles first(folder.path("."), settings);
    vo::logging::LogFiles second(folder.path("."), settings);              // as another process would
    const VoTimePoint time{VoTimeDuration(VoMilliseconds(1709209800250))}; // 2024-02-29
    for (int i = 0; i < 60; ++i)
        (i % 2 ? first : second).write({Level::Information, "test", "number " + VoString(i), time, {}});
    const vo::test::Tree files = folder.tree(".");
    EXPECT_EQ(files.count("2024-02-25-0001.log"), 0u);
    EXPECT_EQ(files.count("2020-01-01-0001.jsonl"), 1u);
    EXPECT_EQ(files.size(), 5u);
    for (const auto& [name, content] : files)
        EXPECT_LT(content.size(), 1100u) << name;
#if defined(__unix__) // elsewhere nobody can remove it
    std::filesystem::remove(folder.native(std::prev(files.end())->first));
    first.write({Level::Information, "test", "after the removal", time, {}});
    EXPECT_THAT(TextIn(folder.tree(".")), testing::EndsWith(") after the removal\n"));
#endif
}

TEST(CrashRing, KeepsTheLastLinesWholeWhileThreadsAdd)
{
    vo::logging::CrashRing ring;
    const auto text = [&ring] {
        std::string all;
        ring.readEach([](void* context, const char* bytes,
                         std::size_t size) { static_cast<std::string*>(context)->append(bytes, size); },
                      &all);
        return all;
    };
    for (int i = 100; i < 400; ++i)
        ring.add("line " + std::to_string(i));
    EXPECT_EQ(text().size(), 256u * 9);
    EXPECT_EQ(text().substr(0, 9), "line 144\n");
    vo::test::Threads threads(3, [&ring](int t) {
        for (int i = 0; i < 20000; ++i)
            ring.add(std::string(static_cast<std::size_t>(i % 600), static_cast<char>('a' + t)));
    });
    for (int i = 0; i < 200; ++i) { // no line has letters of two threads
        const std::string now = text();
        for (const char* const mixed : {"ab", "ba", "bc", "cb", "ac", "ca"})
            EXPECT_EQ(now.find(mixed), std::string::npos);
    }
    threads.join();
}

#if !defined(_WIN32)

namespace {

std::filesystem::path OverflowStack(int depth)
{
    volatile char space[4096] = {};
    space[depth % 4096] = 1;
    return depth < 0 ? std::filesystem::path() : OverflowStack(depth + 1) / std::to_string(space[depth % 4096]);
}

void LogAndCrash(const VoString& file, const std::function<void()>& crash)
{
    Configure(Configuration::FromText("@stderr=off,@crash=" + file));
    for (int i = 0; i < 300; ++i)
        Logger::Get("test crash").diagnostic("record " + VoString(i));
    crash();
}

} // namespace

TEST(CrashHandlerDeathTest, TheLastRecordsAreOnDiskAndTheCrashTakesItsCourse)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers take the signals";
#endif
    const vo::test::ScratchFolder folder;
    const VoString file = PathText(folder, "crash.txt");
    std::size_t before = 0;
    const auto expectAdded = [&] {
        const std::string content = folder.read("crash.txt");
        EXPECT_GT(content.size(), before);
        before = content.size();
        EXPECT_EQ(content.substr(before - 11), "record 299\n");
    };
    const std::pair<int, std::function<void()>> rows[] = {
        {SIGSEGV, [] { kill(getpid(), SIGSEGV); }},
        {SIGABRT, [] { std::abort(); }},
        {SIGSEGV, [] { OverflowStack(0); }},
        {SIGFPE, [] { std::thread([] { std::raise(SIGFPE); }).join(); }}};
    for (const auto& [signal, crash] : rows) {
        EXPECT_EXIT(LogAndCrash(file, crash), testing::KilledBySignal(signal), "");
        expectAdded();
    }
    EXPECT_NE(folder.read("crash.txt").find(" ended by SIGFPE; last records:\n"), std::string::npos);
    std::signal(SIGSEGV, [](int) { _exit(7); }); // the application's own handler
    EXPECT_EXIT(LogAndCrash(file, [] { std::raise(SIGSEGV); }), testing::ExitedWithCode(7), "");
    expectAdded();
    std::signal(SIGSEGV, SIG_DFL);
}

#endif
