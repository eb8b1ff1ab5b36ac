#pragma once

#include <Core/VoExport.h>

#include <string>
#include <string_view>

namespace vo::updater::detail {

/// What turns one content into another, as instructions: which parts of the old content come next, by which bytes they
/// differ, and what is new. A program that was compiled anew has the same code with other addresses everywhere: the
/// differences are few bytes among many zeros, which are counted only.
///
/// The instructions are three lengths in four bytes each, the highest first, and four sections, of which the last one
/// has the rest: steps (the length of a part that differs in single bytes, that of what is new behind it, and how far
/// to move on in the old content: three numbers each), runs (how many bytes are the same, and how many are not: two
/// numbers each), the differences of the latter, and what is new. Numbers have seven bits a byte, the lowest first; a
/// move is twice its amount, or twice less one for a move back.
///
/// Takes 4 bytes of memory for each byte of the old content and up to 16 MB besides, which must have less than 4 GiB.
VOCORE_PRIVATE_EXPORT std::string FindDifference(std::string_view before, std::string_view after);

/// Carries instructions out, whoever has written them: `after` is a buffer of the length to be reached. False when they
/// do not fit; the buffer's content is of no use then.
VOCORE_PRIVATE_EXPORT bool ApplyDifference(std::string_view before, std::string_view instructions, std::string& after);

} // namespace vo::updater::detail
