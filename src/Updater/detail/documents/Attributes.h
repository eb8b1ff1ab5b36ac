#pragma once

// The names that the updater's documents use, each spelt once, and the text forms of their values.

#include <Core/VoString.h>
#include <XML/VoXMLElementWriter.h>
#include <XML/VoXMLStreamElementLoader.h>

#include <cstdint>

namespace vo::updater::detail {

namespace tag {
inline constexpr const char* packages = "packages";
inline constexpr const char* package = "package";
inline constexpr const char* files = "files";
inline constexpr const char* file = "file";
inline constexpr const char* chunkReference = "chunkref";
inline constexpr const char* chunks = "chunks";
inline constexpr const char* chunk = "chunk";
inline constexpr const char* directories = "directories";
inline constexpr const char* path = "path";
} // namespace tag

namespace attribute {
inline constexpr const char* packageID = "packageID";
inline constexpr const char* versionID = "versionID";
inline constexpr const char* name = "name";
inline constexpr const char* version = "version";
inline constexpr const char* id = "id";
inline constexpr const char* checksum = "checksum";
inline constexpr const char* size = "size";
inline constexpr const char* target = "target";
inline constexpr const char* path = "path";
inline constexpr const char* directory = "directory";
inline constexpr const char* chunkID = "chunkID";
inline constexpr const char* offset = "offset";
inline constexpr const char* length = "length";
inline constexpr const char* index = "index";
} // namespace attribute

/// @{ A value in its own text form.
template <typename T>
void WriteAttribute(VoXMLElementWriter& element, const char* name, const T& value)
{
    element.writeAttribute(name, T::Serialize(value));
}
template <typename T>
T ReadAttribute(VoXMLStreamElementLoader& element, const char* name)
{
    return T::Deserialize(element.attribute(name));
}
/// @}

/// Writes a number in decimal.
void WriteNumber(VoXMLElementWriter& element, const char* name, std::uint64_t value);
/// Reads digits only.
/// @throws VoInvalidConversionException for a sign, a blank, an empty text or a number of 2^64 or more
std::uint64_t ReadNumber(VoXMLStreamElementLoader& element, const char* name);

} // namespace vo::updater::detail
