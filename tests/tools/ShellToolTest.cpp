#include "VoProgram.h"

#include <QtCore/QJsonArray>

namespace {

class ShellTool : public VoProgram
{
protected:
    // What a person at a terminal sees who types `keys`, parted by "|" where the next prompt is waited for,
    // or what follows a ">".
    Outcome typed(const std::string& keys)
    {
        write("type.py", R"(
import os, pty, sys
keys, program = sys.argv[1:]
pid, fd = pty.fork()
if pid == 0:
    os.execv(program, [program, 'shell'])
def until(text):
    seen = b''
    while text not in seen:
        try:
            block = os.read(fd, 4096)
        except OSError:
            block = b''
        if not block:
            return seen
        seen += block
    return seen
out = until(b'vo> ')
for part in keys.split('|'):
    typed, wait = part.split('>', 1) if '>' in part else (part, 'vo> ')
    os.write(fd, typed.encode().decode('unicode_escape').encode())
    out += until(wait.encode())
os.waitpid(pid, 0)
sys.stdout.buffer.write(out)
)");
        return voBehind({QStringLiteral("/usr/bin/python3"), path("type.py"), QString::fromStdString(keys)}, "");
    }
};

} // namespace

TEST_F(ShellTool, LinesAndScriptsEndWithTheCodeOfTheirFailure)
{
    write("good.vo", "file.size good.vo\necho done\n");
    write("bad.vo", "echo first\nchecksum none\necho never\n");
    write("unsafe.vo", "lp.solve bad.vo\n");
    const struct
    {
        std::vector<const char*> arguments;
        int code;
        const char* out;
        const char* err;
    } rows[] = {
        {{"shell", "-c", "echo 'a b' $_", "-c", "file.size good.vo", "--line", "echo $_"}, 0, "a b \n28\n28\n", ""},
        {{"shell", "good.vo"}, 0, "28\ndone\n", ""},
        {{"shell", "bad.vo"}, 1, "first\n", "vo: bad.vo, line 2: none: File not found\n"},
        {{"shell", "-c", "cheksum none"}, 1, "", "vo: Undefined function: cheksum; did you mean checksum?\n"},
        {{"shell", "-c", "echo \x1b[0m"}, 0, "\\x1b[0m\n", ""},
        {{"shell", "none.vo"}, 1, "", "vo: none.vo: File not found\n"},
        {{"shell", "good.vo", "-c", "x"}, 2, "", "vo: a script and --line exclude each other\n"},
        {{"shell", "--test"}, 2, "", "vo: option --test takes one script and no lines\n"},
        {{"test", "none"}, 1, "", "vo: cannot read none: File not found\n"},
        {{"test", "."}, 1, "", nullptr},
    };
    for (const auto& row : rows) {
        QStringList arguments;
        for (const char* argument : row.arguments)
            arguments << QString::fromUtf8(argument);
        const Outcome run = vo(arguments);
        EXPECT_EQ(run.code, row.code) << run;
        if (row.err == nullptr)
            continue;
        EXPECT_EQ(run.out, row.out);
        EXPECT_EQ(run.err, row.err);
    }
}

TEST_F(ShellTool, TestsRunApartAndTellHowTheyEnded)
{
    write("tests/pass.vo", "# tags: quick\nfile.write here.txt x\nexpect-file here.txt contains=x\n");
    write("tests/sub/alone.vo", "# tags: QUICK other\nexpect-file here.txt exists=no\n");
    write("tests/fail.vo", "echo before\nexpect 3 4 tolerance=0.5\n");
    write("tests/slow.vo", "# limit: 100ms\nwait 100\n");
    write("tests/ignored.txt", "nonsense\n");
    const QJsonObject all = voJson("test @tests --junit @junit.xml", 1);
    std::map<std::string, QJsonObject> tests;
    for (const QJsonValue& test : all[QStringLiteral("tests")].toArray())
        tests[test.toObject()[QStringLiteral("name")].toString().toStdString()] = test.toObject();
    const auto told = [&](const char* name, const char* key) {
        return tests[name][QLatin1String(key)].toString().toStdString();
    };
    EXPECT_EQ(tests.size(), 4u);
    EXPECT_EQ(told("pass", "outcome"), "passed");
    EXPECT_EQ(told("sub/alone", "outcome"), "passed");
    EXPECT_EQ(told("fail", "outcome"), "failed");
    EXPECT_NE(told("fail", "message").find("line 2: Expected \"4\", got \"3\", tolerance 0.5"), std::string::npos);
    EXPECT_NE(told("fail", "output").find("before\n"), std::string::npos);
    EXPECT_EQ(told("slow", "outcome"), "timed out");
    EXPECT_EQ(all[QStringLiteral("passed")].toInt(), 2);
    EXPECT_EQ(all[QStringLiteral("failed")].toInt(), 2);
    const QByteArray report = read("junit.xml");
    EXPECT_TRUE(report.contains("tests=\"4\" failures=\"2\" errors=\"0\"")) << report.toStdString();
    EXPECT_TRUE(report.contains("<failure type=\"timed out\" message=\"took longer than ")) << report.toStdString();
    EXPECT_EQ(voJson("test @tests --tag quick --skip other --processes 1", 0)[QStringLiteral("passed")].toInt(), 1);
}

TEST_F(ShellTool, ATerminalHasCompletionAndHistoryAndCtrlC)
{
    VO_SKIP_WITHOUT_SHELL();
    // What is typed is seen before it is carried out; until then Ctrl-C is a key.
    write("endless.vo", "echo begun\nwait 1000\n");
    write("data/vo-shell-history", "of another day\n");
    const Outcome run = typed(
        R"(check\tnone\r|half a line\x03|echo ab\x7fc\r|source endless.vo\r>begun|\x03|\x1b[A\x1b[A\r|exit\r>vo> never)");
    EXPECT_NE(run.out.find("vo: none: File not found"), std::string::npos) << run;
    EXPECT_EQ(run.out.find("Undefined"), std::string::npos) << run;
    EXPECT_NE(run.out.find("vo: stopped"), std::string::npos) << run;
    EXPECT_EQ(run.code, 0) << run;
    EXPECT_EQ(read("data/vo-shell-history").toStdString(),
              "of another day\nchecksum none\necho ac\nsource endless.vo\necho ac\n");
}
