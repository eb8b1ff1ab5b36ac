#include "VoProgram.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>

#include <fstream>

namespace {

constexpr int Timeout = 120000; // milliseconds; a sanitised program on a busy machine is slow

// Another one takes its place when faults are put into it.
QString Program()
{
    return qEnvironmentVariable("VO_PROGRAM", QStringLiteral(VO_PROGRAM));
}

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
    run.err += process.readAllStandardError().replace("\r\n", "\n").toStdString();
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

QProcessEnvironment VoProgram::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VOAPPDATAPATH"), path("data"));
    environment.insert(QStringLiteral("PATH"),
                       QFileInfo(Program()).path() + QDir::listSeparator() + environment.value(QStringLiteral("PATH")));
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

Outcome VoProgram::shell(const std::string& script)
{
    return run(QStringLiteral("sh"), {QStringLiteral("-c"), Q(script)});
}

Outcome VoProgram::vo(const QStringList& arguments)
{
    return run(Program(), arguments);
}

Outcome VoProgram::voBehind(const QStringList& command, const std::string& arguments)
{
    return run(command.first(), command.mid(1) + QStringList(Program()) + words(arguments));
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
    process.start(Program(), words(arguments));
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

Outcome VoProgram::expectTold(const Outcome& run, const Told& told) const
{
    EXPECT_EQ(run.code, told.code) << "vo " << told.arguments << "\n" << run;
    const QString error = Q(told.error).replace(QLatin1Char('@'), Q(m_scratch.native().string()));
    QString pattern = QRegularExpression::escape(QDir::fromNativeSeparators(QStringLiteral("vo: %1\n").arg(error)));
    pattern.replace(QStringLiteral("\\*"), QStringLiteral("[^/ ]+"));
    EXPECT_TRUE(QRegularExpression(QRegularExpression::anchoredPattern(pattern))
                    .match(QDir::fromNativeSeparators(Q(run.err)))
                    .hasMatch())
        << "vo " << told.arguments << "\nwanted: " << told.error << "\n"
        << run;
    return run;
}

std::vector<Told> VoProgram::session(const std::string& file)
{
    std::ifstream lines(VO_SESSIONS "/" + file);
    std::vector<Told> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("$ vo", 0) == 0)
            rows.push_back({line.substr(std::min<std::size_t>(5, line.size())), 0, {}});
        else if (line.front() != '#') {
            rows.back().code = line.front() - '0';
            rows.back().error = line.substr(2);
        }
    }
    EXPECT_FALSE(rows.empty()) << file;
    return rows;
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
