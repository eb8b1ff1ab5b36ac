#include <Gui/VoClipboard.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoMathsException.h>
#include <Core/detail/Callback.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoVariantTable.h>
#include <Gui/VoMimeData.h>
#include <Gui/detail/MimeTypes.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoBroadcaster.h>

#include <QtCore/QBuffer>
#include <QtCore/QMimeData>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtCore/QVariant>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>

#include <limits>
#include <memory>
#include <utility>

namespace mime = vo::detail::mime;

namespace {

QClipboard& Clipboard()
{
    const auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    if (!application)
        throw VoNoClipboardException();
    if (QThread::currentThread() != application->thread())
        throw VoInvalidCallException("The clipboard belongs to the thread of the graphical application");
    return *QGuiApplication::clipboard();
}

// What is there now; an owner that does not answer has nothing.
const QMimeData& Content()
{
    static const auto* const nothing = new QMimeData;
    const QMimeData* const content = Clipboard().mimeData();
    return content ? *content : *nothing;
}

VoByteArray Bytes(const QByteArray& bytes)
{
    return VoByteArray(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

QByteArray Bytes(const VoByteArray& bytes)
{
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw VoOverflowException();
    return QByteArray(bytes.cdata(), static_cast<int>(bytes.size()));
}

QString Text(const VoByteArray& bytes)
{
    return QString::fromUtf8(Bytes(bytes));
}

// Texts and images go through the framework too, which offers them under the names of every platform.
void Add(QMimeData& target, const VoString& type, const VoByteArray& bytes)
{
    if (type == mime::Text)
        target.setText(Text(bytes));
    else if (type == mime::HTML)
        target.setHtml(Text(bytes));
    else
        target.setData(type.toQString(), Bytes(bytes));
    if (type == mime::PNG)
        target.setImageData(QImage::fromData(Bytes(bytes), "PNG"));
}

VoByteArray EncodedImage(const QMimeData& content)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    const auto image = content.imageData().value<QImage>();
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        throw VoInvalidMimeDataException(mime::PNG);
    return Bytes(bytes);
}

VoString TextOf(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return VoString(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

// The forms that a table can be read of.
VoMimeData Tabular()
{
    const QMimeData& content = Content();
    VoMimeData data;
    if (content.hasHtml())
        data.setHTML(TextOf(content.html()));
    if (VoClipboard::Contains(mime::CSV))
        data.setData(mime::CSV, VoClipboard::Data(mime::CSV));
    if (content.hasText())
        data.setText(TextOf(content.text()));
    return data;
}

[[noreturn]] void FailFor(const VoString& type)
{
    if (Content().formats().isEmpty())
        throw VoInvalidMimeDataException();
    throw VoInvalidMimeDataException(type);
}

VoBroadcaster<bool>& Changes()
{
    static auto* const changes = new VoBroadcaster<bool>;
    return *changes;
}

// Nothing may be thrown through the framework's event loop, and one callback that throws must not keep the others from
// hearing of a change.
template <typename Operation>
void Guarded(Operation operation) noexcept
{
    try {
        operation();
    } catch (...) {
        vo::logging::Logger::Get("clipboard").error(vo::CurrentExceptionText());
    }
}

} // namespace

void VoClipboard::Set(const VoMimeData& data)
{
    QClipboard& clipboard = Clipboard();
    auto content = std::make_unique<QMimeData>();
    for (const VoString& type : data.types())
        Add(*content, type, data.data(type));
    clipboard.setMimeData(content.release());
}

void VoClipboard::SetText(const VoString& text)
{
    VoMimeData data;
    data.setText(text);
    Set(data);
}

void VoClipboard::SetTable(const VoDataTable& table)
{
    VoMimeData data;
    data.setTable(table);
    Set(data);
}

void VoClipboard::SetTable(const VoVariantTable& table)
{
    SetTable(VoDataTable(table));
}

void VoClipboard::Clear()
{
    Clipboard().clear();
}

VoDeque<VoString> VoClipboard::Types()
{
    VoDeque<VoString> types;
    for (const QString& type : Content().formats())
        types.pushBack(TextOf(type));
    return types;
}

bool VoClipboard::Contains(const VoString& type)
{
    return Content().formats().contains(type.toQString(), Qt::CaseInsensitive);
}

VoByteArray VoClipboard::Data(const VoString& type)
{
    const QMimeData& content = Content();
    for (const QString& format : content.formats()) {
        if (TextOf(format) == type)
            return Bytes(content.data(format));
    }
    FailFor(type);
}

VoString VoClipboard::Text()
{
    if (!Content().hasText())
        FailFor(mime::Text);
    return TextOf(Content().text());
}

VoString VoClipboard::HTML()
{
    if (!Content().hasHtml())
        FailFor(mime::HTML);
    return TextOf(Content().html());
}

VoByteArray VoClipboard::PNG()
{
    if (Contains(mime::PNG)) {
        VoByteArray image = Data(mime::PNG);
        if (mime::IsPNG(image))
            return image;
    }
    if (!Content().hasImage())
        FailFor(mime::PNG);
    return EncodedImage(Content());
}

VoDataTable VoClipboard::Table()
{
    const VoMimeData data = Tabular();
    if (data.isEmpty())
        FailFor(mime::Text);
    return data.table();
}

VoVariantTable VoClipboard::VariantTable()
{
    const VoMimeData data = Tabular();
    if (data.isEmpty())
        FailFor(mime::Text);
    return data.variantTable();
}

VoReceiver VoClipboard::Connect(std::function<void(bool own)> callback)
{
    QClipboard& clipboard = Clipboard();
    vo::detail::RequireCallback(callback);
    constexpr const char* watched = "VoClipboard";
    if (!clipboard.property(watched).toBool()) {
        clipboard.setProperty(watched, true);
        // From the event loop: a callback that copies something would otherwise be called within itself.
        const auto tell = [&clipboard] { Guarded([&] { Changes().broadcast(clipboard.ownsClipboard()); }); };
        QObject::connect(&clipboard, &QClipboard::dataChanged, &clipboard, tell, Qt::QueuedConnection);
    }
    return Changes().connect([callback = std::move(callback)](bool own) { Guarded([&] { callback(own); }); });
}
