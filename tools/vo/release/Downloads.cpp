#include <vo/release/Downloads.h>

#include <vo/Session.h>
#include <vo/line/Arguments.h>
#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>
#include <vo/screen/Console.h>

#include <Download/VoDownloadManager.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>
#include <limits>

namespace vo::tool {
namespace {

constexpr std::int64_t UsualRetries = 3;
constexpr std::uint64_t LowestLimit = 1024; // bytes a second; below, a body is more headers than content

/// Adds certificate authorities to those that the system trusts.
void Trust(const VoFilePath& authorities)
{
    const VoString name = PathText(authorities);
    QFile file(QString::fromUtf8(name.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        throw UsageError("option --ca-file: \"" + name + "\" cannot be read: " + VoString(file.errorString()));
    const QList<QSslCertificate> certificates = QSslCertificate::fromDevice(&file, QSsl::Pem);
    if (certificates.isEmpty())
        throw UsageError("option --ca-file: \"" + name + "\" holds no certificate");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(certificates);
    QSslConfiguration::setDefaultConfiguration(configuration);
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
        {"ca-file", "FILE", "trust the certificate authorities in this file too (PEM)"},
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
    const VoString host = arguments.text("redirect-host").value_or("");
    const VoString domain = arguments.text("redirect-domain").value_or("");
    if (!host.isEmpty() || !domain.isEmpty())
        VoDownloadManager::SetRedirectHosts(host, domain);
    if (const auto authorities = arguments.file("ca-file"))
        Trust(*authorities);
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
