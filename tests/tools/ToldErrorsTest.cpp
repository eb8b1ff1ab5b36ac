#include "VoProgram.h"

#include <ScriptedHttpServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

using vo::test::ScriptedAnswer;
using vo::test::ScriptedHttpServer;

namespace {

class ToldErrors : public VoProgram
{
protected:
    ToldErrors()
    {
        QByteArray noise;
        for (quint32 value = 1; noise.size() < 30000; value = value * 1664525 + 1013904223)
            noise += static_cast<char>(value >> 24);
        for (const char* file : {"src/a/f1", "src/a/f2", "src/f3"})
            write(file, noise);
        publish("src", "1.0", "--chunk-size 16K");
        write("no.xml", "no document");
        write("other.xml", "<other/>");
        write("page.html", "<!DOCTYPE html><html/>");
        write("hostile.xml", "<!DOCTYPE package [<!ENTITY a \"b\">]><package/>");
        write("table.csv", QByteArray("1,2,3\n").repeated(5000));
        write("file", "text");
        EXPECT_TRUE(QDir().mkpath(path("folder")));
    }

    void check(const std::vector<Told>& rows)
    {
        for (const Told& row : rows) {
            expectTold(vo(row.arguments), row);
            const Outcome quiet = expectTold(vo(row.arguments + " -q --json"), row);
            const QJsonObject document = quiet.json();
            EXPECT_EQ(document[QLatin1String("command")].toString().toStdString(),
                      row.arguments.substr(0, row.arguments.find(' ')));
            EXPECT_EQ(document[QLatin1String("exitCode")].toInt(-1), row.code) << quiet;
            EXPECT_EQ("vo: " + document[QLatin1String("error")].toString().toStdString() + "\n", quiet.err);
        }
    }
};

} // namespace

TEST_F(ToldErrors, WhatWasWantedTheUsersNameAndTheSystemsReason)
{
    write("bad.csv", "a\n\"b\n");
    write("latin.csv", "a\n\xc3\xa9\xe9\n");
    write("wide.csv", QByteArray(16384, ','));
    write("equation.lp", "max x\nst\nx = 1\nend");
    write("unbounded.lp", "max x st - x <= 1 end");
    write("cut.xml", "<results");
    write("o.xlsx", "old");
    EXPECT_TRUE(QDir().mkpath(path("empty")));
    check(session("told-errors.txt"));
#if !defined(_WIN32)
    EXPECT_EQ(vo("releases page.html -v").err.find("\\"), std::string::npos) << "paths of this system";
#endif
    EXPECT_EQ(read("o.xlsx"), "old");
    const Tree left = tree(".");
    for (const char* file : {"p.xml", "o.csv", "o.html", "z.zip"})
        EXPECT_EQ(left.count(file), 0u) << file;
}

TEST_F(ToldErrors, AWrongCommandLineGivesOneHelpfulLineAndTheExitCodeTwo)
{
    for (const Told& row : session("wrong-usage.txt"))
        EXPECT_EQ(expectTold(vo(row.arguments), row).out, "") << row.arguments;
    EXPECT_EQ(tree(".").count("d.xml"), 0u);
    EXPECT_FALSE(exists("data"));
    EXPECT_EQ(vo("--version").out, "vo " VO_VERSION "\n");
}

TEST_F(ToldErrors, AServersAnswerIsToldOnceAndWithItsUrl)
{
    int noArguments = 0;
    const QCoreApplication application(noArguments, nullptr); // for the server's thread
    ScriptedHttpServer server;
    server.get("/page", ScriptedAnswer::Body("<!DOCTYPE html><html/>"));
    server.get("/text", ScriptedAnswer::Body("text"));
    server.get("/busy", ScriptedAnswer::Status(503, "Busy"));
    server.get("/away", ScriptedAnswer::Redirect(302, "http://example.invalid/"));
    const auto row = [&](const std::string& command, const std::string& url, const std::string& why) {
        return Told{command + " " + url + " --retries 0", 1, "cannot read " + url + ": " + why};
    };
    check({
        row("install --to app", server.url("/page"), "it is a web page"),
        row("show", server.url("/text"), "Start tag expected."),
        row("releases", server.url("/missing"), "the server replied 404 Not Found"),
        row("releases", server.url("/busy"), "the server replied 503 Busy"),
        row("releases", vo::test::RefusingUrl("/d.xml"), "Connection refused"),
        row("releases", server.url("/away"),
            "Header request failed: Unsafe domain redirect from (" + server.url("/away") +
                ") to (http://example.invalid/)"),
    });
    EXPECT_EQ(tree(".").count("app/"), 0u);
}

#if !defined(_WIN32)

// The system refuses to let a file grow, which stands for every write that fails half-way.
TEST_F(ToldErrors, AFileThatCannotBeWrittenIsNamed)
{
    ASSERT_EQ(vo("zip whole.zip src").code, 0);
    const std::string chunk =
        "cannot copy @/pub/packages/*/1.0.0.0/chunks/*.vochk to @/data/updates/download/*/*.vochk";
    const Told rows[] = {
        {"install pub/declarations.xml --to app", 1, "cannot install to app: " + chunk + ": File too large"},
        {"unzip whole.zip out", 1, "cannot unzip whole.zip: cannot write @/out/a/f1: File too large"},
        {"table table.csv o.csv", 1, "cannot write o.csv: File too large"},
        {"table table.csv o.xml", 1, "cannot write o.xml: File too large"},
        {"zip z.zip src", 1, "cannot zip src: Cannot close zip archive file: Zip failure in @/z.zip: File too large"},
    };
    for (const Told& row : rows) {
        expectTold(voBehind({QStringLiteral("sh"), QStringLiteral("-c"),
                             QStringLiteral("ulimit -f 8; trap '' XFSZ; exec \"$0\" \"$@\"")},
                            row.arguments),
                   row);
        EXPECT_FALSE(exists("app/f3") || exists("out/a/f1") || exists("o.csv") || exists("o.xml") || exists("z.zip"));
    }
}

#endif
