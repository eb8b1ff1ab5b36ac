#include "VoProgram.h"

class Usage : public VoProgram
{
};

TEST_F(Usage, AWrongCommandLineGivesOneHelpfulLineAndTheExitCodeTwo)
{
    fillSource("source", 2);
    for (const Told& row : session("wrong-usage.txt"))
        EXPECT_EQ(expectTold(vo(row.arguments), row).out, "") << row.arguments;
    EXPECT_EQ(tree(".").count("d.xml"), 0u);
    EXPECT_FALSE(exists("data"));
}

TEST_F(Usage, HelpNamesEveryCommandAndExitCode)
{
    const Outcome overview = vo("help");
    EXPECT_EQ(overview.code, 0);
    EXPECT_EQ(overview.err, "");
    EXPECT_EQ(vo("--help").out, overview.out);
    for (const char* command :
         {"publish", "releases", "show", "diff", "plan", "install", "installed", "verify", "repair", "uninstall",
          "verify-release", "checksum", "lp", "report", "zip", "unzip", "table", "help"}) {
        EXPECT_NE(overview.out.find("\n  " + std::string(command) + " "), std::string::npos) << command;
        const Outcome help = vo(std::string(command) + " --help");
        for (const QByteArray& line : QByteArray::fromStdString(help.out).split('\n'))
            EXPECT_TRUE(line.size() <= 115 || line.startsWith("usage: ")) << line.toStdString();
        EXPECT_EQ(help.code, 0);
        EXPECT_EQ(help.out.rfind("usage: vo " + std::string(command), 0), 0u) << help;
        EXPECT_EQ(vo("help " + std::string(command)).out, help.out);
    }
    for (const char* code : {"0  done", "1  failed", "2  wrong usage", "3  nothing", "4  verification", "5  cancelled",
                             "6  refused", "7  a linear problem"})
        EXPECT_NE(overview.out.find(std::string("\n  ") + code), std::string::npos) << code;
    std::size_t widest = 0;
    for (const QByteArray& line : QByteArray::fromStdString(overview.out).split('\n'))
        widest = std::max(widest, static_cast<std::size_t>(line.size()));
    EXPECT_LE(widest, 110u);
}

TEST_F(Usage, TheVersionIsThatOfTheProject)
{
    EXPECT_EQ(vo("--version").out, "vo " VO_VERSION "\n");
}

TEST_F(Usage, AResultThatCannotBeWrittenIsAFailure)
{
    write("file", "abc");
    QProcess shell;
    shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("\"$0\" checksum \"$1\" > /dev/full"),
                                       QStringLiteral(VO_PROGRAM), path("file")});
    ASSERT_TRUE(shell.waitForFinished(60000));
    EXPECT_EQ(shell.exitCode(), 1);
    EXPECT_EQ(shell.readAllStandardError().toStdString(), "vo: the result cannot be written to standard output\n");
}
