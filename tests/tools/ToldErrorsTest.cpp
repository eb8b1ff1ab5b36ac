#include "VoProgram.h"

#include <ScriptedHttpServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

using vo::test::ScriptedAnswer;
using vo::test::ScriptedHttpServer;

namespace {

/// What a command line must tell: one line on standard error, the same text in the document for programs.
struct Row
{
    std::string arguments;
    int code;
    std::string error; ///< Without the program's name; "*" stands for what is new each time.
};

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

    void check(const std::vector<Row>& rows)
    {
        for (Row row : rows) {
            row.error = QString::fromStdString(row.error).replace(QLatin1Char('@'), path("")).toStdString();
            checkRun(vo(row.arguments), row);
            const Outcome quiet = vo(row.arguments + " -q --json");
            checkRun(quiet, row);
            const QJsonObject document = quiet.json();
            EXPECT_EQ(document[QLatin1String("command")].toString().toStdString(),
                      row.arguments.substr(0, row.arguments.find(' ')));
            EXPECT_EQ(document[QLatin1String("exitCode")].toInt(-1), row.code) << quiet;
            EXPECT_EQ("vo: " + document[QLatin1String("error")].toString().toStdString() + "\n", quiet.err);
        }
    }

    void checkRun(const Outcome& run, const Row& row)
    {
        EXPECT_EQ(run.code, row.code) << "vo " << row.arguments << "\n" << run;
        QString pattern = QRegularExpression::escape(QString::fromStdString("vo: " + row.error + "\n"));
        pattern.replace(QStringLiteral("\\*"), QStringLiteral("[^/ ]+"));
        EXPECT_TRUE(QRegularExpression(QLatin1String("\\A") + pattern + QLatin1String("\\z"))
                        .match(QString::fromStdString(run.err))
                        .hasMatch())
            << "vo " << row.arguments << "\nwanted: " << row.error << "\n"
            << run;
    }
};

} // namespace

TEST_F(ToldErrors, ADocumentThatCannotBeReadIsNamedAsItWasTyped)
{
    struct
    {
        const char* name;
        const char* why;
        int code;
    } const documents[] = {
        {"missing.xml", "File not found", 1},
        {"folder", "Is a directory", 1},

        {"page.html", "it is a web page", 1},
        {"hostile.xml", "Document type declarations are not allowed", 6},
    };
    std::vector<Row> rows;
    for (const auto& [name, why, code] : documents) {
        const std::string document = name;
        const std::string error = "cannot read " + document + ": " + why;
        for (const std::string& arguments :
             {"releases " + document, "show " + document, "diff " + document + " x.xml",
              "plan " + document + " --to app", "install " + document + " --to app",
              "publish src --name N --release 2 --to " + document, "verify-release " + document + " --source src"}) {
            if (arguments.rfind("publish", 0) != 0 || std::string(why) != "File not found") // that is made
                rows.push_back({arguments, code, error});
        }
        rows.push_back({"report worstcase " + document + " o.html", 1, error});
    }
    rows.push_back({"show other.xml", 1, "cannot read other.xml: it is another kind of document"});
    rows.push_back({"releases other.xml", 1, "other.xml is not a declarations file"});
    check(rows);
    EXPECT_EQ(vo("releases page.html -v").err.find("\\"), std::string::npos) << "paths of this system";
}

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
    check({
        {"publish missing --to p.xml --name N --release 1", 1, "cannot publish missing: File not found"},
        {"publish file --to p.xml --name N --release 1", 1, "cannot publish file: it is no folder"},
        {"publish empty --to p.xml --name N --release 1", 1, "cannot publish empty: it holds no files"},
        {"publish src --to file/p.xml --name N --release 1", 1,
         "cannot publish src: cannot create the folder @/file: File exists"},
        {"install pub/declarations.xml", 2, "option --to is missing: the package is not installed anywhere yet"},
        {"install pub/declarations.xml --to file/app", 1, "cannot install to file/app: @/file: File in the way"},
        {"install pub/declarations.xml --to app --updates-dir file", 1,
         "cannot install to app: cannot create the folder file: Not a directory"},
        {"verify missing", 1, "\"missing\" is not installed; see vo installed"},
        {"repair a/b", 1, "\"a/b\" is not installed; see vo installed"},
        {"verify-release pub/declarations.xml --source missing", 1, "cannot compare with missing: File not found"},
        {"checksum missing", 1, "cannot read missing: File not found"},
        {"checksum folder", 1, "cannot read folder: Is a directory"},
        {"zip z.zip missing", 1, "cannot zip missing: No such file or directory"},
        {"zip folder src", 1, "cannot zip src: cannot use folder: Is a directory"},
        {"zip missing/z.zip src", 1, "cannot zip src: cannot open missing/z.zip: No such file or directory"},
        {"unzip missing.zip out", 1, "cannot unzip missing.zip: File not found"},
        {"unzip --list missing.zip", 1, "cannot read missing.zip: File not found"},
        {"lp missing.lp", 1, "cannot read missing.lp: File not found"},
        {"lp folder", 1, "cannot read folder: Is a directory"},
        {"lp equation.lp", 1,
         "cannot read equation.lp: Line 3: Only \"<=\" constraints fit the solver when maximizing"},
        {"report worstcase cut.xml o.html", 1, "cannot read cut.xml: Premature end of document."},
        {"table missing.csv o.csv", 1, "missing.csv: File not found"},
        {"table folder o.csv", 1, "cannot look at folder: Is a directory"},
        {"table table.csv missing/o.csv", 1, "cannot open missing/o.csv: No such file or directory"},
        {"table bad.csv o.xlsx", 1, "cannot read bad.csv: Unterminated quoted field in CSV at row 2"},
        {"table latin.csv o.xlsx", 1,
         "cannot read latin.csv: Invalid UTF-8 in CSV at line 2, column 2; --encoding names another encoding"},
        {"table wide.csv o.xlsx", 1, "wide.csv, row 1: Cell lies outside the limits of a worksheet"},
        {"table table.csv --sheet x/y o.xlsx", 1, "Invalid document name: x/y"},
        {"releases x --bad", 2, "unknown option --bad"},
        {"verify -q -v", 2, "options --quiet and --verbose exclude each other"},
        {"instal x", 2, "unknown command \"instal\"; did you mean install?"},
    });
    EXPECT_EQ(read("o.xlsx"), "old");
    const Tree left = tree(".");
    for (const char* file : {"p.xml", "o.csv", "o.html", "z.zip"})
        EXPECT_EQ(left.count(file), 0u) << file;
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
        return Row{command + " " + url + " --retries 0", 1, "cannot read " + url + ": " + why};
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
    const Row rows[] = {
        {"install pub/declarations.xml --to app", 1, "cannot install to app: " + chunk + ": File too large"},
        {"unzip whole.zip out", 1, "cannot unzip whole.zip: cannot write @/out/a/f1: File too large"},
        {"table table.csv o.csv", 1, "cannot write o.csv: File too large"},
        {"table table.csv o.xml", 1, "cannot write o.xml: File too large"},
        {"zip z.zip src", 1, "cannot zip src: Cannot close zip archive file: Zip failure in @/z.zip: File too large"},
    };
    for (Row row : rows) {
        row.error = QString::fromStdString(row.error).replace(QLatin1Char('@'), path("")).toStdString();
        checkRun(voBehind({QStringLiteral("sh"), QStringLiteral("-c"),
                           QStringLiteral("ulimit -f 8; trap '' XFSZ; exec \"$0\" \"$@\"")},
                          row.arguments),
                 row);
        EXPECT_FALSE(exists("app/f3") || exists("out/a/f1") || exists("o.csv") || exists("o.xml") || exists("z.zip"));
    }
}

#endif
