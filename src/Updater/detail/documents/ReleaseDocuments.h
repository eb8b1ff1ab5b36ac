#pragma once

// The documents that may stand beside a release's definition. A release need not have them, and who knows nothing of
// them installs it without. The manifest of a signed folder lists those that are there; others do not count.

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ReleasePatches.h>

namespace vo::updater::detail {

/// Their names.
inline constexpr const char* OptionalDocuments[] = {ReleasePatches::FileName};

/// The path of a document that stands beside a definition.
inline VoFilePath Beside(const VoFilePath& definition, const char* document)
{
    return definition.parent().file(document);
}

} // namespace vo::updater::detail
