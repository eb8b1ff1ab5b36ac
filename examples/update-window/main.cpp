#include "UpdateWindow.h"

#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    UpdateWindow window;
    window.show();
    return QApplication::exec();
}
