#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoUrl.h>
#include <Gui/VoDesktopServices.h>
#include <ScratchFolder.h>

#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>

namespace {

const char* const Schemes[] = {"file", "http", "https", "mailto"};

/// Stands in for the desktop: keeps what is to be opened.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop()
    {
        for (const char* scheme : Schemes)
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "open");
    }

    ~Desktop() override
    {
        for (const char* scheme : Schemes)
            QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }

    std::string taken() { return std::exchange(m_opened, std::string()); }

public Q_SLOTS:
    void open(const QUrl& url) { m_opened = url.toEncoded().toStdString(); }

private:
    std::string m_opened;
};

class DesktopServices : public vo::test::GuiTest
{
protected:
    std::string urlOf(const std::string& name) const { return "file://" + scratch.native(name).string(); }

    vo::test::ScratchFolder scratch;
    Desktop desktop;
};

} // namespace

TEST_F(DesktopServices, OpenFilesOfAnyNameAndFolders)
{
    VoDesktopServices::Install();
    VoFileSystem::OpenFile(scratch.write("a #1?%20.csv", "x"));
    EXPECT_EQ(desktop.taken(), urlOf("a%20%231%3F%2520.csv"));
    VoFileSystem::OpenFile(scratch.write("not-\xff-UTF-8", "x"));
    EXPECT_EQ(desktop.taken(), urlOf("not-%FF-UTF-8"));
    VoFileSystem::OpenDirectory(VoDirectoryPath(scratch.path("").path()));
    EXPECT_EQ(desktop.taken(), urlOf(""));
    EXPECT_THROW(VoFileSystem::OpenFile(scratch.path("missing")), VoFileNotFoundException);
    EXPECT_EQ(desktop.taken(), "");
    VoFileSystem::SetOpener(nullptr);
}

TEST_F(DesktopServices, ShowTheFolderWhereNothingCanSelect)
{
    const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    VoDesktopServices::ShowFile(scratch.write("file", "x"));
    EXPECT_EQ(desktop.taken() + "/", urlOf(""));
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
}

TEST_F(DesktopServices, OpenAddressesOfFourSchemesOnly)
{
    for (const char* url : {"http://host/x?y=1#z", "https://host", "mailto:someone@host"}) {
        VoDesktopServices::OpenUrl(VoUrl(url));
        EXPECT_EQ(desktop.taken(), url);
    }
    scratch.write("file", "x");
    VoDesktopServices::OpenUrl(VoUrl(VoString("FILE://localhost" + scratch.native("file").string())));
    EXPECT_EQ(desktop.taken(), urlOf("file"));
    for (const char* url :
         {"", "file", "ftp://host/x", "javascript:alert(1)", "smb://host/x", "file://host/share/x", "file:////host/x",
          "data:text/html,x", "http:", "https:///x", "mailto:", "ms-settings:about", "x-man-page://\n1"})
        EXPECT_THROW(VoDesktopServices::OpenUrl(VoUrl(url)), VoInvalidParameterException) << url;
    EXPECT_THROW_MSG(VoDesktopServices::OpenUrl(VoUrl("evil:\x1b[2J")), VoInvalidParameterException,
                     "Cannot open URL: evil:\\x1b[2J");
    EXPECT_EQ(desktop.taken(), "");
}

#include "VoDesktopServicesTest.moc"
