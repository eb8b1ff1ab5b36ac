#include "VoProgram.h"

#if !defined(_WIN32)

#include <algorithm>
#include <csignal>

namespace {

using Interruption = VoProgram;

void Interrupt(QProcess& process)
{
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
}

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
    fillSource("one", 600);
    const std::string command = "publish @one --to @pub/declarations.xml --name Examples --release 1.0.0";
    EXPECT_EQ(voUntil(command + " -v", 5, Interrupt).code, 5);
    EXPECT_FALSE(exists("pub"));
    EXPECT_EQ(vo(command).code, 0);
}

#endif
