#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <FileSystem/VoFilePath.h>

#include <cstdint>
#include <filesystem>
#include <map>

namespace vo::detail {

/// Values by name; the names compare without case.
using ValueMap = std::map<VoString, VoVariant>;

/// The document of kept properties: typed XML with the properties as VoXMLObject<VoProperty> writes them. What that
/// cannot bring back as it was (blanks at the ends, control characters, bytes that are not UTF-8) is kept in Base64,
/// told by the attributes "encoding" and "kind".
///
/// @{

/// The document's text.
VOCORE_PRIVATE_EXPORT VoString PropertiesText(const ValueMap& values);
/// The values of a document. Throws the XML exceptions, and those of values, for a text that is no such document.
VOCORE_PRIVATE_EXPORT ValueMap PropertiesFromText(const VoString& text);
/// @}

/// One file of kept properties, as it was read last.
class VOCORE_PRIVATE_EXPORT PropertiesFile
{
public:
    explicit PropertiesFile(VoFilePath path); ///< Reads nothing yet. A null path is a file that is never there.

    const VoFilePath& path() const noexcept { return m_path; }

    /// What was read last.
    const ValueMap& values() const noexcept { return m_values; }

    /// Whether the file may be another than was read: also where its time is too young to tell.
    bool mayHaveChanged() const;

    /// Reads the file; one that is missing is empty. Whether the values are others than before. After a failure the
    /// values are as they were: throws VoValidationException "Damaged properties: " and the path, with the reason, for
    /// what is no such document, and what opening and reading a file throws for one that cannot be read.
    bool read();

    /// Renames a damaged file to a name that nothing has, which is returned. The caller holds the file's lock.
    VoFilePath moveAside();

    /// Replaces the file. The caller holds the file's lock. Throws as VoAtomicFileWriter.
    void write(const ValueMap& values);

private:
    struct Stamp
    {
        std::filesystem::file_time_type time{};
        std::uintmax_t size = 0;
        bool exists = false;
        bool isOld = false; // a file that changes again gets another time

        bool operator==(const Stamp& other) const
        {
            return time == other.time && size == other.size && exists == other.exists;
        }
    };

    Stamp stamp() const;
    VoString content() const;

    VoFilePath m_path;
    ValueMap m_values;
    Stamp m_stamp;
};

} // namespace vo::detail
