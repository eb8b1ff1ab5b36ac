#include <vo/line/Failures.h>

#include <vo/line/Arguments.h>
#include <vo/line/Paths.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoXMLException.h>
#include <Download/VoDownloadException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoIOException.h>
#include <Shell/VoScriptException.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoUntrustedReleaseException.h>

#include <algorithm>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace vo::tool {
namespace {

/// What is known of a failure, in the words of the library.
struct Known
{
    explicit Known(const VoException& exception)
        : message(exception.message().toStdString())
        , reason(exception.reason().toStdString())
        , subject(exception.subject().toStdString())
    {
    }

    explicit Known(const VoFileException& exception)
        : Known(static_cast<const VoException&>(exception))
    {
        if (subject.empty())
            subject = exception.path1().path().toStdString();
        second = exception.path2().path().toStdString();
        isOfFile = true;
    }

    explicit Known(const VoString& text)
        : message(text.toStdString())
    {
    }

    std::string message;
    std::string told;   ///< Better words than those of the message; empty when there are none.
    std::string reason; ///< Of the system.
    std::string subject;
    std::string second;                                     ///< Where two files are concerned.
    std::vector<std::pair<std::string, std::size_t>> lines; ///< Of scripts, the outermost first, that led there.
    bool isOfFile = false; ///< The message says what was done to the file, and no more.
    ExitCode code = ExitCode::Failed;
};

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::string WithoutEnd(const std::string& text, const std::string& end)
{
    const bool ends = text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
    return ends ? text.substr(0, text.size() - end.size()) : text;
}

/// What the library calls an operation, or says of it, as it is told to people. The file's name follows.
std::string Sentence(const std::string& operation)
{
    struct Row
    {
        const char* operation;
        const char* told;
    };
    static constexpr Row rows[] = {
        {"Cannot open file", "cannot open"},
        {"Cannot open file for writing", "cannot write"},
        {"Cannot create directory", "cannot create the folder"},
        {"Cannot lock file", "cannot lock"},
        {"Cannot obtain file data", "cannot read"},
        {"Cannot remove directory", "cannot remove"},
        {"Cannot remove file", "cannot remove"},
        {"Cannot replace file", "cannot replace"},
        {"Cannot restore file", "cannot restore"},
        {"Cannot write file", "cannot write"},
        {"Cannot write to file", "cannot write"},
        {"Cannot write to disk", "cannot write to"},
        {"Failed to open file in given mode", "cannot open"},
        {"Write failure", "cannot write"},
        {"Error occurred on reading from file", "cannot read"},
        {"Error occurred on writing to file", "cannot write"},
        {"Unable to open file for writing", "cannot write"},
        {"Invalid path", "cannot use"},
        {"", "cannot copy"},
        {"canonical", "cannot look at"},
        {"current_path", "cannot find"},
        {"create_directory", "cannot create the folder"},
        {"create_directories", "cannot create the folder"},
        {"directory_iterator", "cannot list the folder"},
        {"equivalent", "cannot compare"},
        {"exists", "cannot look at"},
        {"file_size", "cannot look at"},
        {"status", "cannot look at"},
        {"remove", "cannot remove"},
        {"remove_all", "cannot remove"},
        {"rename", "cannot replace"},
        {"space", "cannot find the free space of"},
        {"sync", "cannot write to"},
        {"temp_directory_path", "cannot find the folder for temporary files"},
    };
    const auto* found =
        std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) { return operation == row.operation; });
    return found == std::end(rows) ? std::string() : found->told;
}

/// How one goes on knowingly, for what may be wanted; empty for what must not be.
const char* WayOn(VoUntrustedReleaseException::Kind kind)
{
    using Kind = VoUntrustedReleaseException::Kind;
    switch (kind) {
    case Kind::Expired:
        return "; --allow-expired goes on all the same";
    case Kind::Mixed:
        return "; while a release is being published that passes";
    case Kind::Publisher:
        return "; --key with the key of another publisher and --move let him replace it";
    default:
        return "";
    }
}

/// Takes the exception that is being handled apart; its class decides the code.
Known KnownOfCurrentException()
{
    const auto coded = [](ExitCode code, Known failure) {
        failure.code = code;
        return failure;
    };
    try {
        throw;
    } catch (const VoScriptException& exception) {
        try {
            std::rethrow_exception(exception.cause());
        } catch (...) {
            Known failure = KnownOfCurrentException();
            failure.lines.insert(failure.lines.begin(), {exception.script().toStdString(), exception.line()});
            return failure;
        }
    } catch (const VoInstallationFailedException& exception) {
        if (!exception.cause())
            return Known(exception);
        try {
            std::rethrow_exception(exception.cause());
        } catch (...) {
            return KnownOfCurrentException();
        }
    } catch (const VoUserCancelledException& exception) {
        return coded(ExitCode::Cancelled, Known(exception));
    } catch (const VoUntrustedReleaseException& exception) {
        Known failure = coded(ExitCode::Unsafe, Known(exception));
        failure.told = failure.message + WayOn(exception.kind());
        return failure;
    } catch (const VoDamagedContentException& exception) {
        return Known(exception);
    } catch (const VoValidationException& exception) {
        return coded(ExitCode::Unsafe, Known(exception));
    } catch (const VoDocumentTypeException& exception) {
        Known failure(exception);
        if (!exception.isWebPage())
            return coded(ExitCode::Unsafe, failure);
        failure.told = "it is a web page";
        return failure;
    } catch (const VoFileException& exception) {
        return Known(exception);
    } catch (const VoIOException& exception) {
        Known failure(exception);
        failure.isOfFile = true;
        return failure;
    } catch (const VoDownloadException& exception) {
        Known failure(exception);
        failure.isOfFile = !Contains(failure.subject, "://");
        if (!failure.isOfFile)
            failure.told = failure.reason;
        return coded(exception.isCancelled() ? ExitCode::Cancelled : ExitCode::Failed, failure);
    } catch (const VoNullPointerException& exception) { // a document that could not be had
        Known failure(exception);
        failure.told = failure.reason;
        return failure;
    } catch (const VoException& exception) {
        return Known(exception);
    } catch (...) {
        return Known(CurrentExceptionText());
    }
}

/// The operation that the message of a file's failure names, without the file and the reason, which are told apart.
std::string OperationOf(const Known& failure)
{
    std::string text = WithoutEnd(failure.message, ": " + failure.subject);
    text = text.substr(0, text.find(failure.reason));
    return WithoutEnd(text.substr(0, text.find(" (")), ": ");
}

class Telling
{
public:
    Telling(const Arguments& arguments, const VoString& wanted, const VoString& name)
        : m_arguments(arguments)
        , m_wanted(wanted.toStdString())
        , m_name(name.toStdString())
    {
    }

    VoString text(const Known& failure) const
    {
        std::string text;
        for (const auto& [script, line] : failure.lines)
            text += m_arguments.typedName(script) + ", line " + std::to_string(line) + ": ";
        if (!m_wanted.empty())
            text += "cannot " + m_wanted + " " + m_name + ": ";
        return VoString(text + detail(failure));
    }

private:
    std::string detail(const Known& failure) const
    {
        const std::string done =
            failure.isOfFile && !failure.reason.empty() ? Sentence(OperationOf(failure)) : std::string();
        if (done.empty())
            return words(failure);
        if (failure.subject.empty())
            return done + ": " + failure.reason;
        const std::string subject = shown(failure.subject);
        if (!failure.second.empty())
            return (done == "cannot replace" ? "cannot move" : done) + " " + subject + " to " + shown(failure.second) +
                   ": " + failure.reason;
        return isNamed(subject) ? failure.reason : done + " " + subject + ": " + failure.reason;
    }

    /// The library's own words, with what they are about in front unless it is named.
    std::string words(const Known& failure) const
    {
        std::string words = failure.told.empty() ? failure.message : failure.told;
        if (!failure.subject.empty())
            words = WithoutEnd(WithoutEnd(words, ": " + failure.subject), ": ");
        if (!failure.reason.empty() && !Contains(words, failure.reason))
            words += ": " + failure.reason;
        const std::string subject = shown(failure.subject);
        const bool isInFront = !isNamed(subject) && !Contains(words, failure.subject);
        return (isInFront ? subject + ": " : std::string()) + TextOfLibrary(VoString(words)).toStdString();
    }

    bool isNamed(const std::string& subject) const
    {
        return subject.empty() || (!m_wanted.empty() && subject == m_name);
    }

    /// As the user named it; a URL is one already.
    std::string shown(const std::string& subject) const
    {
        const bool isPath = !subject.empty() && !Contains(subject, "://");
        return isPath ? m_arguments.typedName(NativeText(subject)) : subject;
    }

    const Arguments& m_arguments;
    const std::string m_wanted;
    const std::string m_name;
};

} // namespace

CommandError ToldFailure(const Arguments& arguments, const VoString& wanted, const VoString& name)
{
    const Known failure = KnownOfCurrentException();
    CommandError error{failure.code,
                       "stopped as asked; nothing is left half-written, and the same command goes on from here"};
    if (failure.code != ExitCode::Cancelled)
        error.text = Telling(arguments, wanted, name).text(failure);
    error.tells = {VoString(failure.message)};
    if (!failure.subject.empty() && failure.subject.back() != '\\') // a folder's name begins those of its files
        error.tells.emplace_back(failure.subject);
    return error;
}

VoString NameOf(const Arguments& arguments, const VoLocation& location)
{
    return VoString(arguments.typedName(LocationText(location).toStdString()));
}

VoString NameOf(const Arguments& arguments, const VoDirectoryPath& directory)
{
    return VoString(arguments.typedName(PathText(directory).toStdString()));
}

void RequireFolder(const Arguments& arguments, const VoDirectoryPath& folder, const char* wanted)
{
    const VoString name = NameOf(arguments, folder);
    Doing(arguments, wanted, name, [&] {
        if (VoFileSystem::IsDirectory(folder))
            return;
        if (!VoFileSystem::Exists(VoFilePath(WithoutEnd(folder.path().toStdString(), "\\"))))
            throw VoFileNotFoundException(folder);
        throw Failure(VoString("cannot ") + wanted + " " + name + ": it is no folder");
    });
}

VoString TextOfLibrary(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    // A rooted path begins behind a blank, a quote or a bracket, if not with the text. What follows are its separators:
    // the library takes no name that holds a backslash where that does not separate.
    std::size_t start = 0;
    while (start < bytes.size() &&
           !(bytes[start] == '\\' && (start == 0 || Contains(" \"([", std::string(1, bytes[start - 1])))))
        ++start;
    return VoString(bytes.substr(0, start) + NativeText(bytes.substr(start)));
}

} // namespace vo::tool
