#pragma once

#include <Core/VoSharedPtr.h>
#include <Core/detail/Completed.h>
#include <Documents/VoZipArchive.h>
#include <Documents/detail/ZipInput.h>
#include <Documents/detail/ZipOutput.h>
#include <FileSystem/VoFilePath.h>

#include <optional>

/// The state of a VoZipArchive.
class VoZipArchive_Internal
{
public:
    VoFilePath path; ///< As messages show it.
    VoZipArchive::Mode mode = VoZipArchive::Read;
    std::optional<vo::detail::ZipInput> input;   ///< When reading.
    std::optional<vo::detail::ZipOutput> output; ///< When writing.
    VoSharedPtr<VoZipFile> activeFile;
    bool closed = true;

    /// An exception with what the system said when the archive could not be written.
    VoInvalidCallException writeFailure(const VoString& message) const
    {
        return vo::detail::Because(output ? output->error() : std::error_code(), VoInvalidCallException(message));
    }
};
