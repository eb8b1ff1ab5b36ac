#include <Download/detail/VoRedirectPolicy.h>

#include <QtCore/QString>
#include <QtCore/QUrl>

namespace vo::detail {

namespace {

// The one spelling of a host: lower case, in the form that the name service knows, without the root's dot.
QString Normalised(const QString& host)
{
    QString name = QString::fromLatin1(QUrl::toAce(host));
    if (name.isEmpty())
        name = host; // an address
    name = name.toLower();
    if (name.endsWith(QLatin1Char('.')))
        name.chop(1);
    return name;
}

bool IsBelow(const QString& host, const QString& domain)
{
    return host == domain || host.endsWith(QLatin1Char('.') + domain);
}

} // namespace

RedirectVerdict RedirectDecision(const QUrl& from, const QUrl& to, const RedirectHosts& hosts)
{
    if (from.scheme() != to.scheme() && to.scheme() != QLatin1String("https"))
        return RedirectVerdict::UnsafeScheme;

    const QString host = Normalised(to.host());
    const QString primary = Normalised(hosts.primary.toQString());
    QString secondary = hosts.secondary.toQString();
    if (secondary.startsWith(QLatin1Char('.')))
        secondary.remove(0, 1);
    secondary = Normalised(secondary);
    const bool allowed = !host.isEmpty() && ((!primary.isEmpty() && host == primary) ||
                                             (!secondary.isEmpty() && IsBelow(host, secondary)));
    return allowed ? RedirectVerdict::Approved : RedirectVerdict::UnsafeDomain;
}

} // namespace vo::detail
