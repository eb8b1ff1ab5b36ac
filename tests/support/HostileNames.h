#pragma once

namespace vo::test {

/// Names with "/" that are no names of files below a directory: they lead out of it, are a device or a part of a file
/// on some system, or are changed by one. Whoever takes names from a document refuses them.
inline const char* const HostileNames[] = {"",          "../evil",       "a/../../evil", "a/../b", "a/..",     "a/./b",
                                           "/tmp/evil", "//server/evil", "C:/evil",      "C:evil", "a:stream", "a\nb",
                                           "NUL",       "aux.txt",       "a/COM1",       "a./b",   "a "};

} // namespace vo::test
