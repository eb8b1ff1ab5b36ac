#pragma once

#include <Core/VoString.h>
#include <Core/VoVariant.h>

#include <cstddef>
#include <optional>

namespace vo::detail {

/// Finds a column by its header: the first that is spelt alike, else the first that differs in case only.
class ColumnSearch
{
public:
    /// The header stays alive.
    explicit ColumnSearch(const VoString& header)
        : m_header(header)
    {
    }

    /// The next header in question.
    void offer(const VoVariant& value, std::size_t column)
    {
        if (m_alike || value.isNull())
            return;
        const VoString text = value.toString();
        if (text.equal(m_header, VoString::CaseSensitive))
            m_alike = column;
        else if (!m_similar && text.equal(m_header, VoString::CaseInsensitive))
            m_similar = column;
    }

    /// Throws VoNotFoundException.
    std::size_t found() const
    {
        if (!m_alike && !m_similar)
            throw VoNotFoundException(m_header);
        return m_alike ? *m_alike : *m_similar;
    }

private:
    const VoString& m_header;
    std::optional<std::size_t> m_alike;
    std::optional<std::size_t> m_similar;
};

} // namespace vo::detail
