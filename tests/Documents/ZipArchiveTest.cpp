#include <Documents/VoZipArchive.h>

#include <gtest/gtest.h>
