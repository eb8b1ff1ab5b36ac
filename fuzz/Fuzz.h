#pragma once

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativePath.h>
#include <Subsystem/VoLogging.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

/// @file
/// What the fuzz entries share. An entry promises that no input makes the library crash, hang, take memory without
/// bound or throw anything but its own exceptions, and that the properties it requires hold.

namespace vo::fuzz {

/// Ends the run as a finding when a property does not hold.
inline void Require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "property does not hold: %s\n", property);
    std::abort();
}

/// Runs @p action and lets the library's exceptions pass as ordinary refusals. Any other exception ends the run.
template <typename Action>
void Allow(Action&& action)
{
    try {
        action();
    } catch (const VoException&) {
    }
}

/// A scratch directory for the whole run, with one file in it that holds the input.
class Scratch
{
public:
    Scratch() { vo::logging::DisableStandardError(); }

    VoFilePath file(const char* name) const { return m_directory.path().file(name); }
    VoDirectoryPath directory() const { return m_directory.path(); }

    VoFilePath write(const char* name, const std::uint8_t* data, std::size_t size) const
    {
        const VoFilePath path = file(name);
        std::ofstream stream(vo::detail::ToNative(path), std::ios::binary | std::ios::trunc);
        stream.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        Require(stream.flush().good(), "the input can be written");
        return path;
    }

    std::string read(const VoFilePath& path) const
    {
        std::ifstream stream(vo::detail::ToNative(path), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

private:
    VoTemporaryDir m_directory;
};

/// What a document loads as is written, loaded and written again: both texts must be the same.
template <typename Document>
void RequireStable(const Scratch& scratch, const Document& document)
{
    const VoFilePath first = scratch.file("first.xml");
    const VoFilePath second = scratch.file("second.xml");
    document.write(first);
    const auto again = Document::Open(first);
    Require(static_cast<bool>(again), "a written document is loaded again");
    again->write(second);
    Require(scratch.read(first) == scratch.read(second), "writing what was loaded gives the same bytes");
}

} // namespace vo::fuzz
