#include <XML/VoXMLValidator.h>

#include <Core/VoDeque.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIODevice.h>
#include <Subsystem/VoLogging.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLOutline.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QUrl>
#include <QtCore/QXmlStreamReader>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <QtXmlPatterns/QAbstractMessageHandler>
#include <QtXmlPatterns/QXmlSchema>
#include <QtXmlPatterns/QXmlSchemaValidator>

#include <QtCore/QString>

#include <limits>
#include <optional>

using vo::detail::FromQtText;
using vo::detail::XMLDevice;
using vo::detail::XMLOutline;

namespace {

using Error = VoXMLValidator::Error;

constexpr std::size_t MostErrors = 100;

// Keeps the first error; the parser's default prints to standard error.
class FirstMessage : public QAbstractMessageHandler
{
public:
    const std::optional<Error>& error() const { return m_error; }

protected:
    void handleMessage(QtMsgType type, const QString& description, const QUrl&, const QSourceLocation& place) override
    {
        if (type == QtDebugMsg || type == QtInfoMsg || m_error)
            return;
        m_error = Error{FromQtText(plainText(description)), 0, 0};
        if (!place.isNull()) {
            m_error->line = place.line();
            m_error->column = place.column();
        }
    }

private:
    // Descriptions come as XHTML.
    static QString plainText(const QString& description)
    {
        QXmlStreamReader reader(description);
        QString text;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::Characters)
                text += reader.text();
        }
        if (text.endsWith(QLatin1String(".."))) // two sentences meet
            text.chop(1);
        return reader.hasError() ? description : text;
    }

    std::optional<Error> m_error;
};

// The answer for what is not fetched: a failure, which makes the schema component go on without. Told through the event
// loop, since the component listens only once it has the reply.
class RefusedReply : public QNetworkReply
{
public:
    RefusedReply(const QNetworkRequest& request, QObject* parent)
        : QNetworkReply(parent)
    {
        setRequest(request);
        setUrl(request.url());
        open(QIODevice::ReadOnly);
        setError(ContentAccessDenied, QStringLiteral("Not followed"));
        setFinished(true);
        for (const char* signal : {"errorOccurred", "error"})
            QMetaObject::invokeMethod(this, signal, Qt::QueuedConnection,
                                      Q_ARG(QNetworkReply::NetworkError, ContentAccessDenied));
        QMetaObject::invokeMethod(this, "finished", Qt::QueuedConnection);
    }

    void abort() override {}

protected:
    qint64 readData(char*, qint64) override { return -1; }
};

// Fetches nothing: a document does not say what it is validated against.
class NoFiles : public QNetworkAccessManager
{
protected:
    QNetworkReply* createRequest(Operation, const QNetworkRequest& request, QIODevice*) override
    {
        return new RefusedReply(request, this);
    }
};

// Through which a schema's includes are fetched: from local files, nowhere else.
class LocalFilesOnly : public NoFiles
{
protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* data) override
    {
        const bool isLocal = request.url().isLocalFile() && request.url().host().isEmpty(); // no share of a server
        // Past the class between, which refuses: NOLINTNEXTLINE(bugprone-parent-virtual-call)
        return isLocal ? QNetworkAccessManager::createRequest(operation, request, data)
                       : NoFiles::createRequest(operation, request, data);
    }
};

QUrl LocalUrl(const VoFilePath& file)
{
    return QUrl::fromLocalFile(QString::fromStdU16String(vo::detail::ToNative(file).u16string()));
}

VoString Content(const XMLDevice& source)
{
    VoString content = source.device().readRemaining();
    if (content.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw VoOverflowException();
    return content;
}

} // namespace

struct VoXMLValidator::Private
{
    VoFilePath path;
    FirstMessage schemaMessage; // goes after the schema, which refers to it
    LocalFilesOnly schemaFiles;
    mutable NoFiles documentFiles;
    QXmlSchema schema;

    std::optional<Error> firstError(const QByteArray& document) const;
    VoDeque<Error> errors(const VoString& document, std::size_t most) const;
    std::optional<Error> firstError(const XMLDevice& source) const;
};

std::optional<Error> VoXMLValidator::Private::firstError(const QByteArray& document) const
{
    FirstMessage message;
    QXmlSchemaValidator validator(schema);
    validator.setMessageHandler(&message);
    validator.setNetworkAccessManager(&documentFiles);
    if (validator.validate(document, QUrl(QStringLiteral("file:///"))))
        return std::nullopt;
    return message.error() ? message.error() : Error{"Invalid XML", 0, 0};
}

VoDeque<Error> VoXMLValidator::Private::errors(const VoString& document, std::size_t most) const
{
    const XMLOutline outline(document);
    if (outline.error())
        return {*outline.error()};
    VoDeque<Error> errors;
    QByteArray bytes = QByteArray::fromRawData(document.c_str(), static_cast<int>(document.size()));
    QString text;
    std::optional<XMLOutline::Index> leftOut;
    for (std::size_t tries = 0; errors.size() < most && tries < 4 * MostErrors; ++tries) {
        const std::optional<Error> error = firstError(bytes);
        if (!error)
            break;
        std::optional<XMLOutline::Index> element = outline.elementAt(error->line, error->column);
        // Errors come in document order: one before what was left out last is about its absence.
        if (leftOut && element && *element < *leftOut)
            element = outline.parent(*leftOut);
        else
            errors.pushBack(*error);
        if (!element || !outline.parent(*element) || !outline.isUtf8())
            break;
        if (text.isEmpty())
            text = QString::fromUtf8(bytes);
        outline.leaveOut(*element, text);
        leftOut = element;
        bytes = text.toUtf8();
    }
    return errors;
}

std::optional<Error> VoXMLValidator::Private::firstError(const XMLDevice& source) const
{
    const VoDeque<Error> found = errors(Content(source), 1);
    return found.isEmpty() ? std::nullopt : std::optional(found[0]);
}

VoString VoXMLValidator::Error::toString() const
{
    return line == 0 ? reason : reason + " (line " + VoString(line) + ", column " + VoString(column) + ")";
}

VoXMLValidator::VoXMLValidator(const VoFilePath& schema)
    : m_private(std::make_unique<Private>())
{
    m_private->path = schema;
    m_private->schema.setMessageHandler(&m_private->schemaMessage);
    m_private->schema.setNetworkAccessManager(&m_private->schemaFiles);
    const XMLDevice device(schema, XMLDevice::Reading);
    m_private->schema.load(&device.adapter(), LocalUrl(schema));
    device.adapter().rethrow();
    if (!m_private->schema.isValid())
        throw VoInvalidXMLSchemaException(schema.toString(), m_private->schemaMessage.error()
                                                                 ? m_private->schemaMessage.error()->toString()
                                                                 : VoString());
}

VoXMLValidator::VoXMLValidator(VoXMLValidator&& other) noexcept = default;
VoXMLValidator& VoXMLValidator::operator=(VoXMLValidator&& other) noexcept = default;
VoXMLValidator::~VoXMLValidator() = default;

void VoXMLValidator::validate(const VoFilePath& file) const
{
    if (const std::optional<Error> error = m_private->firstError(XMLDevice(file, XMLDevice::Reading)))
        throw VoInvalidXMLException(VoInvalidXMLException(file, m_private->path).message() + ": " + error->toString());
}

void VoXMLValidator::validate(VoIODevice& device) const
{
    if (const std::optional<Error> error = m_private->firstError(XMLDevice(device, XMLDevice::Reading)))
        throw VoInvalidXMLException(error->toString());
}

bool VoXMLValidator::isValid(const VoFilePath& file) const
{
    const std::optional<Error> error = m_private->firstError(XMLDevice(file, XMLDevice::Reading));
    if (error)
        vo::logging::Logger::Get("xml").information("Invalid XML: " + file.toString() + ": " + error->toString());
    return !error;
}

VoDeque<Error> VoXMLValidator::errors(const VoFilePath& file) const
{
    return m_private->errors(Content(XMLDevice(file, XMLDevice::Reading)), MostErrors);
}

VoDeque<Error> VoXMLValidator::errors(VoIODevice& device) const
{
    return m_private->errors(Content(XMLDevice(device, XMLDevice::Reading)), MostErrors);
}
