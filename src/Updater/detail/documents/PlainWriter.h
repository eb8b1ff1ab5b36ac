#pragma once

#include <Core/VoExport.h>

#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

class VoAtomicFileWriter;

namespace vo::updater::detail {

/// The first line of a document.
constexpr std::string_view PlainPrologue = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

/// What stands for a character that XML wants escaped.
struct PlainEscape
{
    char character;
    std::string_view text;
};
constexpr PlainEscape PlainEscapes[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}};

/// Whether a text can be written by a PlainWriter: as a value it needs no character references.
VOCORE_PRIVATE_EXPORT bool IsPlainText(std::string_view text);

/// What is written of a document that has a line for each element, block by block. REQUIRES plain texts.
class VOCORE_PRIVATE_EXPORT PlainWriter
{
public:
    explicit PlainWriter(VoAtomicFileWriter& file); ///< Writes the first line of any document.

    PlainWriter& raw(std::string_view text);     ///< Appends as it is.
    PlainWriter& escaped(std::string_view text); ///< Appends with the characters escaped that XML has for itself.
    /// @{ Appends an attribute behind a blank.
    PlainWriter& attribute(std::string_view name, std::string_view value)
    {
        return raw(" ").raw(name).raw("=\"").escaped(value).raw("\"");
    }
    template <typename Integer, typename = std::enable_if_t<std::is_integral_v<Integer>>>
    PlainWriter& attribute(std::string_view name, Integer value)
    {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
        return attribute(name, std::string_view(digits, static_cast<std::size_t>(end - digits)));
    }
    /// @}
    void endLine();

    /// How many tabs begin each line from the next on, beside its own.
    void indent(std::size_t depth) { m_depth = depth; }

    void flush(); ///< Hands the rest on to the file, which its owner commits.

private:
    VoAtomicFileWriter& m_file;
    std::string m_block;
    std::size_t m_depth = 0;
    bool m_isLineBegun = false;
};

/// An element that holds `count` others, which are written one after the other by their number.
template <typename Write>
void WriteItems(PlainWriter& writer, std::string_view name, std::size_t count, Write write)
{
    writer.raw("\t<").raw(name).raw(count == 0 ? "/>" : ">").endLine();
    for (std::size_t i = 0; i < count; ++i)
        write(i);
    if (count != 0)
        writer.raw("\t</").raw(name).raw(">").endLine();
}

} // namespace vo::updater::detail
