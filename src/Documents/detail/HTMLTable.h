#pragma once

#include <Core/VoExport.h>
#include <Documents/VoDataTable.h>

#include <optional>
#include <string>
#include <string_view>

/// @file
/// Tables as HTML, as office programs put them on the clipboard and take them from there.

namespace vo::detail {

/// A document with the table, UTF-8. Header rows are of `th`; stacked values stand in one cell, one below the other. A
/// text that would be taken for a number is marked as office programs mark it.
VOCORE_PRIVATE_EXPORT std::string TableToHTML(const VoDataTable& table);

/// The first table of a document that has a cell; nullopt when there is none.
///
/// Anybody may have written the document: end tags may be missing, attributes malformed, nothing is run and nothing is
/// loaded, and time and memory grow with its length only. Tables within a cell count as its text. Where cells
/// above reach down, an empty one stands. Values have the kinds that a CSV file's would have; a number that an office
/// program notes beside a rounded one is taken instead of that.
/// @throws VoInvalidConversionException "HTML table is too large", beyond 1,048,576 cells or 16,384 columns, and for a
///         document of more than 256 MiB
VOCORE_PRIVATE_EXPORT std::optional<VoDataTable> TableFromHTML(std::string_view html);

} // namespace vo::detail
