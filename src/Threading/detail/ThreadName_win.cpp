#include <Threading/detail/ThreadFactory.h>

#if defined(_WIN32)

#include <windows.h>

#include <string>

namespace vo::detail {

void NameCurrentThread(const char* name) noexcept
{
    // Asked for by name: neither all headers nor all versions of the system have it.
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const HMODULE system = GetModuleHandleW(L"kernel32.dll");
    const FARPROC found = system ? GetProcAddress(system, "SetThreadDescription") : nullptr;
    if (!found)
        return;
    try {
        const std::string text(name); // our names are ASCII
        const std::wstring wide(text.begin(), text.end());
        reinterpret_cast<SetDescription>(reinterpret_cast<void*>(found))(GetCurrentThread(), wide.c_str());
    } catch (...) { // a thread without a name is as good
    }
}

} // namespace vo::detail

#endif
