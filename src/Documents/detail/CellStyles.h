#pragma once

class VoXMLElementWriter;

namespace vo::detail {

/// Writes the content of a workbook's list of styles: the looks of CellStyle, in its order.
void WriteCellStyles(VoXMLElementWriter& styles);

} // namespace vo::detail
