#pragma once

#include <Core/VoExport.h>
#include <Core/VoHostTypes.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/detail/NativeFile.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <string>
#include <string_view>

namespace vo::detail {

/// One HTML page on its way to a file: the frame that all pages share, and what their cells are written with. Fixed
/// parts, texts and numbers go in by different functions, so that no text is ever taken as a part of the page or as a
/// format.
class ReportPage
{
public:
    /// Starts a page: everything up to the end of the head.
    /// @throws VoException when the file cannot be opened for writing
    ReportPage(const YString& file, const YString& styleFile, const char* title);

    ReportPage& operator<<(std::string_view fixed); ///< A part of the page, as it is.
    ReportPage& text(const YString& text);          ///< A text, escaped.
    ReportPage& integer(long long value);           ///< Like "%d".
    ReportPage& number(double value);               ///< Like "%g".
    ReportPage& number(double value, int digits);   ///< Like "%.*g": so many significant digits.

    /// Rules that only make sense beside the built-in style, as one style element; nothing beside the user's own style.
    /// To all pages' rules are added `rules`.
    ReportPage& refinements(std::string_view rules);

    void finish(); ///< Ends the page and puts it in the file's place.

private:
    void writeStyle(const YString& styleFile);
    bool copyStyle(NativeFile file);
    void flush();

    VoAtomicFileWriter m_file;
    std::string m_pending; // what has not been handed on
    bool m_ownStyle = true;
};

/// Makes a page; false, with the reason in the log (category "report") and in ReportPageFailure, when that fails.
bool WriteReportPage(const YString& file, const YString& styleFile, const char* title,
                     const std::function<void(ReportPage&)>& write);

} // namespace vo::detail
