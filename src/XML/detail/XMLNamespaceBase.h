#pragma once

namespace vo::detail {

/// Scheme and host of the namespaces of the application's documents; each kind of document adds its path.
inline constexpr const char* XMLNamespaceBase = "https://schemas.example.org";

} // namespace vo::detail
