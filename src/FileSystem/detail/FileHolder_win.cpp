#include <FileSystem/detail/WindowsCalls.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <string>

#include <restartmanager.h>

namespace vo::detail {

namespace {

// The programs of the last such error of the thread, as UTF-8. An error is told by the thread that it happens to, and
// an error code has no room for names.
thread_local std::array<char, 600> t_holders{};

class HeldCategory final : public std::error_category
{
public:
    const char* name() const noexcept override { return "held file"; }
    std::string message(int) const override
    {
        return std::string("Another program has it open") + (t_holders[0] ? ": " : "") + t_holders.data();
    }
    std::error_condition default_error_condition(int) const noexcept override
    {
        return std::errc::device_or_resource_busy;
    }
};

const std::error_category& Held()
{
    static const auto& category = *new HeldCategory; // outlives all static objects
    return category;
}

// Asks the service that installers ask. It knows files of this machine's own volumes only.
class HolderSession
{
public:
    HolderSession() noexcept
        : m_isOpen(::RmStartSession(&m_session, 0, m_key) == ERROR_SUCCESS)
    {
    }
    ~HolderSession()
    {
        if (m_isOpen)
            ::RmEndSession(m_session);
    }
    HolderSession(const HolderSession&) = delete;
    HolderSession& operator=(const HolderSession&) = delete;

    std::wstring holdersOf(const std::filesystem::path& file)
    {
        const wchar_t* names[] = {file.c_str()};
        if (!m_isOpen || ::RmRegisterResources(m_session, 1, names, 0, nullptr, 0, nullptr) != ERROR_SUCCESS)
            return {};
        std::array<RM_PROCESS_INFO, 3> programs{};
        UINT needed = 0;
        UINT count = static_cast<UINT>(programs.size());
        DWORD reasons = 0;
        const DWORD status = ::RmGetList(m_session, &needed, &count, programs.data(), &reasons);
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            return {};
        std::wstring holders;
        for (std::size_t i = 0; i < std::min<std::size_t>(count, programs.size()); ++i)
            holders.append(holders.empty() ? L"" : L", ").append(programs[i].strAppName);
        return holders;
    }

private:
    wchar_t m_key[CCH_RM_SESSION_KEY + 1] = {};
    DWORD m_session = 0;
    bool m_isOpen;
};

void RememberHolders(const std::filesystem::path& file)
{
    const std::wstring holders = HolderSession().holdersOf(std::filesystem::absolute(file));
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, holders.data(), static_cast<int>(holders.size()),
                                           t_holders.data(), static_cast<int>(t_holders.size() - 1), nullptr, nullptr);
    t_holders[static_cast<std::size_t>(std::max(size, 0))] = '\0';
}

} // namespace

std::error_code LastErrorOf(const std::filesystem::path& file) noexcept
{
    const DWORD error = ::GetLastError();
    if (error != ERROR_SHARING_VIOLATION && error != ERROR_LOCK_VIOLATION)
        return ErrorOf(error);
    t_holders[0] = '\0';
    try {
        RememberHolders(file);
    } catch (...) { // without the names it is told as well
    }
    return std::error_code(static_cast<int>(error), Held());
}

} // namespace vo::detail
