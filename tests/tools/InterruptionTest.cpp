#include "VoProgram.h"

#if !defined(_WIN32)

#include <csignal>

namespace {

using Interruption = VoProgram;

void Interrupt(QProcess& process)
{
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
}

// So many files that what is told of packing them fills a pipe, and whoever reads it once more.
constexpr int TalksLong = 800;

} // namespace

TEST_F(Interruption, ControlCStopsAnInstallationThatTheSameCommandThenFinishes)
{
    fillSource("one", 400);
    publish("one", "1.0.0", "--chunk-size 64K");
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
    EXPECT_TRUE(tree("app") == tree("one"));
    EXPECT_EQ(vo("verify").code, 0);
}

TEST_F(Interruption, ControlCStopsAPublicationAndNothingShows)
{
    fillSource("one", TalksLong);
    const std::string command = "publish @one --to @pub/declarations.xml --name Examples --release 1.0.0";
    EXPECT_EQ(voUntil(command + " -v", 5, Interrupt).code, 5);
    EXPECT_FALSE(exists("pub"));
    EXPECT_EQ(vo(command).code, 0);
}

TEST_F(Interruption, APublicationThatAnotherOvertakesShowsNothing)
{
    fillSource("one", TalksLong);
    publish("one", "1.0.0");
    const Outcome overtaken = voUntil("publish @one --to @pub/declarations.xml --name Examples --release 1.2.0 -v", 5,
                                      [&](QProcess&) { publish("one", "1.1.0"); });
    EXPECT_EQ(overtaken.code, 1);
    EXPECT_NE(overtaken.err.find("was published by another run meanwhile; give the command again"), std::string::npos);
    EXPECT_EQ(vo("releases @pub/declarations.xml").out.find("1.2.0"), std::string::npos);
}

#if defined(VO_KILL_LIBRARY)

// The program dies before a call that changes something, every few calls, or at each with VOCORE_FULL_MATRIX set.
TEST_F(Interruption, WhatAKilledProgramLeftIsFinishedByTheSameCommand)
{
    const char* const parts[] = {"pub", "app", "data"};
    const auto copy = [&](const std::string& from, const std::string& to) {
        for (const char* const part : parts) {
            std::filesystem::remove_all(m_scratch.native(to + part));
            if (exists(from + part))
                std::filesystem::copy(m_scratch.native(from + part), m_scratch.native(to + part),
                                      std::filesystem::copy_options::recursive);
        }
    };
    const auto keep = [&](const char* name) {
        std::filesystem::create_directory(m_scratch.native(name));
        copy("", name + std::string("/"));
    };
    const std::string install = "install @pub/declarations.xml --to @app";
    const std::string second = "publish @two --to @pub/declarations.xml --name Examples --release 1.1.0";
    fillSource("one", 12);
    fillSource("two", 9);
    write("two/file0.txt", "not empty any more");
    publish("one", "1.0.0");
    keep("first");
    EXPECT_EQ(vo(install).code, 0);
    EXPECT_EQ(vo(second).code, 0);
    keep("installed");
    EXPECT_EQ(vo(install + " --stage-only").code, 0);
    keep("staged");
    copy("none/", "");
    copy("first/", "");
    EXPECT_EQ(vo(second).code, 0);
    keep("second");

    const struct
    {
        const char* before; // what was kept
        std::string work;
        int done; // its end when the killed one had done everything
        std::string rest;
    } rows[] = {{"first", second, 6, install},
                {"second", install, 3, ""},
                {"installed", "update", 3, ""},
                {"installed", install + " --stage-only", 0, "commit"},
                {"staged", "commit", 3, ""}};
    const int stride = qEnvironmentVariableIsSet("VOCORE_FULL_MATRIX") ? 1 : 11;
    for (const auto& row : rows) {
        int runs = 0;
        for (int code = -1, number = 1; code == -1; number += stride, ++runs) {
            SCOPED_TRACE("vo " + row.work + " killed at call " + std::to_string(number));
            copy(row.before + std::string("/"), "");
            code = voBehind({QStringLiteral("env"), QStringLiteral("LD_PRELOAD=" VO_KILL_LIBRARY),
                             QStringLiteral("VO_KILL_AT=%1").arg(number)},
                            row.work)
                       .code;
            const Outcome again = vo(row.work);
            EXPECT_TRUE(again.code == row.done || (again.code == 0 && code == -1)) << again;
            EXPECT_EQ(row.rest.empty() ? 0 : vo(row.rest).code, 0);
            ASSERT_TRUE(tree("app") == tree("two"));
            EXPECT_EQ(vo("verify").code, 0);
        }
        EXPECT_GT(runs, 2) << row.work;
    }
}

#endif

#endif
