#pragma once

/// @file
/// For one file of each program that validates: the schema component never frees parts of a schema.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libQt5XmlPatterns";
}
