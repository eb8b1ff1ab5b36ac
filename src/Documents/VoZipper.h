#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// Packs files into archives and unpacks archives, whole.
class VOCORE_EXPORT VoZipper
{
public:
    /// Packs a file under its bare name, or every file below a directory under its path as seen from there, sorted, so
    /// that the same tree gives the same bytes. Empty directories are left out, links to directories are not followed,
    /// and an archive that lies in the directory does not pack itself. The archive appears whole or not at all: what
    /// the path held before stays until the new archive is complete.
    /// @throws VoCannotOpenFileException with the file that cannot be read, the source itself among them
    /// @throws VoValidationException "Invalid path in zip archive: " and the name, for one of two names that differ in
    ///        case only
    /// @throws VoInvalidCallException, VoInvalidParameterException as VoZipArchive, when the archive cannot be written
    static void Zip(const VoFilePath& archivePath, const VoFilePath& source);

    /// Unpacks an archive into a directory, which is made when it is missing. Entries whose names end with "/" become
    /// directories, and empty ones whose attributes say so; "./" at the beginning of a name means nothing. Each file
    /// appears whole or not at all and replaces what bears its name; when something fails, the files before it stay.
    ///
    /// All names and sizes are checked before the first byte is written. Refused with VoValidationException "Invalid
    /// path in zip archive: " and the name: what does not stay below the directory or is no file name on some platform
    /// (a colon, a control character, a device's name, a piece that ends with a dot or a blank), names that are equal
    /// but for case, a name that is a file and a directory, and a place that links lead out of the directory. Refused
    /// with "Overlapping entries in zip archive: " and a name: entries that share bytes, by which a small archive can
    /// grow to any size.
    /// @throws VoFileException "Cannot unzip as target path is not a directory" when the target's text does not end
    ///         with the separator; then the archive is not even looked at
    /// @throws VoPathSizeFileException when a file's path would be too long
    /// @throws VoInvalidPathFileException as VoZipArchive, for a file that is no archive
    /// @throws VoInvalidParameterException as VoZipArchive::open, for an encrypted entry or an unknown method; with
    ///        "Unzip bad zip file" and the archive's path, when its directory is damaged or counts other than it holds
    /// @throws VoFileException "Not enough disk space to unzip archive"
    /// @throws VoCannotOpenFileException with the file that cannot be made
    /// @throws VoInvalidCallException as VoZipFile reads, for damaged content
    static void Unzip(const VoFilePath& archivePath, const VoFilePath& targetDirectory);

private:
    VoZipper() = delete;
};
