#include "VoProgram.h"

class Usage : public VoProgram
{
};

TEST_F(Usage, AWrongCommandLineGivesOneHelpfulLineAndTheExitCodeTwo)
{
    fillSource("source", 2);
    struct
    {
        const char* arguments;
        const char* message; // all of standard error, but for "vo: " and the line's end
    } const rows[] = {
        {"", "no command is given; see vo help"},
        {"instal @x", "unknown command \"instal\"; did you mean install?"},
        {"frobnicate", "unknown command \"frobnicate\"; see vo help"},
        {"help verfy", "unknown command \"verfy\"; did you mean verify?"},
        {"install @x --relase 1.0", "unknown option --relase; did you mean --release?"},
        {"install @x --frobnicate", "unknown option --frobnicate"},
        {"install @x -z", "unknown option -z"},
        {"--jsn verify", "unknown option --jsn; did you mean --json?"},
        {"install", "an argument is missing; usage: vo install DECLARATIONS|PACKAGE.XML|URL --to FOLDER [--package ID] "
                    "[--release V] [--dry-run] [--allow-downgrade] [--move] [--overwrite]"},
        {"verify a b", "unexpected argument \"b\"; usage: vo verify [PACKAGE]"},
        {"publish @source --release 1.0", "option --to is missing"},
        {"publish @source --to @d.xml", "option --release is missing"},
        {"publish @source --to @d.xml --release 1.0",
         "option --name is missing: it is needed for a package's first release"},
        {"publish @source --to", "Missing value after '--to'"},
        {"publish @source --to=", "option --to needs a value: DECLARATIONS"},
        {"publish @source --to @a --to @b --release 1", "option --to is given more than once"},
        {"publish @source --to @d.xml --name N --release 1.x",
         "option --release: \"1.x\" is not a release such as 4.2.17"},
        {"publish @source --to @d.xml --name N --release 1 --chunk-size 4X",
         "option --chunk-size: \"4X\" is not a size such as 65536, 512K or 4M"},
        {"publish @source --to @d.xml --name N --release 1 --chunk-size 0",
         "option --chunk-size: \"0\" is not from 1 to 2147483647 bytes"},
        {"publish @source --to @d.xml --name N --release 1 --chunk-size 2G",
         "option --chunk-size: \"2G\" is not from 1 to 2147483647 bytes"},
        {"publish @source --to @d.xml --name N --release 1 --level 13",
         "option --level: \"13\" is not an integer from -1 to 12"},
        {"publish @source --to @d.xml --name N --release 1 --build-type -1",
         "option --build-type: \"-1\" is not an integer from 0 to 2147483647"},
        {"publish @source --to @d.xml --name N --release 1 --package ../x",
         "option --package: \"../x\" is not an ID that can serve as a file name"},
        {"verify --progress=sometimes", "option --progress: \"sometimes\" is neither always nor never"},
        {"verify -q -v", "options --quiet and --verbose exclude each other"},
        {"verify --updates-dir x:y:z",
         "option --updates-dir: \"x:y:z\" cannot be used as a path: Invalid : in path name"},
        {"show ftp://example.org/d.xml", "argument: \"ftp://example.org/d.xml\" is not an http or https URL"},
        {"verify-release https://example.org/p.xml --source s",
         "argument: \"https://example.org/p.xml\" is a URL; only a local file can be read here"},
        {"install https://example.org/d.xml --mirror here", "option --mirror: \"here\" is not an http or https URL"},
        {"install @d.xml --mirror https://example.org", "option --mirror: no document on a server is named"},
        {"repair Example --mirror https://example.org", "option --mirror: no document on a server is named"},
        {"verify-release @p.xml", "option --source is missing"},
        {"unzip @a.zip", "unzip needs an archive and a folder"},
        {"unzip --list @a.zip @out", "--list takes an archive and no folder"},
        {"zip @a.zip", "an argument is missing; usage: vo zip ARCHIVE SOURCE"},
        {"lp @x.lp --iterations -1", "option --iterations: \"-1\" is not an integer from 0 to 9223372036854775807"},
        {"report noise @x.xml @o.html", "\"noise\" is no kind of report: sensitivity, montecarlo or worstcase"},
        {"report worstcase @x.xml @o.html --sort 1", "option --sort: only sensitivity reports are sorted"},
        {"table source/file0.txt", "an input and an output file are needed"},
        {"table source/file0.txt o.pdf", "the output must end with .xlsx, .xml or .csv: o.pdf"},
        {"table source/file0.txt source/file0.txt o.xml",
         "several files need an output with several sheets, which is .xlsx"},
        {"table source/file0.txt source/file0.txt --sheet x o.xlsx",
         "--sheet names one sheet; several files are named by their own names"},
        {"table --decimal-comma a.csv o.xlsx",
         "--decimal-comma needs a --separator without a comma, for example --separator \";\""},
        {"table --show a.csv b.csv", "--show takes one file"},
        {"table --header -1 a.csv o.xlsx", "option --header: \"-1\" is not an integer from 0 to 2147483647"},
        {"table --separator \" a.csv o.xlsx", "--separator: \"\"\" cannot separate fields"},
    };
    for (const auto& row : rows) {
        const Outcome run = vo(row.arguments);
        EXPECT_EQ(run.code, 2) << "vo " << row.arguments << "\n" << run;
        EXPECT_EQ(run.err, std::string("vo: ") + row.message + "\n") << "vo " << row.arguments;
        EXPECT_EQ(run.out, "") << "vo " << row.arguments;
    }
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
