#include <Gui/detail/SelectInFolder.h>

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QUrl>

namespace vo::detail {

bool SelectInFolder(const QUrl& file)
{
    // The program splits its line by itself: the option and the quoted name must stand together.
    QProcess explorer;
    explorer.setProgram(QStringLiteral("explorer.exe"));
    explorer.setNativeArguments(QStringLiteral("/select,\"%1\"").arg(QDir::toNativeSeparators(file.toLocalFile())));
    return explorer.startDetached();
}

} // namespace vo::detail
