#include <Threading/detail/ThreadFactory.h>

#if !defined(_WIN32)

#include <pthread.h>

#include <cstring>

namespace vo::detail {

void NameCurrentThread(const char* name) noexcept
{
#if defined(__linux__)
    char text[16] = {}; // the kernel's limit, terminator included; a longer name is refused
    std::strncpy(text, name, sizeof text - 1);
    pthread_setname_np(pthread_self(), text);
#else
    static_cast<void>(name);
#endif
}

} // namespace vo::detail

#endif
