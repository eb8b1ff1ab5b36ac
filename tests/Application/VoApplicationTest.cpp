#include <Application/VoApplication.h>

#include <Application/VoLayeredProperties.h>
#include <Application/detail/SingleInstance.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Subsystem/Registry.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QStringList>

#if !defined(_WIN32)
#include <csignal>
#endif

namespace {

using Texts = std::vector<std::string>;

// The command line of an application under test.
class VoApplicationTest : public testing::Test
{
protected:
    VoApplicationTest() { qputenv("VOAPPDATAPATH", QByteArray::fromStdString(folder.native().string())); }
    ~VoApplicationTest() override { qunsetenv("VOAPPDATAPATH"); }

    std::unique_ptr<VoApplication> application(Texts arguments = {})
    {
        m_texts = std::move(arguments);
        m_texts.insert(m_texts.begin(), "program");
        m_pointers.clear();
        for (std::string& text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
        return std::make_unique<VoApplication>(
            VoApplicationInformation{"test-app", "", VoVersion(1, 2, 3, VoVersion::Release), "test"},
            static_cast<int>(m_texts.size()), m_pointers.data());
    }

    const vo::test::ScratchFolder folder;

private:
    Texts m_texts;
    std::vector<char*> m_pointers;
};

Texts Plain(const VoDeque<VoString>& texts)
{
    Texts plain;
    for (const VoString& text : texts)
        plain.push_back(text.toStdString());
    return plain;
}

} // namespace

TEST_F(VoApplicationTest, ThereIsOneAndItKnowsWhoItIs)
{
    EXPECT_THROW_MSG(VoApplication::Get(), VoInvalidCallException, "No application object");
    for (const bool isOverAnother : {true, false}) {
        int argc = 0;
        const auto other = isOverAnother ? std::make_unique<QCoreApplication>(argc, nullptr) : nullptr;
        const auto one = application({"a b", "\xc3\xa4"});
        EXPECT_EQ(&VoApplication::Get(), one.get());
        EXPECT_EQ(one->displayName(), "test-app");
        EXPECT_EQ(one->configurationDirectory(), VoDirectoryPath::FromText(folder.path("config").path()));
#if !defined(_WIN32) // where they are those of the process
        EXPECT_EQ(Plain(one->arguments()), (Texts{"a b", "\xc3\xa4"}));
#endif
        EXPECT_THROW_MSG(application(), VoInvalidCallException, "Application already exists");
    }
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    EXPECT_THROW_MSG(VoApplication({"a/b"}, 0, nullptr), VoInvalidParameterException, "Invalid application name: a/b");
    EXPECT_EQ(VoApplication::Instance(), nullptr);
}

TEST_F(VoApplicationTest, TheCommandLineIsReadAndItsPropertiesHideAllOthers)
{
    auto one = application({"--grid=5", "-o", "x", "-o", "y", "--set", "editor.a=1=2", "file", "--", "-z"});
    one->addOption({{"grid"}, "", "N", "3"});
    one->addOption({{"out", "o"}, "", "FILE"});
    one->addOption({{"width"}, "", "N", "4"});
    one->addOption({{"quiet"}});
    for (const VoDeque<VoString>& names : {VoDeque<VoString>{"quiet"}, VoDeque<VoString>{}, VoDeque<VoString>{"-x"}})
        EXPECT_THROW(one->addOption({names}), VoInvalidParameterException);
    one->parseCommandLine();
    EXPECT_EQ(one->value("grid"), "5");
    EXPECT_EQ(one->value("width"), "4");
    EXPECT_FALSE(one->isSet("width"));
    EXPECT_EQ(Plain(one->values("out")), (Texts{"x", "y"}));
    EXPECT_EQ(Plain(one->positionalArguments()), (Texts{"file", "-z"}));
    EXPECT_EQ(one->properties().value("editor.a"), VoVariant("1=2"));
    EXPECT_EQ(one->properties().layer("editor.a"), VoLayeredProperties::Layer::CommandLine);
    EXPECT_TRUE(one->helpText().contains("--grid <N>"));
    one.reset();
    EXPECT_THROW_MSG(application({"--nobody"})->parseCommandLine(), VoInvalidParameterException,
                     "Unknown option 'nobody'.");
    EXPECT_THROW_MSG(application({"--set=a"})->parseCommandLine(), VoInvalidParameterException, "Invalid --set: a");
}

TEST_F(VoApplicationTest, QuittingRunsHandlersInReverseStopsSubsystemsAndKeepsProperties)
{
    const vo::test::LogCapture log;
    Texts events;
    const auto note = [&](const char* event) { return [&events, event] { events.emplace_back(event); }; };
    vo::subsystem::Registry& registry = vo::subsystem::Registry::Global();
    registry.add({"test subsystem", {"application"}, note("start"), note("stop")});
    {
        const auto one = application();
        registry.start("test subsystem");
        const VoReceiver first = one->atQuit(note("first"));
        const VoReceiver failing = one->atQuit([] { throw VoInvalidUseException("broken"); });
        {
            const VoReceiver dropped = one->atQuit(note("dropped"));
        }
        const VoReceiver last = one->atQuit([&] {
            events.emplace_back("last");
            EXPECT_TRUE(one->stopFlag().isStopped());
            one->properties().set("kept", 1);
        });
        std::thread([&] {
            one->quit(3);
            one->quit(4);
        }).join(); // before the loop has begun
        EXPECT_EQ(one->exec(), 3);
        EXPECT_EQ(events, (Texts{"start", "last", "first", "stop"}));
    }
    EXPECT_EQ(events.size(), 4u);
    EXPECT_EQ(log.texts("application"), (Texts{"Exception in quit handler: broken"}));
    EXPECT_EQ(application()->properties().value("kept"), VoVariant(1));
    EXPECT_THROW(registry.start("test subsystem"), VoInvalidCallException); // without an application
}

TEST(SingleInstanceMessage, AnyBytesGiveTextsOrAreRefusedAndMessagesComeBackHoweverTheyAreCut)
{
    using vo::detail::InstanceMessage;
    using vo::detail::TextsOfMessage;
    const Texts texts{"/tmp", "", "a b", "\xff"};
    const std::string message = InstanceMessage(texts);
    for (std::size_t size = 0; size < message.size(); ++size)
        EXPECT_FALSE(TextsOfMessage(message.substr(0, size))) << size;
    EXPECT_EQ(TextsOfMessage(message), texts);
    for (const std::string& bytes :
         {message + "x", std::string("GET / HTTP/1.1"), std::string("VOI1\xff\xff\xff\xff", 8),
          std::string("VOI1\0\0\0\0", 8), std::string("VOI1\0\0\0\1x", 9), std::string("VOI1\0\x0f\x42\x41", 8)})
        EXPECT_THROW_MSG(TextsOfMessage(bytes), VoValidationException, "Invalid message of another start");
    EXPECT_THROW_MSG(InstanceMessage({std::string(1000000, 'x')}), VoInvalidParameterException,
                     "Command line too long to hand over");
}

#if !defined(_WIN32)

namespace {

// The application in tests/Application/Program.cpp.
class Program
{
public:
    Program(const vo::test::ScratchFolder& folder, const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("VOAPPDATAPATH"), QString::fromStdString(folder.native().string()));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString::fromStdString(folder.native().string()));
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(QString::fromStdString(folder.native().string()));
        m_process.start(QStringLiteral(VOCORE_TEST_PROGRAM), arguments);
    }
    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    // Waits for the next line, or for the end.
    std::string line()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(60000)) {
        }
        return m_process.readLine().trimmed().toStdString();
    }

    // Waits for the end; 1000 and the signal for one that a signal has ended.
    int exitCode()
    {
        m_process.waitForFinished(60000);
        return m_process.exitStatus() == QProcess::CrashExit ? 1000 : m_process.exitCode();
    }

    void signal(int number) { kill(static_cast<pid_t>(m_process.processId()), number); }

private:
    QProcess m_process;
};

} // namespace

TEST(VoApplicationProgram, SignalsEndItInOrderWhetherItsLoopRunsOrNot)
{
    const vo::test::ScratchFolder folder;
    for (const char* const option : {"--set=a=b", "--busy"}) {
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            Program program(folder, {QString::fromLatin1(option)});
            ASSERT_EQ(program.line(), "ready");
            program.signal(number);
            EXPECT_EQ(program.line(), "second handler") << option << number;
            EXPECT_EQ(program.line(), "first handler");
            EXPECT_EQ(program.exitCode(), 128 + number);
        }
    }
}

TEST(VoApplicationProgram, LaterStartsHandTheirArgumentsToTheFirstAndACrashedOneIsReplaced)
{
    const vo::test::ScratchFolder folder;
    std::filesystem::permissions(folder.native(), std::filesystem::perms::owner_all);
    const QStringList single{QStringLiteral("--single")};
    auto first = std::make_unique<Program>(folder, single);
    ASSERT_EQ(first->line(), "ready");
    Program later(folder, single + QStringList{QString::fromUtf8("\xc3\xa4 b"), QString()});
    EXPECT_EQ(later.line(), "handed over");
    EXPECT_EQ(first->line(), folder.native().string() + ": <--single> <\xc3\xa4 b> <>");
    for (const auto& entry : std::filesystem::directory_iterator(folder.native())) {
        const bool isSocket = entry.is_socket(); // nobody else may speak to it
        EXPECT_TRUE(!isSocket || entry.status().permissions() == std::filesystem::perms::owner_all);
    }
    first->signal(SIGKILL);
    EXPECT_EQ(first->exitCode(), 1000);
    Program second(folder, single);
    ASSERT_EQ(second.line(), "ready");
    Program third(folder, single + QStringList{QStringLiteral("quit")});
    EXPECT_EQ(third.exitCode(), 0);
    EXPECT_EQ(second.exitCode(), 7);
}

TEST(VoApplicationProgram, OfManyStartsAtOnceOneIsTheFirst)
{
    const vo::test::ScratchFolder folder;
    std::vector<std::unique_ptr<Program>> programs;
    for (int i = 0; i < 6; ++i)
        programs.push_back(std::make_unique<Program>(folder, QStringList{QStringLiteral("--single")}));
    std::multiset<std::string> lines;
    for (const auto& program : programs)
        lines.insert(program->line());
    EXPECT_EQ(lines.count("ready"), 1u);
    EXPECT_EQ(lines.count("handed over"), 5u);
}

#endif
