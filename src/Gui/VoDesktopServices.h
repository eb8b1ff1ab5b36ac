#pragma once

#include <Core/VoForward.h>
#include <Gui/VoGuiExport.h>

/// Hands files, folders and addresses to the desktop's own programs.
///
/// What is asked here is only handed over: that a program was started is all that a return says. REQUIRES a graphical
/// application object (QGuiApplication); without one each throws VoInvalidCallException "Cannot open " + what + ": no
/// graphical application", and "Cannot open " + what when the desktop refuses.
class VOCOREGUI_EXPORT VoDesktopServices
{
public:
    VoDesktopServices() = delete;

    /// Makes VoFileSystem::OpenFile() and OpenDirectory() open through here, until the process ends. Called once, for
    /// example at the beginning of main(): it is a call, and not what loading the library does, because a linker leaves
    /// out a library of which nothing is called. May be called again, from any thread, and before there is an
    /// application.
    static void Install() noexcept;

    /// Opens a file or folder with the program that the desktop has for it.
    /// @throws VoFileNotFoundException when there is none
    /// @throws VoFileException "status: " and the reason when the system does not let one look
    /// @{
    static void OpenFile(const VoFilePath& path);
    static void OpenDirectory(const VoDirectoryPath& path);
    /// @}

    /// Shows the folder of a file with the file selected; where the desktop's file manager cannot select, the folder.
    /// Waits for the file manager at most two seconds. Throws as OpenFile().
    static void ShowFile(const VoFilePath& path);

    /// Opens an address: http and https in the browser, mailto in the mail program, file as OpenFile() does.
    /// @throws VoInvalidParameterException "Cannot open URL: " + the text, for other schemes (a text from elsewhere
    ///         could start any program through them), for http and https without a host, for mailto without an address,
    ///         and for files of another host, which would be handed the user's credentials
    static void OpenUrl(const VoUrl& url);
};
