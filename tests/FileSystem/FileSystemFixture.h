#pragma once

#include <FileSizeLimit.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativePath.h>
#include <Links.h>
#include <VoTestSupport.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#if defined(__unix__)
#include <unistd.h>
#endif

namespace vo::test {

/// A new directory for each test, and words for what is in it. Files are written and read by the standard library, so
/// that the code under test does not judge itself.
class FileSystemFixture : public testing::Test
{
protected:
    VoDirectoryPath root() const { return m_directory.path(); }
    VoFilePath at(const char* name) const { return root().file(name); }
    std::filesystem::path native(const char* name) const { return vo::detail::ToNative(at(name)); }

    VoFilePath write(const char* name, const std::string& content = "content") const
    {
        std::filesystem::create_directories(native(name).parent_path());
        std::ofstream(native(name), std::ios::binary) << content;
        return at(name);
    }

    std::string read(const char* name) const
    {
        std::ifstream stream(native(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    bool exists(const char* name) const
    {
        std::error_code ignored;
        return std::filesystem::exists(vo::detail::LinkStatus(native(name), ignored));
    }

    void link(const char* target, const char* name) const { vo::test::MakeLink(target, native(name)); }

    /// The names in the directory, sorted.
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(vo::detail::ToNative(root())))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    static bool IsSuperuser()
    {
#if defined(__unix__)
        return ::geteuid() == 0;
#else
        return true; // no rights of that kind keep anybody out
#endif
    }

private:
    VoTemporaryDir m_directory;
};

} // namespace vo::test
