#include "VoProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>

#include <algorithm>
#include <csignal>
#include <set>

namespace {

int Number(const QJsonObject& document, const char* key)
{
    return document[QLatin1String(key)].toInt(-1);
}

std::string TextOf(const QJsonObject& document, const char* key)
{
    return document[QLatin1String(key)].toString().toStdString();
}

/// One member of every row of a list.
std::multiset<std::string> Column(const QJsonObject& document, const char* list, const char* key)
{
    std::multiset<std::string> values;
    for (const QJsonValue& row : document[QLatin1String(list)].toArray())
        values.insert(row.toObject()[QLatin1String(key)].toString().toStdString());
    return values;
}

using Texts = std::multiset<std::string>;

} // namespace

class Tool : public VoProgram
{
protected:
    /// Publishes two releases of "one" and "two": one file added, one changed, one removed, one moved.
    void publishTwo(int files = 40, const std::string& options = "--chunk-size 2K")
    {
        fillSource("one", files);
        fillSource("two", files);
        write("two/added", "new");
        write("two/file0.txt", "changed");
        remove("two/file5");
        ASSERT_TRUE(QFile::rename(path("two/file10"), path("two/moved")));
        first = publish("one", "1.0.0", options);
        second = publish("two", "1.1.0", options);
    }

    QJsonObject first;
    QJsonObject second;
};

TEST_F(Tool, AReleaseGoesTheWholeRoadFromPublicationToUninstallation)
{
    publishTwo();
    EXPECT_EQ(TextOf(first, "package"), TextOf(second, "package")) << "the name tells that it is the next release";
    EXPECT_EQ(Number(first, "files"), 40);

    voJson("install @pub/declarations.xml --release 1.0.0 --to @app");
    EXPECT_TRUE(tree("app") == tree("one"));
    EXPECT_EQ(Number(voJson("install @pub/declarations.xml --release 1.0.0", 3), "exitCode"), 3);

    const QJsonObject update = voJson("install @pub/declarations.xml");
    EXPECT_TRUE(tree("app") == tree("two"));
    EXPECT_EQ(Number(update, "added"), 2);
    EXPECT_EQ(Number(update, "modified"), 1);
    EXPECT_EQ(Number(update, "removed"), 2);
    EXPECT_EQ(TextOf(update, "installedRelease"), "1.0.0.0");
    EXPECT_LT(Number(update, "chunksFetched"), Number(second, "chunks"));
    EXPECT_EQ(vo("install @pub/declarations.xml").code, 3);
    EXPECT_TRUE(tree("app") == tree("two"));
    EXPECT_FALSE(exists("data/updates/download/" + TextOf(second, "package"))) << "staged chunks are gone";

    const Outcome installed = vo("installed");
    EXPECT_EQ(installed.out, TextOf(second, "package") + "  Examples  1.1.0  40 files  " + text("app") + "\n");

    EXPECT_EQ(vo("uninstall Examples").code, 0);
    EXPECT_FALSE(exists("app"));
    EXPECT_EQ(vo("installed").out, "");
    EXPECT_EQ(vo("uninstall Examples").code, 3);
}

TEST_F(Tool, NothingOfOthersIsReplacedUnasked)
{
    publishTwo();
    write("app/file0.txt", "mine");
    EXPECT_EQ(Column(voJson("plan @pub/declarations.xml --to @app", 6), "claims", "path"), (Texts{"file0.txt"}));
    const Outcome refused = vo("install @pub/declarations.xml --to @app");
    EXPECT_EQ(refused.code, 6);
    EXPECT_NE(refused.out.find("replace file0.txt"), std::string::npos);
    EXPECT_EQ(read("app/file0.txt"), "mine");
    EXPECT_EQ(vo("install @pub/declarations.xml --to @app --overwrite").code, 0);
    EXPECT_TRUE(tree("app") == tree("two"));

    EXPECT_EQ(vo("install @pub/declarations.xml --to @elsewhere").code, 6);
    ASSERT_TRUE(QDir().rename(path("pub"), path("published")));
    EXPECT_EQ(vo("install @published/declarations.xml").code, 6);
    EXPECT_EQ(vo("install @published/declarations.xml --move").code, 3);
    EXPECT_EQ(vo("install @published/declarations.xml").code, 3) << "the new place is recorded";
}

// As it is when a process was killed between the files, the listing, the registry and the record of the source.
TEST_F(Tool, WhatIsNotRecordedWhollyIsNotUpToDate)
{
    publishTwo();
    const std::string package = TextOf(second, "package");
    ASSERT_EQ(vo("install @pub/declarations.xml --to @app").code, 0);
    remove("data/updates/installed/packages.xml");
    EXPECT_EQ(vo("install @pub/declarations.xml").code, 0);
    EXPECT_EQ(vo("install @pub/declarations.xml").code, 3);
    remove("data/updates/sources/" + package + ".txt");
    EXPECT_EQ(vo("install @pub/declarations.xml").code, 3);
    EXPECT_TRUE(exists("data/updates/sources/" + package + ".txt"));

    ASSERT_TRUE(QDir(path("data/updates/installed"))
                    .rename(QString::fromStdString(package + ".xml"), QString::fromStdString(package + ".removed")));
    EXPECT_EQ(vo("uninstall Examples").code, 0) << "known by its name";
    EXPECT_EQ(vo("installed").out, "");
    EXPECT_EQ(vo("uninstall Examples").code, 3);
}

TEST_F(Tool, DamageIsFoundNamedAndRepaired)
{
    publishTwo();
    ASSERT_EQ(vo("install @pub/declarations.xml --to @app").code, 0);
    EXPECT_EQ(vo("verify").code, 0);
    EXPECT_EQ(vo("repair Examples").code, 3);

    remove("app/added");
    QByteArray flipped = read("app/moved");
    flipped[0] = static_cast<char>(flipped[0] ^ 1);
    write("app/moved", flipped);
    write("app/board 1/extra", "not ours");
    const QJsonObject found = voJson("verify Examples", 4);
    EXPECT_EQ(Column(found, "findings", "path"),
              (Texts{text("app/added"), text("app/moved"), text("app/board 1/extra")}));
    EXPECT_EQ(Column(found, "findings", "kind"), (Texts{"missing", "changed", "extra"}));

    const QJsonObject repaired = voJson("repair " + TextOf(second, "package"));
    EXPECT_EQ(Number(repaired, "restored"), 2);
    Tree expected = tree("two");
    expected["board 1/extra"] = "not ours";
    EXPECT_EQ(tree("app"), expected);
    EXPECT_EQ(vo("verify").code, 0) << "extra files are no difference";
}

TEST_F(Tool, RepairFindsTheReleaseAlsoWhereItIsToldTo)
{
    publishTwo();
    ASSERT_EQ(vo("install @pub/declarations.xml --release 1.0 --to @app").code, 0);
    remove("app/file0.txt");
    remove("data/updates/sources");
    const Outcome untold = vo("repair Examples");
    EXPECT_EQ(untold.code, 2) << untold;
    EXPECT_EQ(vo("repair Examples --from @" + definition(second)).code, 1) << "another release";
    EXPECT_EQ(vo("repair Examples --from @pub/declarations.xml").code, 0);
    EXPECT_TRUE(tree("app") == tree("one"));
}

TEST_F(Tool, APlanSaysWhatInstallingThenDoesAndChangesNothing)
{
    publishTwo();
    ASSERT_EQ(vo("install @pub/declarations.xml --release 1.0.0 --to @app").code, 0);
    const Tree before = tree(".");
    QJsonObject plan = voJson("plan @pub/declarations.xml");
    QJsonObject dryRun = voJson("install @pub/declarations.xml --dry-run");
    EXPECT_EQ(tree("."), before);
    plan.remove(QStringLiteral("command"));
    dryRun.remove(QStringLiteral("command"));
    EXPECT_EQ(plan, dryRun);

    EXPECT_EQ(Column(plan, "files", "path"), (Texts{"added", "file0.txt", "file10", "file5", "moved"}));
    EXPECT_EQ(Column(plan, "files", "action"), (Texts{"add", "copy", "remove", "remove", "update"}));
    EXPECT_EQ(Column(plan, "files", "from"), (Texts{"", "", "", "", "file10"}));
    const QJsonObject done = voJson("install @pub/declarations.xml");
    EXPECT_EQ(Number(done, "chunksFetched"), Number(plan, "chunksToFetch"));
    EXPECT_EQ(Number(done, "bytesFetched"), Number(plan, "bytesToFetch"));
    EXPECT_EQ(Number(done, "bytesWritten"), Number(plan, "bytesToWrite"));
    EXPECT_EQ(vo("plan @pub/declarations.xml").code, 3);
}

TEST_F(Tool, AnOlderReleaseIsRefusedUnlessAllowed)
{
    publishTwo();
    ASSERT_EQ(vo("install @pub/declarations.xml --to @app").code, 0);
    for (const char* command : {"install", "plan"}) {
        const Outcome refused = vo(std::string(command) + " @pub/declarations.xml --release 1.0.0 -q");
        EXPECT_EQ(refused.code, 6) << refused;
        EXPECT_EQ(refused.err, "vo: release 1.0.0 is older than release 1.1.0, which is installed; --allow-downgrade "
                               "installs it all the same\n");
    }
    EXPECT_TRUE(tree("app") == tree("two"));
    EXPECT_EQ(vo("install @pub/declarations.xml --release 1.0.0 --allow-downgrade").code, 0);
    EXPECT_TRUE(tree("app") == tree("one"));
}

TEST_F(Tool, ReleasesAreListedShownAndCompared)
{
    publishTwo();
    const std::string id = TextOf(first, "package");
    EXPECT_EQ(vo("releases @pub/declarations.xml").out,
              id + "  Examples  1.0.0\n" + id + "  Examples  1.1.0  newest\n");

    const QJsonObject shown = voJson("show @pub/declarations.xml --release 1.0.0");
    EXPECT_EQ(TextOf(shown, "versionID"), TextOf(first, "versionID"));
    EXPECT_EQ(Column(shown, "files", "target").size(), 40u);
    EXPECT_EQ(Number(shown, "bytes"), Number(first, "bytesIn"));
    EXPECT_EQ(voJson("show @" + definition(first))[QStringLiteral("files")], shown[QStringLiteral("files")]);

    const std::string definitions = "@" + definition(first) + " @" + definition(second);
    const QJsonObject differences = voJson("diff " + definitions);
    EXPECT_EQ(Column(differences, "differences", "target"), (Texts{"added", "file0.txt", "file10", "file5", "moved"}));
    EXPECT_EQ(Number(differences, "added"), 2);
    const Outcome text = vo("diff " + definitions);
    EXPECT_NE(text.out.find("added     added  3.0 B\n"), std::string::npos) << text;
    EXPECT_NE(text.out.find("modified  file0.txt  0.0 B -> 7.0 B\n"), std::string::npos) << text;
}

TEST_F(Tool, TheMatrixSaysWhatEveryUpdateTakes)
{
    publishTwo();
    const QJsonArray updates = voJson("plan @pub/declarations.xml --matrix")[QStringLiteral("updates")].toArray();
    ASSERT_EQ(updates.size(), 3);
    const QJsonObject install = updates[0].toObject();
    EXPECT_EQ(TextOf(install, "to"), "1.0.0.0");
    EXPECT_EQ(Number(install, "files"), 40);
    EXPECT_EQ(Number(install, "chunks"), Number(first, "chunks"));
    EXPECT_EQ(Number(install, "bytesToFetch"), Number(first, "bytesOut"));
    EXPECT_EQ(Number(updates[1].toObject(), "bytesToFetch"), Number(second, "bytesOut"));
    const QJsonObject update = updates[2].toObject();
    EXPECT_EQ(TextOf(update, "from") + " " + TextOf(update, "to"), "1.0.0.0 1.1.0.0");
    EXPECT_EQ(Number(update, "files"), 3);
    EXPECT_LT(Number(update, "bytesToFetch"), Number(second, "bytesOut"));
    EXPECT_EQ(vo("plan @pub/declarations.xml --matrix --to @app").code, 2);
}

TEST_F(Tool, AReleaseIsCheckedAgainstItsSource)
{
    publishTwo();
    EXPECT_EQ(vo("verify-release @" + definition(first) + " --source @one").code, 0);
    write("one/file0.txt", "other");
    remove("one/file5");
    const QJsonObject found = voJson("verify-release @" + definition(first) + " --source @one", 4);
    EXPECT_EQ(Number(found, "differences"), 2);
    EXPECT_FALSE(exists("data/updates/installed")) << "nothing is recorded as installed";
}

TEST_F(Tool, DigestsAreThoseOfTheStandard)
{
    write("abc", "abc");
    write("empty", "");
    const std::string abc = "3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532  " + text("abc") + "\n";
    const std::string empty =
        "a7ffc6f8bf1ed76651c14756a061d662f580ff4de43b49fa82d80a4b80f8434a  " + text("empty") + "\n";
    EXPECT_EQ(vo("checksum @abc @empty").out, abc + empty);
    const Outcome missing = vo("checksum @abc @missing @. @empty");
    EXPECT_EQ(missing.out, abc + empty) << "the others are done";
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 2);
}

TEST_F(Tool, RelativePathsAreTakenFromTheCurrentDirectory)
{
    fillSource("one", 3);
    const Outcome published = vo("publish one --to pub/declarations.xml --name Examples --release 1.0.0");
    EXPECT_EQ(published.code, 0) << published;
    EXPECT_EQ(vo("install ./pub/../pub/declarations.xml --to app").code, 0);
    EXPECT_EQ(TextOf(voJson("installed")[QStringLiteral("packages")].toArray()[0].toObject(), "directory"),
              text("app"));
}

TEST_F(Tool, TheUpdatersDirectoryMayBeElsewhere)
{
    publishTwo();
    EXPECT_EQ(vo("install @pub/declarations.xml --to @app --updates-dir @elsewhere").code, 0);
    EXPECT_FALSE(exists("data"));
    EXPECT_EQ(vo("verify Examples --updates-dir @elsewhere").code, 0);
    EXPECT_NE(vo("verify Examples").code, 0) << "not known there";
}

TEST_F(Tool, NamesThatAreNotAsciiGoThroughInAnyLocale)
{
    write("Qu\xc3\xa4lle/\xe2\x82\xac \xd0\xb6.txt", "text");
    qputenv("LC_ALL", "C");
    const Outcome published =
        vo("publish @Qu\xc3\xa4lle --to @pub/declarations.xml --name \xc3\x84mter --release 1.0.0");
    EXPECT_EQ(published.code, 0) << published;
    EXPECT_NE(published.out.find("\xc3\x84mter"), std::string::npos);
    EXPECT_EQ(vo("install @pub/declarations.xml --to @app").code, 0);
    qunsetenv("LC_ALL");
    EXPECT_EQ(tree("app"), tree("Qu\xc3\xa4lle"));
}

TEST_F(Tool, ADocumentCannotSteerTheTerminal)
{
    fillSource("one", 1);
    publish("one", "1.0.0");
    write("pub/declarations.xml",
          read("pub/declarations.xml").replace("Examples", "a&#x9b;2Jb&#10;vo: forged\xe2\x80\xae"));
    EXPECT_NE(vo("releases @pub/declarations.xml").out.find("a\\x9b2Jb\\nvo: forged\\u202e"), std::string::npos);
    const Outcome json = vo("releases --json @pub/declarations.xml");
    EXPECT_NE(json.out.find("a\\u009b2Jb\\nvo: forged\\u202e"), std::string::npos) << json;
}

TEST_F(Tool, AProgressLineIsDrawnOnlyWhenWanted)
{
    publishTwo();
    const Outcome plain = vo("install @pub/declarations.xml --to @app");
    EXPECT_EQ(plain.err, "") << "standard error is no terminal";
    const Outcome drawn = vo("uninstall Examples --progress=always");
    EXPECT_EQ(drawn.err.substr(0, 12), "\rRemoving   ") << drawn;
    EXPECT_NE(drawn.err.find("40 of 40 files   100 %"), std::string::npos) << drawn;
    EXPECT_EQ(drawn.err.back(), '\r') << "the line is taken away";
}

// What can be wrong with a release is tried on the library; here one of each kind shows code and state.
TEST_F(Tool, HostileAndDamagedReleasesAreToldApartAndLeaveEverythingAsItWas)
{
    publishTwo();
    ASSERT_EQ(vo("install @pub/declarations.xml --release 1.0.0 --to @app").code, 0);
    const std::string folder = definition(second).substr(0, definition(second).rfind('/'));
    const QJsonObject plan = voJson("plan @pub/declarations.xml");
    const std::string chunk = folder + "/chunks/" + *Column(plan, "chunks", "id").begin() + ".vochk";
    const QByteArray sound = read(definition(second));
    struct
    {
        const char* what;
        std::string file;
        QByteArray bytes; // none: the file is missing
        int code;
    } const rows[] = {
        {"a missing chunk", chunk, QByteArray(), 1},
        {"a truncated chunk", chunk, read(chunk).left(10), 1},
        {"empty declarations", "pub/declarations.xml", "", 1},
        {"a missing definition", definition(second), QByteArray(), 1},
        {"a target that climbs out", definition(second), QByteArray(sound).replace("\"moved\"", "\"..\\evil\""), 6},
        {"an ID that climbs out", definition(second), QByteArray(sound).replace("packageID=\"", "packageID=\"..\\"), 6},
        {"a document type", definition(second),
         "<!DOCTYPE package [<!ENTITY a \"b\">]>" + sound.mid(sound.indexOf("<package")), 6},
    };
    const auto lasting = [this] { // all but what has been fetched so far, which the next run may use
        Tree all = tree(".");
        all.erase(all.lower_bound("data/updates/download"), all.lower_bound("data/updates/downloae"));
        return all;
    };
    const Tree before = lasting();
    for (const auto& row : rows) {
        const QByteArray saved = read(row.file);
        remove(row.file);
        if (!row.bytes.isNull())
            write(row.file, row.bytes);
        const Outcome run = vo("install @pub/declarations.xml -q");
        EXPECT_EQ(run.code, row.code) << row.what << "\n" << run;
        EXPECT_EQ(run.err.rfind("vo: ", 0), 0u) << row.what << "\n" << run;
        write(row.file, saved);
        EXPECT_TRUE(lasting() == before) << row.what;
    }
    EXPECT_EQ(vo("install @pub/declarations.xml").code, 0) << "all is mended";
    EXPECT_TRUE(tree("app") == tree("two"));
}

TEST_F(Tool, PublishingTakesNothingAwayUnasked)
{
    publishTwo();
    write("two/more.pdb", "left out");
    write("two/.voignore", "*.pdb\n");
    const Tree before = tree("pub");
    const std::string command = "publish @two --to @pub/declarations.xml --name Examples -q --release ";
    for (const auto& [release, message] : std::map<std::string, std::string>{
             {"1.1.0", "vo: release 1.1.0 is declared already; --replace publishes it anew\n"},
             {"1.0.5",
              "vo: release 1.0.5 is older than release 1.1.0, the newest; --older publishes it all the same\n"},
         }) {
        const Outcome refused = vo(command + release);
        EXPECT_EQ(refused.code, 6) << refused;
        EXPECT_EQ(refused.err, message);
        EXPECT_TRUE(tree("pub") == before);
    }
    EXPECT_EQ(vo(command + "1.0.5 --older --exclude /added --exclude file1").code, 0);
    EXPECT_EQ(vo(command + "1.1.0 --replace").code, 0);
    EXPECT_EQ(voJson("releases @pub/declarations.xml")[QStringLiteral("releases")].toArray().size(), 3);
    Tree expected = tree("two");
    expected.erase("more.pdb");
    expected.erase(".voignore");
    ASSERT_EQ(vo("install @pub/declarations.xml --to @app").code, 0);
    EXPECT_TRUE(tree("app") == expected);
    expected.erase("added");
    expected.erase("board 1/file1");
    ASSERT_EQ(vo("install @pub/declarations.xml --release 1.0.5 --allow-downgrade").code, 0);
    EXPECT_TRUE(tree("app") == expected);
}

#if !defined(_WIN32)

namespace {

void Interrupt(QProcess& process)
{
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
}

} // namespace

TEST_F(Tool, ControlCStopsAnInstallationThatTheSameCommandThenFinishes)
{
    publishTwo(400, "--chunk-size 64K");
    const std::string command = "install @pub/declarations.xml --to @app";
    const Outcome stopped = voUntil(command + " -v", 20, Interrupt);
    EXPECT_EQ(stopped.code, 5) << stopped.err.substr(stopped.err.size() -
                                                     std::min<std::size_t>(2000, stopped.err.size()));
    EXPECT_NE(stopped.err.find("vo: stopped as asked; nothing is left half-written, and the same command goes on from "
                               "here\n"),
              std::string::npos);
    EXPECT_EQ(vo("installed").out, "");

    const Outcome again = vo(command);
    EXPECT_EQ(again.code, 0) << again;
    EXPECT_TRUE(tree("app") == tree("two"));
    EXPECT_EQ(vo("verify").code, 0);
}

TEST_F(Tool, ControlCStopsAPublicationAndNothingShows)
{
    fillSource("one", 600);
    const std::string command = "publish @one --to @pub/declarations.xml --name Examples --release 1.0.0";
    EXPECT_EQ(voUntil(command + " -v", 5, Interrupt).code, 5);
    EXPECT_FALSE(exists("pub"));
    EXPECT_EQ(vo(command).code, 0);
}

#endif
