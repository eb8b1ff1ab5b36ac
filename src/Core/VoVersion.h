#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>

// Some C libraries define these as macros, which would rename the members below without a word.
#ifdef major
#undef major
#endif
#ifdef minor
#undef minor
#endif

/// A version number of four parts: major, minor, revision, and the type of the build.
///
/// The build type takes no part in comparisons. In the text form it stands third, before the revision: version 4.2 with
/// revision 17 and build type 1 is written "4.2.1.17".
class VOCORE_EXPORT VoVersion
{
public:
    /// The type of a build. Other numbers may be held as well and are written as they are.
    enum BuildType : std::int32_t
    {
        Release = 0,
        Beta = 1,
        Alpha = 2,
        Development = 3
    };

    /// All four parts 0.
    constexpr VoVersion() noexcept = default;
    /// A version of the given parts; note that the text form has another order.
    constexpr VoVersion(int major, int minor, int revision, BuildType build) noexcept
        : m_major(major)
        , m_minor(minor)
        , m_revision(revision)
        , m_build(build)
    {
    }

    /// The parts.
    /// @{
    constexpr int major() const noexcept { return m_major; }
    constexpr int minor() const noexcept { return m_minor; }
    constexpr int revision() const noexcept { return m_revision; }
    constexpr BuildType build() const noexcept { return m_build; }
    VoVersion& setMajor(int major) noexcept;
    VoVersion& setMinor(int minor) noexcept;
    VoVersion& setRevision(int revision) noexcept;
    VoVersion& setBuild(BuildType build) noexcept;
    /// @}

    /// Add one to one part only: 1.4.7 with its major part incremented is 2.4.7. The largest number stays.
    /// @{
    VoVersion& incrementMajor() noexcept;
    VoVersion& incrementMinor() noexcept;
    VoVersion& incrementRevision() noexcept;
    /// @}

    /// -1, 0 or 1 by major, then minor, then revision. The build type is ignored.
    int compare(const VoVersion& other) const noexcept;
    /// Comparison as compare() does it: build types do not count.
    /// @{
    bool operator==(const VoVersion& other) const noexcept { return compare(other) == 0; }
    bool operator!=(const VoVersion& other) const noexcept { return compare(other) != 0; }
    bool operator<(const VoVersion& other) const noexcept { return compare(other) < 0; }
    bool operator<=(const VoVersion& other) const noexcept { return compare(other) <= 0; }
    bool operator>(const VoVersion& other) const noexcept { return compare(other) > 0; }
    bool operator>=(const VoVersion& other) const noexcept { return compare(other) >= 0; }
    /// @}

    /// The text form: Serialize(*this).
    VoString toString() const;
    /// "major.minor.build.revision", all four in decimal.
    static VoString Serialize(const VoVersion& version);
    /// Reads up to four numbers between dots, in the order of the text form, each as VoString::toInt() does: parts that
    /// are missing or are no numbers are 0, and what follows the fourth is ignored. No text is refused.
    static VoVersion Deserialize(const VoString& text);

    /// Writes the text form.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoVersion& version);

private:
    std::int32_t m_major = 0;
    std::int32_t m_minor = 0;
    std::int32_t m_revision = 0;
    BuildType m_build = Release;
};

/// Hash that agrees with the comparison: build types do not count.
template <>
struct VOCORE_EXPORT std::hash<VoVersion>
{
    /// The hash of major, minor and revision.
    std::size_t operator()(const VoVersion& version) const noexcept;
};
