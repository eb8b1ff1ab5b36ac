#pragma once

// How the updater's documents are read from and written to files. The one place for atomic replacement, the refusal of
// document types and the log line that names a damaged file.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>
#include <XML/VoXMLElementWriter.h>
#include <XML/VoXMLStreamElementLoader.h>

#include <cstdint>
#include <utility>

namespace vo::updater {
class XMLObject;
}

namespace vo::updater::detail {

/// No document of the updater has more bytes.
constexpr std::uint64_t LargestDocument = std::uint64_t{64} << 20;

/// Loads a file by the loader's rules; empty when its root has no rule. Refuses document type declarations with
/// VoDocumentTypeException. Every failure is logged as an error (category "updater") and rethrown; log and exception
/// are about `name`, which is where a document of another machine came from, and the path when it is empty.
VOCORE_PRIVATE_EXPORT VoUniquePtr<VoAbstractXMLStreamLoaderObject>
LoadDocument(VoXMLStreamLoader& loader, const VoFilePath& path, const VoString& name);

/// The same for a document in memory: what was checked there is what is read.
VOCORE_PRIVATE_EXPORT VoUniquePtr<VoAbstractXMLStreamLoaderObject>
ParseDocument(VoXMLStreamLoader& loader, const VoString& bytes, const VoString& name);

/// The bytes of a file.
/// @throws VoFileNotFoundException
/// @throws VoCannotOpenFileException
/// @throws VoValidationException ("Document larger than allowed: " + path) for one of more than `most` bytes
VOCORE_PRIVATE_EXPORT VoString ReadDocument(const VoFilePath& path, std::uint64_t most = LargestDocument);
/// Replaces a file by bytes, atomically.
VOCORE_PRIVATE_EXPORT void WriteBytes(const VoFilePath& path, const VoString& bytes);

/// Logs a document that is well formed but something else than wanted, and throws VoNullPointerException(message).
[[noreturn]] void FailLoading(const VoString& name, const char* message);

/// Writes a document with one root element of the given name, replacing the file atomically.
VOCORE_PRIVATE_EXPORT void WriteDocument(const VoFilePath& path, const VoString& rootName, const XMLObject& root);

/// The document that WriteDocument writes.
VOCORE_PRIVATE_EXPORT VoString DocumentText(const VoString& rootName, const XMLObject& root);

/// Writes one child element named `name`, filled by `object`.
void WriteChild(VoXMLElementWriter& parent, const VoString& name, const XMLObject& object);

/// The rule that builds a `T`.
template <typename T>
VoUniquePtr<VoAbstractXMLStreamLoaderObject> Build(VoXMLStreamElementLoader element)
{
    return VoUniquePtr<VoAbstractXMLStreamLoaderObject>(new T(element));
}

/// Hands each child that a rule makes a `T` to `take`; other children are skipped.
template <typename T, typename Take>
void LoadChildren(VoXMLStreamElementLoader& element, Take take)
{
    element.processChildren([&take](VoUniquePtr<VoAbstractXMLStreamLoaderObject> object) {
        if (auto* item = dynamic_cast<T*>(object.get()))
            take(std::move(*item));
    });
}

/// Writes an element named `name` that holds one element named `itemName` for each item.
template <typename Items>
void WriteContainer(VoXMLElementWriter& parent, const VoString& name, const VoString& itemName, const Items& items)
{
    const auto container = parent.createElement(name);
    for (const auto& item : items)
        WriteChild(*container, itemName, item);
}

} // namespace vo::updater::detail
