#include <Application/VoSignalWatch.h>

#include <Application/detail/SignalWatch.h>

#include <utility>

VoSignalWatch::VoSignalWatch(std::function<void(int signal)> function)
    : m_private(std::make_unique<vo::detail::SignalWatch>(std::move(function)))
{
}

VoSignalWatch::~VoSignalWatch() = default;
