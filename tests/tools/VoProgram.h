#pragma once

#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// How a run of the program ended.
struct Outcome
{
    int code = -1; ///< The exit code; -1 when it was killed or crashed.
    std::string out;
    std::string err;

    QJsonObject json() const; ///< The document on standard output; empty when that is not exactly one.
};

/// Prints a run when a check of it fails.
std::ostream& operator<<(std::ostream& stream, const Outcome& run);

/// What a command line must tell: an exit code, and one line on standard error.
struct Told
{
    std::string arguments;
    int code = 0;
    std::string error; ///< Without the program's name; "*" stands for what is new each time, "@" for the directory.
};

using vo::test::Tree;

/// Runs the real program in a scratch directory of its own, with an updater's directory and a source folder in it.
class VoProgram : public testing::Test
{
protected:
    /// @{ Runs the program with arguments given as one text; "@" in front of a word stands for the scratch directory.
    Outcome vo(const std::string& arguments);
    Outcome vo(const QStringList& arguments);
    /// @}
    /// Runs it by another program, whose last arguments are the program's path and the arguments.
    Outcome voBehind(const QStringList& command, const std::string& arguments);
    /// Runs it with --json and -q, expects the exit code, and returns the document.
    QJsonObject voJson(const std::string& arguments, int expectedCode = 0);
    /// Starts it and calls `act` once with the running process as soon as `lines` lines have come on standard error;
    /// what comes then is read only after `act`, so that a talkative program cannot end before.
    Outcome voUntil(const std::string& arguments, int lines, const std::function<void(QProcess&)>& act);

    /// Expects a run to have told that and nothing more; gives it back.
    Outcome expectTold(const Outcome& run, const Told& told) const;
    /// The rows of a file in "sessions".
    static std::vector<Told> session(const std::string& file);

    std::string text(const std::string& name) const { return m_scratch.native(name).string(); } ///< Its whole path.
    QString path(const std::string& name) const { return QString::fromStdString(text(name)); }
    void write(const std::string& name, const QByteArray& bytes) const { m_scratch.write(name, bytes.toStdString()); }
    QByteArray read(const std::string& name) const { return QByteArray::fromStdString(m_scratch.read(name)); }
    bool exists(const std::string& name) const { return std::filesystem::exists(m_scratch.native(name)); }
    Tree tree(const std::string& name) const { return m_scratch.tree(name); }

    /// Fills a folder with files of many sizes, empty ones and deep ones among them.
    void fillSource(const std::string& name, int files) const;
    /// Publishes a folder to "pub/declarations.xml" under the name "Examples", and expects that to succeed.
    QJsonObject publish(const std::string& folder, const std::string& release, const std::string& more = "");
    /// Runs a script of the shell there, for which "vo" is the program.
    Outcome shell(const std::string& script);

    vo::test::ScratchFolder m_scratch;

private:
    QProcessEnvironment environment() const;
    Outcome run(const QString& program, const QStringList& arguments);
    QStringList words(const std::string& arguments) const;
};
