#pragma once

namespace vo::tool {

class Session;
enum class ExitCode;

/// "vo plan --matrix": for each pair of a package's declared releases, the older first, and for a first installation of
/// each, what the update takes. Reads definitions only.
ExitCode ShowUpdateMatrix(Session& session);

} // namespace vo::tool
