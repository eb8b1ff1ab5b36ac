#include <Threading/VoEvent.h>

VoEvent::VoEvent(std::int32_t type) noexcept
    : m_type(type)
{
}

VoEvent::~VoEvent() = default;

bool VoEvent::mergeable() const
{
    return false;
}

void VoEvent::merge(const VoEvent&) {}

void VoEvent::run() {}

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr std::int32_t VoEvent::ABORT; // NOLINT(readability-redundant-declaration)
