#include <Core/VoHostTypes.h>

#include <QtCore/QUuid>

#include <ostream>

std::ostream& operator<<(std::ostream& stream, const YString& text)
{
    return stream << text.toStdString();
}

YString sp_GetGUID()
{
    const QByteArray text = QUuid::createUuid().toByteArray(QUuid::WithBraces);
    return YString(text.constData(), static_cast<std::size_t>(text.size()));
}
