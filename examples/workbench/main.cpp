// A table of results: look at it, change it, take it elsewhere.
//
//   workbench [FILE]

#include "MainWindow.h"

#include <VoCore.h>
#include <VoCoreGui.h>

#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Workbench"));
    VoDesktopServices::Install();
    try {
        const VoDirectoryPath data = VoFileSystem::Directory(VoFileSystem::ApplicationData);
        MainWindow window(data.file("workbench.xml"));
        window.show();
        if (argc > 1)
            window.open(VoFilePath(argv[1]));
        return QApplication::exec();
    } catch (...) {
        QMessageBox::critical(nullptr, QStringLiteral("Workbench"), vo::CurrentExceptionText().toQString());
        return 1;
    }
}
