#pragma once

namespace vo::detail {

/// The text of results.xsd.
extern const char* const ResultsSchema;

} // namespace vo::detail
