#include <Threading/ThreadFactory.h>

#if defined(_WIN32)

#include <windows.h>

#include <string>

namespace vo::detail {

void NameCurrentThread(const char* name) noexcept
{
    try {
        const std::string text(name); // our names are ASCII
        SetThreadDescription(GetCurrentThread(), std::wstring(text.begin(), text.end()).c_str());
    } catch (...) { // a thread without a name is as good
    }
}

} // namespace vo::detail

#endif
