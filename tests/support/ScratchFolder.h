#pragma once

#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace vo::test {

/// A new directory for the files of one test, made and filled without the library; removed with all that is in it.
class ScratchFolder
{
public:
    ScratchFolder()
    {
        std::random_device random;
        do
            m_directory = std::filesystem::temp_directory_path() / ("vocore-test-" + std::to_string(random()));
        while (!std::filesystem::create_directory(m_directory));
    }

    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_directory, ignored);
    }

    /// The system's name of the directory, or of a file in it.
    const std::filesystem::path& native() const { return m_directory; }
    std::filesystem::path native(const std::string& name) const { return m_directory / name; }

    /// The library's path of a file in the directory.
    VoFilePath path(const std::string& name) const { return vo::detail::FromNative(native(name)); }

    /// Makes a file; gives its path.
    VoFilePath write(const std::string& name, const std::string& content) const
    {
        std::ofstream(native(name), std::ios_base::binary) << content;
        return path(name);
    }

    /// The content of a file.
    std::string read(const std::string& name) const
    {
        std::ifstream file(native(name), std::ios_base::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    /// Runs a Python script in the directory; gives what it prints.
    std::string python(const std::string& script) const
    {
        write("script.py", script);
        const std::string run = "cd '" + native().string() + "' && /usr/bin/python3 script.py >out 2>&1";
        return std::system(run.c_str()) == 0 ? read("out") : read("out") + "failed";
    }

private:
    std::filesystem::path m_directory;
};

} // namespace vo::test
