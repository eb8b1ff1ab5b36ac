#include <XML/VoXMLValidator.h>

#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/NativePath.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoIODevice.h>
#include <Subsystem/VoLogging.h>
#include <XML/XMLDevice.h>
#include <XML/XMLText.h>

#include <QtCore/QUrl>
#include <QtCore/QXmlStreamReader>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkRequest>
#include <QtXmlPatterns/QAbstractMessageHandler>
#include <QtXmlPatterns/QXmlSchema>
#include <QtXmlPatterns/QXmlSchemaValidator>

#include <QtCore/QString>

using vo::detail::FromQtText;
using vo::detail::XMLDevice;

namespace {

// Keeps the first error; the parser's default prints to standard error.
class FirstMessage : public QAbstractMessageHandler
{
public:
    VoString text() const { return m_text; }

protected:
    void handleMessage(QtMsgType type, const QString& description, const QUrl&, const QSourceLocation& place) override
    {
        if (type == QtDebugMsg || type == QtInfoMsg || !m_text.isEmpty())
            return;
        m_text = FromQtText(PlainText(description));
        if (!place.isNull())
            m_text += " (line " + VoString(place.line()) + ", column " + VoString(place.column()) + ")";
    }

private:
    // Descriptions come as XHTML.
    static QString PlainText(const QString& description)
    {
        QXmlStreamReader reader(description);
        QString text;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::Characters)
                text += reader.text();
        }
        return reader.hasError() ? description : text;
    }

    VoString m_text;
};

// Through which includes and schema locations are fetched: from local files, nowhere else.
class LocalFilesOnly : public QNetworkAccessManager
{
protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* data) override
    {
        const bool isLocal = request.url().isLocalFile();
        return QNetworkAccessManager::createRequest(operation, isLocal ? request : QNetworkRequest(), data);
    }
};

QUrl LocalUrl(const VoFilePath& file)
{
    return QUrl::fromLocalFile(QString::fromStdU16String(vo::detail::ToNative(file).u16string()));
}

} // namespace

struct VoXMLValidator::Private
{
    VoFilePath path;
    FirstMessage schemaMessage; // goes after the schema, which refers to it
    mutable LocalFilesOnly files;
    QXmlSchema schema;

    VoString firstError(QIODevice& device, const QUrl& url) const;
};

// Empty for a valid document.
VoString VoXMLValidator::Private::firstError(QIODevice& device, const QUrl& url) const
{
    FirstMessage message;
    QXmlSchemaValidator validator(schema);
    validator.setMessageHandler(&message);
    validator.setNetworkAccessManager(&files);
    if (validator.validate(&device, url))
        return {};
    return message.text().isEmpty() ? VoString("Invalid XML") : message.text();
}

VoXMLValidator::VoXMLValidator(const VoFilePath& schema)
    : d(std::make_unique<Private>())
{
    d->path = schema;
    d->schema.setMessageHandler(&d->schemaMessage);
    d->schema.setNetworkAccessManager(&d->files);
    const XMLDevice device(schema, XMLDevice::Reading);
    d->schema.load(&device.adapter(), LocalUrl(schema));
    device.adapter().rethrow();
    if (!d->schema.isValid())
        throw VoInvalidXMLSchemaException(schema.toString(), d->schemaMessage.text());
}

VoXMLValidator::VoXMLValidator(VoXMLValidator&& other) noexcept = default;
VoXMLValidator& VoXMLValidator::operator=(VoXMLValidator&& other) noexcept = default;
VoXMLValidator::~VoXMLValidator() = default;

void VoXMLValidator::validate(const VoFilePath& file) const
{
    if (!isValid(file))
        throw VoInvalidXMLException(file, d->path);
}

void VoXMLValidator::validate(VoIODevice& device) const
{
    const XMLDevice source(device, XMLDevice::Reading);
    const VoString error = d->firstError(source.adapter(), QUrl(QStringLiteral("file:///")));
    source.adapter().rethrow();
    if (!error.isEmpty())
        throw VoInvalidXMLException(error);
}

bool VoXMLValidator::isValid(const VoFilePath& file) const
{
    const XMLDevice source(file, XMLDevice::Reading);
    const VoString error = d->firstError(source.adapter(), LocalUrl(file));
    source.adapter().rethrow();
    if (!error.isEmpty())
        vo::logging::Logger::Get("xml").information("Invalid XML: " + file.toString() + ": " + error);
    return error.isEmpty();
}
