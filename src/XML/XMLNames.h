#pragma once

#include <Core/VoString.h>

#include <QtCore/QString>

#include <array>
#include <cstddef>
#include <memory>

namespace vo::detail {

/// The names of a document that is read, which repeats a few of them: converted once and shared. Keeps a bounded
/// number; a name beyond these is merely converted again.
class XMLReadNames
{
public:
    std::shared_ptr<const VoString> shared(const QStringRef& name);

private:
    struct Entry
    {
        QString qtName;
        std::shared_ptr<const VoString> name;
    };

    std::array<Entry, 128> m_entries;
};

/// The names of a document that is written, likewise.
class XMLWrittenNames
{
public:
    /// Throws VoInvalidXMLOperation as RequireXMLText() does.
    QString decoded(const VoString& name);

private:
    struct Entry
    {
        std::string name;
        QString qtName;
    };

    std::array<Entry, 128> m_entries;
};

} // namespace vo::detail
