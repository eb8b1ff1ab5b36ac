#include <vo/Interrupt.h>

namespace vo::tool {

Interrupt::Interrupt(const VoStopFlag& flag)
    : m_watch([flag](int) { flag.stop(); })
{
}

} // namespace vo::tool
