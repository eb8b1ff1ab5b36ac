#pragma once

#include "UpdaterFixture.h"

#include <Updater/detail/files/FileStamp.h>

namespace vo::test {

/// Returns when what is written bears another time than the last change of a file. Writes to `probe` until it does.
inline void UntilClockMoves(const VoFilePath& probe, const VoFilePath& changed)
{
    using vo::updater::detail::StampOf;
    do
        WriteBytes(probe, "?");
    while (StampOf(probe)->changed == StampOf(changed)->changed);
}

} // namespace vo::test
