#pragma once

#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoNativeName.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>

namespace vo::test {

/// What is in a directory: relative names with "/" to contents. Directories end with "/" and have none.
using Tree = std::map<std::string, std::string>;

inline Tree TreeOf(const std::filesystem::path& root)
{
    Tree found;
    if (!std::filesystem::exists(root))
        return found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string name = entry.path().lexically_relative(root).generic_u8string();
        if (entry.is_directory() && !entry.is_symlink()) {
            found[name + "/"];
            continue;
        }
        std::string& content = found[name];
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios_base::binary);
            content.assign(std::istreambuf_iterator<char>(file), {});
        }
    }
    return found;
}

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
    std::filesystem::path native(const std::string& name) const
    {
        return (m_directory / std::filesystem::u8path(name)).make_preferred();
    }

    /// The library's path of a file in the directory.
    VoFilePath path(const std::string& name) const { return vo::FromStdPath(native(name)); }

    /// Makes a file and the directories it needs; gives its path.
    VoFilePath write(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(native(name).parent_path());
        std::ofstream(native(name), std::ios_base::binary) << content;
        return path(name);
    }

    /// The content of a file.
    std::string read(const std::string& name) const
    {
        std::ifstream file(native(name), std::ios_base::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    /// All that is below a directory, none when there is no such directory.
    Tree tree(const std::string& name) const { return TreeOf(native(name)); }

    /// Runs a Python script in the directory; gives what it prints.
    std::string python(const std::string& script) const
    {
        const std::string run = "cd '" + native().string() + "' && /usr/bin/python3 '" + script + "' >out 2>&1";
        return std::system(run.c_str()) == 0 ? read("out") : read("out") + "failed";
    }

private:
    std::filesystem::path m_directory;
};

} // namespace vo::test
