#pragma once

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Updater/XMLObject.h>

namespace vo::updater::detail {

/// What is installed: the content of the registry's file. A plain value.
class Registry final : public XMLObject
{
public:
    using Entries = VoDeque<VoPair<VoUUID, VoVersion>>;

    Registry() = default;
    /// Reads a `packages` element. Entries that are none are skipped, with a warning.
    explicit Registry(VoXMLStreamElementLoader& element);

    Type objectType() const override;
    void writeElements(VoXMLElementWriter& element) const override;

    const Entries& entries() const; ///< In the order of first installation.
    /// The entry of a package; null when there is none.
    const VoPair<VoUUID, VoVersion>* find(const VoUUID& packageID) const;
    void set(const VoUUID& packageID, const VoVersion& version); ///< Enters a package, or its version.
    void erase(const VoUUID& packageID);                         ///< Nothing when there is no such entry.

private:
    Entries m_entries;
};

} // namespace vo::updater::detail
