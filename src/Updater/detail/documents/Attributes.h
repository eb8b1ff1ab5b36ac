#pragma once

// The names that the updater's documents use, each spelt once, and the text forms of their values.

#include <Core/VoString.h>
#include <XML/VoXMLElementWriter.h>
#include <XML/VoXMLStreamElementLoader.h>

#include <cstdint>

namespace vo::updater::detail {

namespace tag {
inline constexpr const char* Packages = "packages";
inline constexpr const char* Package = "package";
inline constexpr const char* Files = "files";
inline constexpr const char* File = "file";
inline constexpr const char* ChunkReference = "chunkref";
inline constexpr const char* Chunks = "chunks";
inline constexpr const char* Chunk = "chunk";
inline constexpr const char* Directories = "directories";
inline constexpr const char* Path = "path";
inline constexpr const char* Manifest = "manifest";
inline constexpr const char* Declarations = "declarations";
inline constexpr const char* Release = "release";
inline constexpr const char* Keys = "keys";
inline constexpr const char* Key = "key";
inline constexpr const char* Pin = "pin";
inline constexpr const char* Document = "document";
inline constexpr const char* Attributes = "attributes";
inline constexpr const char* Executable = "executable";
inline constexpr const char* Link = "link";
inline constexpr const char* Folder = "folder";
inline constexpr const char* Patches = "patches";
inline constexpr const char* Patch = "patch";
} // namespace tag

namespace attribute {
inline constexpr const char* PackageID = "packageID";
inline constexpr const char* VersionID = "versionID";
inline constexpr const char* Name = "name";
inline constexpr const char* Version = "version";
inline constexpr const char* Id = "id";
inline constexpr const char* Checksum = "checksum";
inline constexpr const char* Size = "size";
inline constexpr const char* Target = "target";
inline constexpr const char* Path = "path";
inline constexpr const char* Directory = "directory";
inline constexpr const char* ChunkID = "chunkID";
inline constexpr const char* Offset = "offset";
inline constexpr const char* Length = "length";
inline constexpr const char* Index = "index";
inline constexpr const char* Serial = "serial";
inline constexpr const char* Made = "made";
inline constexpr const char* Expires = "expires";
inline constexpr const char* Lowest = "lowest";
inline constexpr const char* Channel = "channel";
inline constexpr const char* Share = "share";
inline constexpr const char* Start = "start";
inline constexpr const char* From = "from";
inline constexpr const char* Withdrawn = "withdrawn";
inline constexpr const char* Notes = "notes";
inline constexpr const char* Number = "number";
inline constexpr const char* Releases = "releases";
inline constexpr const char* Keys = "keys";
inline constexpr const char* Line = "line";
inline constexpr const char* Origin = "origin";
inline constexpr const char* To = "to";
inline constexpr const char* FileID = "fileID";
inline constexpr const char* Before = "before";
inline constexpr const char* BeforeSize = "beforeSize";
inline constexpr const char* After = "after";
inline constexpr const char* AfterSize = "afterSize";
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
