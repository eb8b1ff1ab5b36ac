#include <Misc/XMLReport/detail/ReportPage.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Core/detail/NumberText.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>
#include <Misc/XMLReport/ReportPageFailure.h>
#include <Subsystem/VoLogging.h>

#include <QtCore/QString>
#include <QtCore/QVector>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

namespace vo::detail {

namespace {

constexpr std::size_t BlockSize = std::size_t(64) << 10;

constexpr std::string_view BuiltInStyle =
    "\t\t<style>\n"
    "\t\t\th1, h2, p { font-family: 'Open Sans',sans-serif; }\n"
    "\t\t\th2 { margin-left: 40px;}\n"
    "\t\t\t.datatable { margin-left: 80px; font-family: 'Open Sans',sans-serif;}\n"
    "\t\t\t.datatable th { text-align: left;background-color: #4CAF50;color: white;}\n"
    "\t\t\t.datatable td { width: 200px;}\n"
    "\t\t\t.headertable { width: 100%; margin-left: 40px; font-family: 'Open Sans',sans-serif;}\n"
    "\t\t\t.headertable td { width: auto;}\n"
    "\t\t</style>\n";

// The heading stays in sight, numbers stand right-aligned with digits of one width, a case's rows are set off from the
// next one's. Row heights are fixed because the second heading row sticks below the first, the width of the numbers'
// column because what names a case sticks beside it.
constexpr std::string_view CommonRefinements =
    "h1,h2,p{margin-left:0}"
    "h1{font-size:26px}h2{font-size:19px;margin:28px 0 8px}"
    ".datatable{margin:0 0 24px;border-collapse:separate;border-spacing:0;font-size:14px;line-height:20px}"
    ".datatable th{position:sticky;top:0;z-index:2;padding:4px 10px;background-color:#2e7d32;text-align:right;"
    "white-space:nowrap}"
    ".datatable td{width:auto;padding:3px 10px;text-align:right;vertical-align:top;white-space:nowrap;"
    "font-variant-numeric:tabular-nums;border-bottom:1px solid #ddd;background:#fff}"
    ".datatable tr:hover td{background:#f1f8f1}"
    "@media(max-width:700px){.datatable{font-size:12px}.datatable th,.datatable td{padding-left:6px;padding-right:6px}}"
    ".headertable{width:auto;margin:0 0 16px;font-size:14px}"
    ".headertable td{padding:2px 16px 2px 0;overflow-wrap:anywhere}"
    ".headertable td:first-child{color:#555;white-space:nowrap}";

// The letter of the interface is a file that can be opened for writing: one that may not be changed is not replaced
// either. Nor is what is no file: renaming over a device would end it.
void RequireWritable(const VoFilePath& file)
{
    const auto native = ToNative(file);
    std::error_code error;
    const auto status = std::filesystem::status(native, error);
    if (status.type() == std::filesystem::file_type::not_found)
        return;
    if (status.type() == std::filesystem::file_type::directory)
        throw Because(std::make_error_code(std::errc::is_a_directory), VoCannotOpenFileException(file));
    errno = 0;
    if (status.type() != std::filesystem::file_type::regular || !std::ofstream(native, std::ios::app).is_open())
        throw Because(std::error_code(errno, std::generic_category()), VoCannotOpenFileException(file));
}

VoAtomicFileWriter OpenForWriting(const YString& file)
{
    const VoFilePath path{VoString(file)};
    RequireWritable(path);
    return VoAtomicFileWriter(path);
}

NativeFile OpenStyle(const YString& styleFile)
{
    std::error_code error;
    if (styleFile.isEmpty())
        return NativeFile();
    try {
        return NativeFile::OpenForReading(ToNative(VoFilePath{VoString(styleFile)}), error);
    } catch (const VoException&) {
        return NativeFile(); // a name that no file has
    }
}

// What a byte of a text must be replaced by; null when it may stand. Lines and tabs may, other control characters
// cannot be in a page.
const char* Replacement(unsigned char byte)
{
    switch (byte) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
    case '\n':
    case '\r':
        return nullptr;
    default:
        return byte < 0x20 || byte == 0x7f ? "&#65533;" : nullptr;
    }
}

// Adds a text as it stands in a page. Its characters beyond ASCII become references, because nothing in the page's
// frame tells a browser that the page would be UTF-8.
void AppendEscaped(std::string& page, std::string_view text)
{
    std::size_t plain = 0; // start of what may stand and is not yet added
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80) {
            page.append(text.substr(plain, i - plain));
            std::size_t end = i;
            while (end < text.size() && static_cast<unsigned char>(text[end]) >= 0x80)
                ++end;
            const QString characters = QString::fromUtf8(text.data() + i, static_cast<int>(end - i));
            for (const uint character : characters.toUcs4())
                page.append("&#").append(IntegerText(character)).append(";");
            plain = end;
            i = end - 1;
        } else if (const char* replacement = Replacement(byte)) {
            page.append(text.substr(plain, i - plain)).append(replacement);
            plain = i + 1;
        }
    }
    page.append(text.substr(plain));
}

} // namespace

ReportPage::ReportPage(const YString& file, const YString& styleFile, const char* title)
    : m_file(OpenForWriting(file))
{
    m_pending.reserve(2 * BlockSize);
    *this << "<html>\n\t<head>\n\t\t<title>" << title << "</title>\n";
    writeStyle(styleFile);
    *this << "\t</head>\n";
}

void ReportPage::writeStyle(const YString& styleFile)
{
    m_ownStyle = !About(VoString(styleFile), [&] { return copyStyle(OpenStyle(styleFile)); });
    if (m_ownStyle)
        *this << BuiltInStyle;
}

// False, with nothing written, when there is nothing to read.
bool ReportPage::copyStyle(NativeFile file)
{
    if (!file.isOpen())
        return false;
    std::vector<char> block(BlockSize);
    *this << "<style>\n";
    for (;;) {
        std::error_code error;
        const std::size_t read = file.read(block.data(), block.size(), error);
        if (error)
            throw Because(error, VoIOException("Error occurred on reading from file"));
        if (read == 0)
            break;
        *this << std::string_view(block.data(), read);
    }
    *this << "</style>\n";
    return true;
}

ReportPage& ReportPage::operator<<(std::string_view fixed)
{
    m_pending.append(fixed);
    if (m_pending.size() >= BlockSize)
        flush();
    return *this;
}

ReportPage& ReportPage::text(const YString& text)
{
    AppendEscaped(m_pending, text.toStdString());
    return *this;
}

ReportPage& ReportPage::integer(long long value)
{
    return *this << IntegerText(value);
}

ReportPage& ReportPage::number(double value)
{
    return *this << GeneralText(value);
}

ReportPage& ReportPage::number(double value, int digits)
{
    return *this << GeneralText(value, digits);
}

ReportPage& ReportPage::refinements(std::string_view rules)
{
    if (m_ownStyle)
        *this << "<style>" << CommonRefinements << rules << "</style>";
    return *this;
}

void ReportPage::flush()
{
    m_file.write(m_pending.data(), m_pending.size());
    m_pending.clear();
}

void ReportPage::finish()
{
    *this << "</html>";
    flush();
    m_file.commit();
}

bool WriteReportPage(const YString& file, const YString& styleFile, const char* title,
                     const std::function<void(ReportPage&)>& write)
{
    try {
        ReportPage page(file, styleFile, title);
        write(page);
        page.finish();
        return true;
    } catch (const VoException& exception) {
        ReportPageFailure::Keep();
        vo::logging::Logger::Get("report").error(VoString(file) + ": " + exception.message());
        return false;
    }
}

} // namespace vo::detail
