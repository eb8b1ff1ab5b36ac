// A small application for the tests, which look at it from outside: what it prints, and how it ends.

#include <Application/VoApplication.h>
#include <Core/VoExceptionText.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>

#include <iostream>

namespace {

void Say(const VoString& text)
{
    std::cout << text << std::endl;
}

int Run(int argc, char** argv)
{
    VoApplication application({"test-app", "Test", VoVersion(1, 2, 3, VoVersion::Release), "test"}, argc, argv);
    application.addOption({{"single"}, "Only one of them"});
    application.addOption({{"busy"}, "Works until it is stopped"});
    application.parseCommandLine();
    const VoReceiver first = application.atQuit([] { Say("first handler"); });
    const VoReceiver second = application.atQuit([] { throw VoString("fault"); });
    const VoReceiver third = application.atQuit([] { Say("third handler"); });
    const VoReceiver arguments =
        application.onArguments([&](const VoDeque<VoString>& texts, const VoString& directory) {
            VoString line = directory + ":";
            for (const VoString& text : texts)
                line += " <" + text + ">";
            Say(line);
            if (!texts.isEmpty() && texts.back() == "quit")
                application.quit(7);
        });
    if (application.isSet("single") && !application.claimSingleInstance(VoTimeDuration(VoSeconds(20)))) {
        Say("handed over");
        return 0;
    }
    Say("ready");
    if (application.isSet("busy"))
        application.stopFlag().waitFor(VoTimeDuration(VoHours(1)));
    return application.exec();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (...) {
        Say(vo::CurrentExceptionText());
        return 99;
    }
}
