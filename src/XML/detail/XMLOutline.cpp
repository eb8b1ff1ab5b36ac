#include <XML/detail/XMLOutline.h>

#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <IO/VoStringDevice.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLReadEngine.h>

#include <algorithm>

namespace vo::detail {

XMLOutline::XMLOutline(const VoString& document)
{
    VoStringDevice device(document);
    XMLReadEngine engine(XMLDevice(device, XMLDevice::Reading));
    const QXmlStreamReader& qt = engine.qt();
    std::vector<Index> open;
    try {
        for (;;) {
            const XMLReadEngine::Token token = engine.next();
            const int offset = static_cast<int>(qt.characterOffset());
            if (token == QXmlStreamReader::EndDocument)
                break;
            if (token == QXmlStreamReader::StartElement) {
                if (engine.stack().size() > MaximumXMLLevels)
                    throw VoStackLimitException();
                const std::optional<Index> parent = open.empty() ? std::nullopt : std::optional(open.back());
                open.push_back(m_elements.size());
                m_elements.push_back({parent, {qt.lineNumber(), qt.columnNumber()}, offset, offset});
            } else if (token == QXmlStreamReader::EndElement) {
                m_elements[open.back()].end = offset;
                open.pop_back();
            }
        }
    } catch (const VoInvalidXMLException& e) {
        m_error = VoXMLValidator::Error{e.message(), qt.lineNumber(), qt.columnNumber()};
    }
    const QStringRef encoding = qt.documentEncoding();
    m_isUtf8 = encoding.isEmpty() || encoding.compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) == 0;
}

std::optional<XMLOutline::Index> XMLOutline::elementAt(std::int64_t line, std::int64_t column) const
{
    const Place place(line, column);
    const auto found =
        std::lower_bound(m_elements.begin(), m_elements.end(), place,
                         [](const Element& element, const Place& wanted) { return element.place < wanted; });
    if (found == m_elements.end() || found->place != place)
        return std::nullopt;
    return static_cast<Index>(found - m_elements.begin());
}

void XMLOutline::leaveOut(Index element, QString& text) const
{
    const Element& lost = m_elements[element];
    const int begin =
        text.lastIndexOf(QLatin1Char('<'), lost.startTagEnd - 1); // which no start tag holds a second time
    for (int i = std::max(begin, 0); i < std::min(lost.end, text.size()); ++i) {
        if (!text[i].isSpace())
            text[i] = QLatin1Char(' ');
    }
}

} // namespace vo::detail
