#pragma once

#include <vo/line/Location.h>

#include <Core/VoString.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleaseAttributes.h>

#include <vector>

namespace vo::tool {

class Console;
class Session;

/// One thing that a release holds besides the bytes of its files.
struct Besides
{
    const char* kind; ///< "executable", "link" or "folder".
    VoString target;  ///< Its place in the release, as this system writes it.
    VoString to;      ///< Where a link leads.

    bool operator<(const Besides& other) const;
};

/// What the release of a definition holds besides, sorted; `package` knows it afterwards. Throws CommandError.
std::vector<Besides> BesidesOf(const Session& session, updater::AdvertisedPackageListing& package,
                               const VoLocation& definition);

/// A row of the list "attributes"; `type` tells what became of it, when it is not null.
void ShowBesides(Console& console, const Besides& one, const char* type = nullptr);

/// How many there are of each; nothing of releases that hold files alone.
void ShowBesidesFigures(Console& console, const updater::ReleaseAttributes& attributes);

} // namespace vo::tool
