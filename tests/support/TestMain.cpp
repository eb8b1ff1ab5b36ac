#include <VoTestSupport.h>

#include <csignal>
#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
#if defined(SIGHUP)
    // In a shell's background, and behind nohup, these are ignored. A handler that does nothing does not pass on to the
    // programs that are started here.
    for (const int number : {SIGHUP, SIGINT}) {
        if (const auto before = std::signal(number, [](int) {}); before != SIG_IGN)
            std::signal(number, before);
    }
#endif
    // A library exception that leaves a thread or a destructor would otherwise end the program without a word.
    std::set_terminate([] {
        if (std::current_exception())
            std::cerr << "terminated by: " << vo::CurrentExceptionText().toStdString() << std::endl;
        std::abort();
    });
    return RUN_ALL_TESTS();
}
