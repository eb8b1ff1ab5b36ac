#include <Documents/detail/CellStyles.h>

#include <Core/VoString.h>
#include <XML/VoXMLElementWriter.h>

#include <initializer_list>
#include <utility>

namespace vo::detail {

namespace {

using Attributes = std::initializer_list<std::pair<const char*, const char*>>;

void Add(VoXMLElementWriter& parent, const char* name, const Attributes& attributes)
{
    const auto element = parent.createElement(name);
    for (const auto& [attribute, value] : attributes)
        element->writeAttribute(attribute, value);
}

// The usual font and the bold one.
void WriteFonts(VoXMLElementWriter& styles)
{
    const auto fonts = styles.createElement("fonts");
    fonts->writeAttribute("count", "2");
    for (const bool bold : {false, true}) {
        const auto font = fonts->createElement("font");
        if (bold)
            Add(*font, "b", {});
        Add(*font, "sz", {{"val", "11"}});
        Add(*font, "name", {{"val", "Calibri"}});
    }
}

// Programs take the first two fills for their own.
void WriteFillsAndBorders(VoXMLElementWriter& styles)
{
    {
        const auto fills = styles.createElement("fills");
        fills->writeAttribute("count", "2");
        for (const char* pattern : {"none", "gray125"})
            Add(*fills->createElement("fill"), "patternFill", {{"patternType", pattern}});
    }
    const auto borders = styles.createElement("borders");
    borders->writeAttribute("count", "1");
    Add(*borders, "border", {});
}

struct Look
{
    const char* format; // by number: 0 as it comes, 1 a whole number
    const char* font;
};

constexpr Look Looks[] = {{"0", "0"}, {"0", "1"}, {"1", "0"}, {"164", "0"}, {"165", "0"}};

void WriteLook(VoXMLElementWriter& list, const Look& look)
{
    Add(list, "xf",
        {{"numFmtId", look.format},
         {"fontId", look.font},
         {"fillId", "0"},
         {"borderId", "0"},
         {"xfId", "0"},
         {"applyNumberFormat", "1"},
         {"applyFont", "1"}});
}

} // namespace

void WriteCellStyles(VoXMLElementWriter& styles)
{
    {
        const auto formats = styles.createElement("numFmts");
        formats->writeAttribute("count", "2");
        Add(*formats, "numFmt", {{"numFmtId", "164"}, {"formatCode", "yyyy\\-mm\\-dd"}});
        Add(*formats, "numFmt", {{"numFmtId", "165"}, {"formatCode", "yyyy\\-mm\\-dd\\ hh:mm:ss"}});
    }
    WriteFonts(styles);
    WriteFillsAndBorders(styles);
    {
        const auto base = styles.createElement("cellStyleXfs");
        base->writeAttribute("count", "1");
        Add(*base, "xf", {{"numFmtId", "0"}, {"fontId", "0"}, {"fillId", "0"}, {"borderId", "0"}});
    }
    {
        const auto looks = styles.createElement("cellXfs");
        looks->writeAttribute("count", "5");
        for (const Look& look : Looks)
            WriteLook(*looks, look);
    }
    const auto names = styles.createElement("cellStyles");
    names->writeAttribute("count", "1");
    Add(*names, "cellStyle", {{"name", "Normal"}, {"xfId", "0"}, {"builtinId", "0"}});
}

} // namespace vo::detail
