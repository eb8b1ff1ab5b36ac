#pragma once

class QUrl;

namespace vo::detail {

/// Has the file manager show the folder of a local file with that selected; false when there is none that can.
bool SelectInFolder(const QUrl& file);

} // namespace vo::detail
