#include <Subsystem/detail/CrashHandler.h>

#if defined(_WIN32)

#include <Core/VoFileException.h>
#include <FileSystem/detail/NativePath.h>

#include <windows.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace vo::logging {

namespace {

// What the handlers need is there before they run: the heap may be what is broken.
const CrashRing* crashRing = nullptr;
wchar_t crashFile[4096] = {};
LPTOP_LEVEL_EXCEPTION_FILTER previousFilter = nullptr;
void (*previousAbort)(int) = SIG_DFL;
std::atomic<bool> hasWritten{false};
bool isInstalled = false;

void WriteAll(void* file, const char* text, std::size_t size)
{
    DWORD written = 0;
    WriteFile(file, text, static_cast<DWORD>(size), &written, nullptr);
}

bool IsLarge()
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    return GetFileAttributesExW(crashFile, GetFileExInfoStandard, &data) != 0 &&
           (data.nFileSizeHigh != 0 || data.nFileSizeLow >= LargestCrashFile);
}

void WriteCrash(const char* cause)
{
    if (hasWritten.exchange(true))
        return;
    const HANDLE file = CreateFileW(crashFile, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                    IsLarge() ? CREATE_ALWAYS : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    for (const char* const text : {"Process ended by ", cause, "; last records:\n"})
        WriteAll(file, text, std::strlen(text));
    crashRing->readEach(WriteAll, file);
    CloseHandle(file);
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception)
{
    WriteCrash("an unhandled exception of the system");
    return previousFilter ? previousFilter(exception) : EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int number)
{
    WriteCrash("SIGABRT");
    std::signal(number, previousAbort);
    std::raise(number);
}

} // namespace

void InstallCrashHandler(const CrashRing& ring, const std::filesystem::path& file)
{
    const std::wstring name = std::filesystem::absolute(file).wstring();
    if (name.size() >= std::size(crashFile))
        throw VoPathSizeFileException(vo::detail::FromNative(file));
    RemoveCrashHandler();
    crashRing = &ring;
    std::wmemcpy(crashFile, name.c_str(), name.size() + 1);
    previousFilter = SetUnhandledExceptionFilter(OnException);
    previousAbort = std::signal(SIGABRT, OnAbort);
    isInstalled = true;
}

void RemoveCrashHandler() noexcept
{
    if (!isInstalled)
        return;
    SetUnhandledExceptionFilter(previousFilter);
    std::signal(SIGABRT, previousAbort);
    isInstalled = false;
}

} // namespace vo::logging

#endif
