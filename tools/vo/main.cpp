#include <vo/Program.h>
#include <vo/screen/Terminal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

int main(int argc, char** argv)
{
    vo::tool::PrepareTerminal();
    const QCoreApplication application(argc, argv);
    return static_cast<int>(vo::tool::RunProgram(vo::tool::ProgramArguments(argc, argv)));
}
