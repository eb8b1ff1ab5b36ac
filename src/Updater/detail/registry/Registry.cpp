#include <Updater/detail/registry/Registry.h>

#include <Core/VoString.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Log.h>

#include <algorithm>
#include <string_view>

namespace vo::updater::detail {

namespace {

// Versions are read leniently everywhere; only a registry that was damaged has texts without any number in them.
bool IsVersionText(const VoString& text)
{
    const std::string_view bytes(text.c_str(), text.size());
    return !bytes.empty() && bytes.find_first_not_of("0123456789.-") == std::string_view::npos;
}

template <typename Entries>
auto FindEntry(Entries& entries, const VoUUID& packageID)
{
    return std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.first == packageID; });
}

} // namespace

Registry::Registry(VoXMLStreamElementLoader& element)
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() != tag::Package)
            return;
        const VoString id = child.attribute(attribute::Id, VoString());
        const VoString version = child.attribute(attribute::Version, VoString());
        if (vo::detail::SafeName(id) && IsVersionText(version))
            set(id, VoVersion::Deserialize(version));
        else
            Log().warning("Entry of the installed packages file skipped: id " + id + ", version " + version);
    });
}

XMLObject::Type Registry::objectType() const
{
    return Type::InstalledPackages;
}

void Registry::writeElements(VoXMLElementWriter& element) const
{
    for (const VoPair<VoUUID, VoVersion>& entry : m_entries) {
        const auto child = element.createElement(tag::Package);
        WriteAttribute(*child, attribute::Id, entry.first);
        WriteAttribute(*child, attribute::Version, entry.second);
    }
}

const Registry::Entries& Registry::entries() const
{
    return m_entries;
}

const VoPair<VoUUID, VoVersion>* Registry::find(const VoUUID& packageID) const
{
    const auto entry = FindEntry(m_entries, packageID);
    return entry == m_entries.end() ? nullptr : &*entry;
}

void Registry::set(const VoUUID& packageID, const VoVersion& version)
{
    const auto entry = FindEntry(m_entries, packageID);
    if (entry == m_entries.end())
        m_entries.pushBack({packageID, version});
    else
        entry->second = version;
}

void Registry::erase(const VoUUID& packageID)
{
    const auto entry = FindEntry(m_entries, packageID);
    if (entry != m_entries.end())
        m_entries.erase(entry);
}

} // namespace vo::updater::detail
