#pragma once

/// @file
/// All path classes, for callers that go from a file to its directory and back.

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoDirectoryPathFragment.h>
#include <FileSystem/VoFilePath.h>
