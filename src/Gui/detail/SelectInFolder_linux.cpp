#include <Gui/detail/SelectInFolder.h>

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUrl>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace vo::detail {

bool SelectInFolder(const QUrl& file)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    constexpr int patience = 2000; // milliseconds: a file manager may have to be started
    const QString interface = QStringLiteral("org.freedesktop.FileManager1");
    QDBusMessage message = QDBusMessage::createMethodCall(interface, QStringLiteral("/org/freedesktop/FileManager1"),
                                                          interface, QStringLiteral("ShowItems"));
    message << QStringList{QString::fromLatin1(file.toEncoded())} << QString();
    return bus.call(message, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

} // namespace vo::detail
