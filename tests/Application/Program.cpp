// A small application for the tests, which look at it from outside: what it prints, and how it ends.

#include <Application/VoApplication.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>

#include <iostream>

int main(int argc, char** argv)
{
    VoApplication application({"test-app", "Test", VoVersion(1, 2, 3, VoVersion::Release), "test"}, argc, argv);
    application.addOption({{"single"}, "Only one of them"});
    application.addOption({{"busy"}, "Works until it is stopped"});
    application.parseCommandLine();
    const VoReceiver first = application.atQuit([] { std::cout << "first handler" << std::endl; });
    const VoReceiver second = application.atQuit([] { std::cout << "second handler" << std::endl; });
    const VoReceiver arguments =
        application.onArguments([&](const VoDeque<VoString>& texts, const VoString& directory) {
            std::cout << directory << ":";
            for (const VoString& text : texts)
                std::cout << " <" << text << ">";
            std::cout << std::endl;
            if (!texts.isEmpty() && texts.back() == "quit")
                application.quit(7);
        });
    const bool isFirst = !application.isSet("single") || application.claimSingleInstance(VoTimeDuration(VoSeconds(20)));
    std::cout << (isFirst ? "ready" : "handed over") << std::endl;
    if (application.isSet("busy"))
        application.stopFlag().waitFor(VoTimeDuration(VoHours(1)));
    return isFirst ? application.exec() : 0;
}
