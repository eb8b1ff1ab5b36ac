#include <vo/Memory.h>
#include <vo/Program.h>
#include <vo/line/Help.h>
#include <vo/screen/Terminal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <string_view>

int main(int argc, char** argv)
{
    vo::tool::PrepareMemory();
    vo::tool::PrepareTerminal();
    // What scripts ask most needs no application, which takes a seventh of the memory and of the time.
    if (argc == 2 && std::string_view(argv[1]) == "--version")
        return static_cast<int>(vo::tool::PrintVersion());
    const QCoreApplication application(argc, argv);
    return static_cast<int>(vo::tool::RunProgram(vo::tool::ProgramArguments(argc, argv)));
}
