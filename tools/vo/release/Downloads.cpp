#include <vo/release/Downloads.h>

#include <vo/Session.h>
#include <vo/line/Arguments.h>
#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>
#include <vo/screen/Console.h>

#include <Core/VoException.h>
#include <Download/VoDownloadManager.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslKey>

#include <limits>
#include <string_view>

namespace vo::tool {
namespace {

constexpr std::int64_t UsualRetries = 3;
constexpr std::uint64_t LowestLimit = 1024; // bytes a second; below, a body is more headers than content

constexpr qint64 LongestPem = 1 << 20;

/// The content of a file with certificates.
QByteArray PemOf(const char* option, const VoFilePath& path)
{
    const VoString name = PathText(path);
    QFile file(QString::fromUtf8(name.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        throw UsageError(VoString("option --") + option + ": \"" + name +
                         "\" cannot be read: " + VoString(file.errorString()));
    return file.read(LongestPem);
}

[[noreturn]] void ThrowWithout(const char* option, const VoFilePath& path, const char* missing)
{
    throw UsageError(VoString("option --") + option + ": \"" + PathText(path) + "\" holds no " + missing);
}

/// Adds certificate authorities to those that the system trusts.
void Trust(const VoFilePath& authorities)
{
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(PemOf("ca-file", authorities), QSsl::Pem);
    if (certificates.isEmpty())
        ThrowWithout("ca-file", authorities, "certificate");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(certificates);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

/// Shows servers that ask for it a certificate, whose key stands in the same file.
void Introduce(const VoFilePath& path)
{
    const QByteArray pem = PemOf("client-certificate", path);
    const QList<QSslCertificate> chain = QSslCertificate::fromData(pem, QSsl::Pem);
    if (chain.isEmpty())
        ThrowWithout("client-certificate", path, "certificate");
    QSslKey key;
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec, QSsl::Dsa}) {
        if (key.isNull())
            key = QSslKey(pem, algorithm, QSsl::Pem, QSsl::PrivateKey);
    }
    if (key.isNull())
        ThrowWithout("client-certificate", path, "key without a passphrase");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(chain);
    configuration.setPrivateKey(key);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

/// "Name: value". What is behind the name may be a secret: no message repeats it.
void SetHeaders(VoDownloadPolicy& policy, const Arguments& arguments)
{
    // Other commands mean other things by an option of that name.
    const bool isMeant = arguments.command()->takes("retries");
    for (const VoString& text : isMeant ? arguments.texts("header") : std::vector<VoString>()) {
        const std::string_view header = text.toStdStringView();
        const std::size_t colon = header.find(':');
        if (colon == std::string_view::npos || colon == 0)
            throw UsageError("option --header: it is not written \"Name: value\"");
        const VoString value = VoString(header.substr(colon + 1)).trimmed();
        try {
            policy.setHeader(VoString(header.substr(0, colon)), value);
        } catch (const VoInvalidParameterException& refused) {
            throw UsageError("option --header: " + refused.message());
        }
    }
}

const VoUrl& RequireUrl(const VoLocation& location, const VoString& problem)
{
    if (!location.isUrl())
        throw UsageError("option --mirror: " + problem);
    return location.url();
}

/// The mirror holds what stands beside the document that the command names: by --from where it has that, else first.
void SetMirror(VoDownloadPolicy& policy, const Arguments& arguments)
{
    const auto mirror = arguments.location("mirror");
    if (!mirror)
        return;
    const VoString text = *arguments.text("mirror");
    policy.mirrors.pushBack(RequireUrl(*mirror, "\"" + text + "\" is not an http or https URL"));
    const auto from = arguments.location("from");
    policy.mirrored =
        RequireUrl(from ? *from : arguments.locationArgument(0), "no document on a server is named").parent();
}

} // namespace

std::vector<Option> DownloadOptions()
{
    return {
        {"retries", "N", "try what fails for a reason that may pass N times more, instead of 3"},
        {"mirror", "URL", "where else the folder of the named document is to be had"},
        {"limit-rate", "BYTES", "take at most so many bytes a second, such as 500K"},
        {"redirect-host", "HOST", "follow redirects to this host"},
        {"redirect-domain", "DOMAIN", "follow redirects to hosts of this domain"},
        {"header", "TEXT", "send this header to the server, such as \"Authorization: Bearer ...\"; may be given again",
         '\0', true},
        {"ca-file", "FILE", "trust the certificate authorities in this file too (PEM)"},
        {"client-certificate", "FILE",
         "show servers that ask for one this certificate; its key is in the file too (PEM)"},
    };
}

VoDownloadPolicy PrepareDownloads(const Arguments& arguments, Console& console, DownloadCounts& counts)
{
    VoDownloadPolicy policy;
    policy.retries = static_cast<unsigned>(arguments.integer("retries", UsualRetries, 0, 100));
    policy.highestRate = VoTransferRate(
        static_cast<double>(arguments.bytes("limit-rate", 0, LowestLimit, std::numeric_limits<std::int64_t>::max())));
    policy.onReceived = [&counts](const VoDownloadReceipt& receipt) {
        counts.documentBytes += static_cast<std::uint64_t>(receipt.transferred);
    };
    policy.onRetry = [&console, &counts](const VoDownloadRetry& retry) {
        ++counts.retries;
        console.note("trying again: " + retry.url.toString() + ": " + retry.reason);
    };
    SetMirror(policy, arguments);
    SetHeaders(policy, arguments);
    const VoString host = arguments.text("redirect-host").value_or("");
    const VoString domain = arguments.text("redirect-domain").value_or("");
    if (!host.isEmpty() || !domain.isEmpty())
        VoDownloadManager::SetRedirectHosts(host, domain);
    if (const auto authorities = arguments.file("ca-file"))
        Trust(*authorities);
    if (const auto certificate = arguments.file("client-certificate"))
        Introduce(*certificate);
    return policy;
}

void ShowDownloadCounts(Session& session, const VoLocation& document)
{
    if (!document.isUrl())
        return;
    const std::uint64_t bytes = session.counts.documentBytes;
    session.console.fact("documentBytes", "documents", BytesText(bytes), bytes);
    session.console.fact("retries", "tried again", session.counts.retries.load());
}

} // namespace vo::tool
