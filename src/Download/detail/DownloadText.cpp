#include <Download/detail/DownloadText.h>

#include <Core/VoString.h>

#include <QtCore/QString>

namespace vo::detail {

VoString FormatQuantity(double number, const QuantityUnit* units)
{
    while (!(number < units->below))
        ++units;
    return VoString(QStringLiteral("%1 %2")
                        .arg(number / units->divisor, 3, 'f', 1, QLatin1Char(' '))
                        .arg(QLatin1String(units->name)));
}

} // namespace vo::detail
