#include "VoProgram.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>

namespace {

constexpr int Timeout = 120000; // milliseconds; a sanitised program on a busy machine is slow

QString Q(const std::string& text)
{
    return QString::fromStdString(text);
}

Outcome Finished(QProcess& process)
{
    EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(Timeout))
        << "the program does not end";
    Outcome run;
    run.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput().toStdString();
    run.err += process.readAllStandardError().toStdString();
    return run;
}

} // namespace

QJsonObject Outcome::json() const
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(out)).object();
}

std::ostream& operator<<(std::ostream& stream, const Outcome& run)
{
    return stream << "exit code " << run.code << "\n--- out\n" << run.out << "\n--- err\n" << run.err;
}

VoProgram::VoProgram()
{
    EXPECT_TRUE(m_scratch.isValid());
}

QProcessEnvironment VoProgram::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VOAPPDATAPATH"), path("data"));
    return environment;
}

QStringList VoProgram::words(const std::string& arguments) const
{
    QStringList words = Q(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString& word : words) {
        if (word.startsWith(QLatin1Char('@')))
            word = path(word.mid(1).toStdString());
    }
    return words;
}

Outcome VoProgram::run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.setWorkingDirectory(path("."));
    process.start(program, arguments);
    return Finished(process);
}

Outcome VoProgram::vo(const QStringList& arguments)
{
    return run(QStringLiteral(VO_PROGRAM), arguments);
}

Outcome VoProgram::voBehind(const QStringList& command, const std::string& arguments)
{
    return run(command.first(), command.mid(1) + QStringList(QStringLiteral(VO_PROGRAM)) + words(arguments));
}

Outcome VoProgram::vo(const std::string& arguments)
{
    return vo(words(arguments));
}

QJsonObject VoProgram::voJson(const std::string& arguments, int expectedCode)
{
    const Outcome run = vo(arguments + " --json -q");
    const QJsonObject document = run.json();
    EXPECT_EQ(run.code, expectedCode) << "vo " << arguments << "\n" << run;
    EXPECT_EQ(document[QStringLiteral("exitCode")].toInt(-1), expectedCode) << run;
    return document;
}

Outcome VoProgram::voUntil(const std::string& arguments, int lines, const std::function<void(QProcess&)>& act)
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.setReadChannel(QProcess::StandardError);
    process.start(QStringLiteral(VO_PROGRAM), words(arguments));
    std::string err;
    for (int seen = 0; seen < lines;) {
        if (!process.canReadLine() && !process.waitForReadyRead(Timeout))
            break;
        while (seen < lines && process.canReadLine()) {
            err += process.readLine().toStdString();
            ++seen;
        }
    }
    act(process);
    Outcome run = Finished(process);
    run.err = err + run.err;
    return run;
}

QString VoProgram::path(const std::string& name) const
{
    return m_scratch.filePath(Q(name));
}

void VoProgram::write(const std::string& name, const QByteArray& bytes) const
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name;
    ASSERT_EQ(file.write(bytes), bytes.size()) << name;
}

QByteArray VoProgram::read(const std::string& name) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

void VoProgram::remove(const std::string& name) const
{
    const QString target = path(name);
    EXPECT_TRUE(QFileInfo(target).isDir() ? QDir(target).removeRecursively() : QFile::remove(target)) << name;
}

bool VoProgram::exists(const std::string& name) const
{
    return QFileInfo::exists(path(name));
}

Tree VoProgram::tree(const std::string& name) const
{
    Tree found;
    const QDir root(path(name));
    QDirIterator walk(root.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const std::string relative = root.relativeFilePath(walk.next()).toStdString();
        if (walk.fileInfo().isDir())
            found[relative + "/"];
        else
            found[relative] = read(name + "/" + relative).toStdString();
    }
    return found;
}

void VoProgram::fillSource(const std::string& name, int files) const
{
    for (int i = 0; i < files; ++i) {
        const std::string number = std::to_string(i);
        const std::string folder =
            i % 5 == 0 ? "" : "board " + std::to_string(i % 7) + (i % 3 == 0 ? "/deep/er/" : "/");
        QByteArray bytes;
        for (int line = 0; line < (i * 37) % 400; ++line)
            bytes += "line " + QByteArray::number(line * i) + " of file " + QByteArray::number(i) + "\n";
        write(name + "/" + folder + "file" + number + (i % 4 == 0 ? ".txt" : ""), bytes);
    }
}

QJsonObject VoProgram::publish(const std::string& folder, const std::string& release, const std::string& more)
{
    return voJson("publish @" + folder + " --to @pub/declarations.xml --name Examples --release " + release + " " +
                  more);
}

std::string VoProgram::definition(const QJsonObject& published) const
{
    return "pub/packages/" + published[QStringLiteral("package")].toString().toStdString() + "/" +
           published[QStringLiteral("release")].toString().toStdString() + "/package.xml";
}
