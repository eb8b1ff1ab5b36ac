#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// @file
/// What the system knows of time zones. Instants are seconds since 1970 in universal time, offsets seconds that clocks
/// are ahead of it.

namespace vo::detail {

/// The offset of this machine's clocks at an instant. The framework's own answer leaves summer time out before 1970 and
/// guesses it after 2037.
int LocalOffset(std::int64_t instant);

/// What the system knows of one zone. Never changed once loaded, so safe to ask from several threads.
class ZoneData
{
public:
    virtual ~ZoneData() = default;
    /// The offset at an instant.
    virtual int offset(std::int64_t instant) const = 0;

    /// The data of a zone; none when the system does not know it. The identifier must not lead out of a folder.
    static std::shared_ptr<const ZoneData> Load(const std::string& id);
};

/// The framework's name of a zone. On some systems it knows zones that were renamed by their former names only.
std::string FrameworkZoneId(const std::string& id);
/// The identifier of a zone that the framework names so: that of today.
std::string ZoneIdOfFramework(const std::string& id);

} // namespace vo::detail
