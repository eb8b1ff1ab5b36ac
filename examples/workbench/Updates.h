#pragma once

#include "Job.h"

#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoLocation.h>

#include <optional>

/// A release of this program that could be installed.
struct Update
{
    VoString name;
    VoVersion version;
    VoLocation definition;
};

/// The newest release of a package in a published folder, unless that is what is installed.
/// @throws what reading the declarations throws, and VoNotFoundException with the name when it has no such package
std::optional<Update> FindUpdate(const VoFilePath& declarations, const VoString& packageName);

/// Installs it, telling how far it is.
Job::Work InstallUpdate(const Update& update, const VoDirectoryPath& directory);
