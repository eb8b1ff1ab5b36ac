#include <Updater/detail/documents/PlainWriter.h>

#include <FileSystem/VoAtomicFileWriter.h>
#include <Updater/detail/documents/PackageValidator.h>

#include <algorithm>
#include <iterator>

namespace vo::updater::detail {

namespace {

// Bytes that are handed on at once.
constexpr std::size_t WrittenAtOnce = std::size_t{256} << 10;

} // namespace

bool IsPlainText(std::string_view text)
{
    const bool hasControls = std::any_of(text.begin(), text.end(),
                                         [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
    if (hasControls)
        return false;
    const bool isASCII =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return isASCII || SurvivesXML(std::string(text));
}

PlainWriter::PlainWriter(VoAtomicFileWriter& file)
    : m_file(file)
{
    raw(PlainPrologue).endLine();
}

PlainWriter& PlainWriter::raw(std::string_view text)
{
    if (!m_isLineBegun)
        m_block.append(m_depth, '\t');
    m_isLineBegun = true;
    m_block += text;
    return *this;
}

PlainWriter& PlainWriter::escaped(std::string_view text)
{
    for (;;) {
        const auto special =
            std::find_if(text.begin(), text.end(), [](char c) { return c == '&' || c == '<' || c == '>' || c == '"'; });
        const auto length = static_cast<std::size_t>(special - text.begin());
        m_block += text.substr(0, length);
        if (length == text.size())
            return *this;
        const auto* escape = std::find_if(std::begin(PlainEscapes), std::end(PlainEscapes),
                                          [&](const PlainEscape& known) { return known.character == *special; });
        m_block += escape->text;
        text.remove_prefix(length + 1);
    }
}

void PlainWriter::endLine()
{
    m_block += '\n';
    m_isLineBegun = false;
    if (m_block.size() >= WrittenAtOnce)
        flush();
}

void PlainWriter::flush()
{
    m_file.write(m_block.data(), m_block.size());
    m_block.clear();
}

} // namespace vo::updater::detail
