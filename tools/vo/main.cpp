#include <vo/Program.h>
#include <vo/screen/Terminal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return static_cast<int>(vo::tool::RunProgram(vo::tool::ProgramArguments(argc, argv)));
}
