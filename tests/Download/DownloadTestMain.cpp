#include "DownloadScenarios.h"

#include <VoTestSupport.h>

#include <QtCore/QCoreApplication>
#include <exception>
#include <iostream>

// The download service needs an application object, and the thread of the tests owns the service. What can only be
// shown in a process of its own is run by the tests as "--scenario name argument...".
int main(int argc, char** argv)
{
    std::set_terminate([] {
        if (std::current_exception())
            std::cerr << "terminated by: " << vo::CurrentExceptionText().toStdString() << std::endl;
        std::abort();
    });
    if (argc >= 3 && std::string(argv[1]) == "--scenario")
        return vo::test::RunScenario(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
