#pragma once

// How the updater's documents are read from and written to files. The one place for atomic replacement, the refusal of
// document types and the log line that names a damaged file.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>

namespace vo::updater {
class XMLObject;
}

namespace vo::updater::detail {

/// Loads a file by the loader's rules; empty when its root has no rule. Refuses document type declarations with
/// VoInvalidXMLException. Every failure is logged as an error with the path first (category "updater") and rethrown.
VOCORE_PRIVATE_EXPORT VoUniquePtr<VoAbstractXMLStreamLoaderObject> LoadDocument(VoXMLStreamLoader& loader,
                                                                                const VoFilePath& path);

/// Writes a document with one root element of the given name, replacing the file atomically.
VOCORE_PRIVATE_EXPORT void WriteDocument(const VoFilePath& path, const VoString& rootName, const XMLObject& root);

/// Writes one child element named `name`, filled by `object`.
VOCORE_PRIVATE_EXPORT void WriteChild(VoXMLElementWriter& parent, const VoString& name, const XMLObject& object);

} // namespace vo::updater::detail
