#pragma once

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <cstdint>
#include <type_traits>

namespace vo::tool {

/// @{ A value of the document that --json prints. Numbers beyond 2^53 lose digits, as in every reader of such
/// documents.
inline QJsonValue JsonValue(const VoString& text)
{
    return QJsonValue(text.toQString());
}
inline QJsonValue JsonValue(const char* text)
{
    return QJsonValue(QString::fromUtf8(text));
}
inline QJsonValue JsonValue(const VoUUID& id)
{
    return JsonValue(id.toString());
}
template <typename Number, std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool>, int> = 0>
QJsonValue JsonValue(Number number)
{
    return QJsonValue(static_cast<qint64>(number));
}
inline QJsonValue JsonValue(bool value)
{
    return QJsonValue(value);
}
inline QJsonValue JsonValue(double value)
{
    return QJsonValue(value);
}
inline QJsonValue JsonValue(const QJsonObject& object)
{
    return QJsonValue(object);
}
/// @}

/// One object of that document, made in one expression:
///
///     JsonRecord()("id", id)("bytes", 42)
class JsonRecord
{
public:
    template <typename Value>
    JsonRecord& operator()(const char* key, const Value& value)
    {
        m_object.insert(QString::fromLatin1(key), JsonValue(value));
        return *this;
    }

    void insert(const QString& key, const QJsonArray& rows) { m_object.insert(key, rows); }

    const QJsonObject& object() const { return m_object; }
    operator const QJsonObject&() const { return m_object; }

private:
    QJsonObject m_object;
};

} // namespace vo::tool
