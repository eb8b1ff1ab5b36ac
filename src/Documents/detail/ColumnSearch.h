#pragma once

#include <Core/VoString.h>
#include <Core/VoVariant.h>

#include <cstddef>

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
        if (m_alike != NoColumn || value.isNull())
            return;
        const VoString text = value.toString();
        if (text.equal(m_header, VoString::CaseSensitive))
            m_alike = column;
        else if (m_similar == NoColumn && text.equal(m_header, VoString::CaseInsensitive))
            m_similar = column;
    }

    /// @throws VoNotFoundException
    std::size_t found() const
    {
        const std::size_t column = m_alike != NoColumn ? m_alike : m_similar;
        if (column == NoColumn)
            throw VoNotFoundException(m_header);
        return column;
    }

private:
    static constexpr std::size_t NoColumn = static_cast<std::size_t>(-1);

    const VoString& m_header;
    std::size_t m_alike = NoColumn;
    std::size_t m_similar = NoColumn;
};

} // namespace vo::detail
