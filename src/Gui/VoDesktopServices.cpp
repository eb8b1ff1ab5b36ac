#include <Gui/VoDesktopServices.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoPrintable.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoNativeName.h>
#include <FileSystem/VoUrl.h>
#include <Gui/detail/SelectInFolder.h>

#include <QtCore/QByteArray>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtGui/QGuiApplication>

#include <exception>
#include <filesystem>

namespace {

std::filesystem::path AbsolutePath(const VoFilePath& path)
{
    try {
        return std::filesystem::absolute(vo::ToStdPath(path));
    } catch (const std::filesystem::filesystem_error& error) {
        throw VoInvalidCallException(VoString(error.what()));
    }
}

QUrl LocalUrl(const std::filesystem::path& native)
{
    if constexpr (std::filesystem::path::preferred_separator != '/')
        return QUrl::fromLocalFile(QString::fromStdU16String(native.generic_u16string()));
    // By the bytes: a name need not be UTF-8 to be opened.
    const std::string bytes = native.generic_string();
    return QUrl::fromEncoded("file://" + QByteArray::fromStdString(bytes).toPercentEncoding("/"));
}

void RequireApplication(const VoString& what)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        throw VoInvalidCallException("Cannot open " + what + ": no graphical application");
}

void Launch(const QUrl& url, const VoString& what)
{
    RequireApplication(what);
    if (!QDesktopServices::openUrl(url))
        throw VoInvalidCallException("Cannot open " + what);
}

// The desktop takes names that nothing bears without a word.
void RequireThere(const VoFilePath& path)
{
    if (!VoFileSystem::Exists(path))
        throw VoFileNotFoundException(path);
}

bool IsOpened(const QUrl& url)
{
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        return !url.host().isEmpty();
    if (scheme == QLatin1String("mailto"))
        return !url.path().isEmpty();
    const bool isHere = url.host().isEmpty() || url.host() == QLatin1String("localhost");
    return scheme == QLatin1String("file") && isHere && !url.path().startsWith(QLatin1String("//"));
}

} // namespace

void VoDesktopServices::Install() noexcept
{
    VoFileSystem::SetOpener(&VoDesktopServices::OpenFile);
}

void VoDesktopServices::OpenFile(const VoFilePath& path)
{
    RequireApplication(path.path());
    RequireThere(path);
    Launch(LocalUrl(AbsolutePath(path)), path.path());
}

void VoDesktopServices::OpenDirectory(const VoDirectoryPath& path)
{
    OpenFile(VoFilePath::CreateUnchecked(VoString(path.path())));
}

void VoDesktopServices::ShowFile(const VoFilePath& path)
{
    RequireApplication(path.path());
    RequireThere(path);
    const std::filesystem::path native = AbsolutePath(path);
    if (!vo::detail::SelectInFolder(LocalUrl(native)))
        Launch(LocalUrl(native.parent_path()), path.path());
}

void VoDesktopServices::OpenUrl(const VoUrl& url)
{
    QUrl opened = url.toQUrl();
    if (!opened.isValid() || !IsOpened(opened))
        throw VoInvalidParameterException("Cannot open URL: " + vo::Printable(url.toString()));
    if (!opened.isLocalFile())
        return Launch(opened, url.toString());
    opened.setHost(QString()); // "localhost" would make it a share
    OpenFile(VoFilePath(VoString(opened.toLocalFile())));
}
