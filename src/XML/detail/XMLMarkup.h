#pragma once

#include <Core/VoForward.h>

#include <cstddef>

namespace vo::detail {

/// Puts ready-made markup into the innermost open element of a document, for writers of so many elements of a few known
/// names that each through its own handle would cost too much. The markup is UTF-8, well formed and balanced; nothing
/// checks that.
class XMLMarkup
{
public:
    /// @throws VoInvalidXMLOperation "Illegal write text call" without an open element, and the device's first failure
    static void Write(VoXMLStreamWriter& writer, const char* markup, std::size_t size);
};

} // namespace vo::detail
