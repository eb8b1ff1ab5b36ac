#include "ResultRow.h"

#include <ScriptedHttpServer.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadNotification.h>
#include <Download/VoDownloadSize.h>
#include <Download/VoGroupedDownloadRequest.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoUrl.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

// Downloads from a web server on this machine: ours, the bare network classes we stand on (the floor), and the command
// line's downloaders. Ours and the floor run by turns in this process and are compared by processor time; the others
// are processes, compared by wall time. Peaks of memory are those of a process that does nothing else.

namespace {

struct Job
{
    std::string url; // the folder, with "/" at its end
    QString target;
    int files;
};

/// The web server with its files, for as long as it lives.
class WebServer
{
public:
    WebServer()
    {
        const QString program = QStandardPaths::findExecutable(
            QStringLiteral("nginx"), QStringList{QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")});
        if (program.isEmpty())
            return;
        {
            QTcpServer probe;
            probe.listen(QHostAddress::LocalHost, 0);
            m_port = probe.serverPort();
        }
        const QString root = m_folder.path();
        QDir(root).mkpath(QStringLiteral("www"));
        QFile configuration(root + QStringLiteral("/nginx.conf"));
        configuration.open(QIODevice::WriteOnly);
        configuration.write(QStringLiteral("daemon off; master_process off; pid %1/pid; error_log %1/error.log;\n"
                                           "events { worker_connections 256; }\n"
                                           "http { access_log off; sendfile on; client_body_temp_path %1/b;\n"
                                           "proxy_temp_path %1/p; fastcgi_temp_path %1/f; uwsgi_temp_path %1/u;\n"
                                           "scgi_temp_path %1/s; keepalive_requests 100000;\n"
                                           "server { listen 127.0.0.1:%2; root %1/www; } }\n")
                                .arg(root)
                                .arg(m_port)
                                .toUtf8());
        configuration.close();
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(program, {QStringLiteral("-p"), root, QStringLiteral("-c"), configuration.fileName()});
        QElapsedTimer waiting;
        waiting.start();
        while (!m_isRunning && waiting.elapsed() < 10000 && m_process.state() != QProcess::NotRunning) {
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, m_port);
            m_isRunning = socket.waitForConnected(100);
        }
    }
    ~WebServer()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    bool isRunning() const { return m_isRunning; }

    /// Where the files of a name stand.
    QString folder(const char* name) const
    {
        return m_folder.path() + QStringLiteral("/www/") + QString::fromLatin1(name);
    }

    /// Makes a folder of files named 0, 1, ..., and one more of another size where that is not 0; gives its URL.
    std::string provide(const char* name, int files, std::size_t size, std::size_t last = 0)
    {
        QDir().mkpath(folder(name));
        for (int i = 0; i < files; ++i)
            write(folder(name), i, size);
        if (last > 0)
            write(folder(name), files, last);
        return "http://127.0.0.1:" + std::to_string(m_port) + "/" + name + "/";
    }

private:
    // No two blocks of all files are the same.
    static void write(const QString& folder, int index, std::size_t size)
    {
        static QByteArray block = [] {
            std::mt19937 random(1);
            QByteArray bytes(1 << 20, '\0');
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
            return bytes;
        }();
        QFile file(folder + QLatin1Char('/') + QString::number(index));
        file.open(QIODevice::WriteOnly);
        for (std::size_t left = size; left > 0;) {
            const QByteArray stamp = QByteArray::number(index) + ':' + QByteArray::number(qulonglong(left)) + ';';
            std::copy(stamp.begin(), stamp.end(), block.begin());
            const auto count = std::min(left, static_cast<std::size_t>(block.size()));
            file.write(block.constData(), static_cast<qint64>(count));
            left -= count;
        }
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
    bool m_isRunning = false;
};

VoFilePath PathIn(const Job& job, int index)
{
    return VoFilePath(VoString(job.target + QLatin1Char('/') + QString::number(index)));
}

VoSharedPtr<VoGroupedDownloadRequest> GroupOf(const Job& job)
{
    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    for (int i = 0; i < job.files; ++i)
        group->add(VoUrl(VoString(job.url + std::to_string(i))), PathIn(job, i));
    return group;
}

void Ours(const Job& job)
{
    VoDownloadManager::RequestWait(GroupOf(job));
}

/// GET only, files written as the bytes come.
void Bare(const Job& job)
{
    static auto* const network = new QNetworkAccessManager(QCoreApplication::instance());
    QEventLoop loop;
    int left = job.files;
    std::vector<char> buffer(1 << 18);
    for (int i = 0; i < job.files; ++i) {
        QNetworkRequest request(QUrl(QString::fromStdString(job.url + std::to_string(i))));
        request.setRawHeader("Accept-Encoding", "identity");
        QNetworkReply* const reply = network->get(request);
        reply->setReadBufferSize(1 << 20);
        auto* const file = new QFile(job.target + QLatin1Char('/') + QString::number(i), reply);
        const auto take = [=, &buffer] {
            if (!file->isOpen())
                file->open(QIODevice::WriteOnly | QIODevice::Unbuffered);
            for (;;) {
                const qint64 count = reply->read(buffer.data(), static_cast<qint64>(buffer.size()));
                if (count <= 0)
                    break;
                file->write(buffer.data(), count);
            }
        };
        QObject::connect(reply, &QNetworkReply::readyRead, reply, take);
        QObject::connect(reply, &QNetworkReply::finished, reply, [=, &left, &loop] {
            take();
            file->close();
            reply->deleteLater();
            if (--left == 0)
                loop.quit();
        });
    }
    loop.exec();
}

bool Run(const char* program, const QStringList& arguments, const QString& folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QString::fromLatin1(program), arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void Curl(const Job& job)
{
    // One pattern for all files; "#1" is what it stands for.
    const QString range = job.files == 1 ? QStringLiteral("[0-0]") : QStringLiteral("[0-%1]").arg(job.files - 1);
    Run("curl",
        {QStringLiteral("-s"), QStringLiteral("--parallel"), QStringLiteral("--parallel-max"), QStringLiteral("6"),
         QString::fromStdString(job.url) + range, QStringLiteral("-o"), QStringLiteral("#1")},
        job.target);
}

void Aria(const Job& job)
{
    QFile list(job.target + QStringLiteral("/list"));
    list.open(QIODevice::WriteOnly);
    for (int i = 0; i < job.files; ++i)
        list.write(QByteArray::fromStdString(job.url + std::to_string(i) + "\n"));
    list.close();
    Run("aria2c",
        {QStringLiteral("-q"), QStringLiteral("-j6"), QStringLiteral("-x1"), QStringLiteral("--file-allocation=none"),
         QStringLiteral("--allow-overwrite=true"), QStringLiteral("--auto-file-renaming=false"), QStringLiteral("-i"),
         list.fileName()},
        job.target);
}

/// Processor time of this process and wall time.
struct Times
{
    double cpu = 0;
    double wall = 0;
};

/// The medians of several ways to do a job, taken in turns.
std::vector<Times> Measure(const std::vector<std::function<void(const Job&)>>& ways, Job job, int repetitions)
{
    std::vector<std::vector<double>> cpu(ways.size());
    std::vector<std::vector<double>> wall(ways.size());
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        for (std::size_t i = 0; i < ways.size(); ++i) {
            const QTemporaryDir folder;
            job.target = folder.path();
            QElapsedTimer timer;
            timer.start();
            const std::clock_t start = std::clock();
            ways[i](job);
            cpu[i].push_back(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
            wall[i].push_back(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        }
    }
    const auto median = [](std::vector<double>& values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    std::vector<Times> times;
    for (std::size_t i = 0; i < ways.size(); ++i)
        times.push_back({median(cpu[i]), median(wall[i])});
    return times;
}

/// The peak of memory, in megabytes, of a process that fetches the job's files with this program. Throws when these do
/// not have the bytes of those in the folder `served`, or when their progress was told wrongly.
double PeakMegabytes(const Job& job, const QString& served, const QString& way = QStringLiteral("--fetch"))
{
    const QTemporaryDir folder;
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(),
                  {way, QString::fromStdString(job.url), folder.path(), QString::number(job.files), served});
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw VoDownloadException("the files were not fetched as they are served");
    return process.readAllStandardOutput().trimmed().toDouble();
}

/// Throws unless what is told of a download only grows and ends with all its bytes.
class ProgressCheck
{
public:
    void take(const VoDownloadNotification& notification)
    {
        if (notification.type() != VoDownloadNotification::Progress)
            return;
        const VoDownloadProgressNotification& progress = notification.asProgressMessage();
        m_onlyGrows = m_onlyGrows && progress.received().bytes() >= m_received;
        m_received = progress.received().bytes();
        m_total = progress.total().bytes();
    }
    void requireRight(std::int64_t bytes) const
    {
        if (!m_onlyGrows || m_received != bytes || m_total != bytes)
            throw VoDownloadException("the progress is told wrongly");
    }

private:
    bool m_onlyGrows = true;
    std::int64_t m_received = 0;
    std::int64_t m_total = 0;
};

int Fetch(char** argv)
{
    const Job job{argv[2], QString::fromLocal8Bit(argv[3]), std::atoi(argv[4])};
    ProgressCheck progress;
    const bool isBare = std::string(argv[1]) == "--fetch-bare";
    if (isBare)
        Bare(job);
    else
        VoDownloadManager::RequestWait(
            GroupOf(job), VoStopFlag(),
            [&](const VoSharedPtr<VoDownloadNotification>& notification) { progress.take(*notification); });
    // Not by the resources used: those begin with the size of the process that started this one.
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            std::printf("%.1f\n", std::strtod(line.c_str() + 6, nullptr) / 1024);
    }
    std::int64_t bytes = 0;
    const Job served{job.url, QString::fromLocal8Bit(argv[5]), job.files};
    for (int i = 0; i < job.files; ++i) {
        bytes += static_cast<std::int64_t>(VoFileSystem::FileSize(PathIn(job, i)));
        if (VoFileSystem::Checksum(PathIn(job, i)) != VoFileSystem::Checksum(PathIn(served, i)))
            throw VoDownloadException("other bytes than those served: " + PathIn(job, i).path());
    }
    if (!isBare)
        progress.requireRight(bytes);
    return 0;
}

std::string Megabytes(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MB", value);
    return text;
}

/// A row of the peak of a process that does the job, beside that of one with the bare network classes.
void PrintPeak(const Job& job, const QString& served, double atMost)
{
    const double ours = PeakMegabytes(job, served);
    const double bare = PeakMegabytes(job, served, QStringLiteral("--fetch-bare"));
    PrintRow({"the same, peak of memory in MB", Megabytes(ours), Megabytes(bare) + " bare", "-", ours, 0, atMost});
}

/// A row of wall times; without two free cores there is no ratio.
void PrintWall(const std::string& job, double ours, double peer, const char* name, double atLeast, double atMost)
{
    const bool isThere = !QStandardPaths::findExecutable(QString::fromLatin1(name)).isEmpty();
    const double ratio = atMost > 0 ? ours / peer : peer / ours;
    PrintRow({job, Milliseconds(ours), "-", isThere ? Milliseconds(peer) + " " + name : "-",
              isThere && HasTwoFreeCores() ? ratio : 0, atLeast, atMost});
}

/// Small files and a very large one together: their digests and progress are right, and memory does not grow with them.
void MeasureMixedGroups(WebServer& server)
{
    const int many = IsSmokeRun() ? 20 : 500;
    const std::size_t megabyte = std::size_t{1} << 20;
    const std::size_t large = (IsSmokeRun() ? 8 : 1024) * megabyte;
    const Job whole{server.provide("mixed", many, megabyte, large), {}, many + 1};
    const double peak = PeakMegabytes(whole, server.folder("mixed"));
    const Job part{server.provide("quarter", many / 4, megabyte, large / 4), {}, many / 4 + 1};
    const double peakOfPart = PeakMegabytes(part, server.folder("quarter"));
    PrintRow({"500 files of 1 MB and one of 1 GB, peak of memory in MB", Megabytes(peak), "-", "-", peak, 0, 80});
    PrintRow({"the same over a quarter of it", Megabytes(peak), Megabytes(peakOfPart), "-", peak / peakOfPart, 0, 1.5});
}

void MeasureFromWebServer(int repetitions)
{
    WebServer server;
    if (!server.isRunning()) {
        std::printf("No web server to be had: its rows are missing.\n");
        return;
    }
    const bool smoke = IsSmokeRun();
    const std::size_t large = std::size_t{smoke ? 5U : 500U} << 20;
    const int many = smoke ? 20 : 500;

    const Job one{server.provide("one", 1, large), {}, 1};
    auto times = Measure({Ours, Bare, Curl}, one, repetitions);
    PrintRow({"one file of 500 MB", Milliseconds(times[0].cpu), Milliseconds(times[1].cpu), "-",
              times[1].cpu / times[0].cpu, 0.9, 0});
    PrintWall("the same, wall time beside curl", times[0].wall, times[2].wall, "curl", 1.2, 0);
    PrintPeak(one, server.folder("one"), 40);

    const Job files{server.provide("many", many, std::size_t{1} << 20), {}, many};
    times = Measure({Ours, Bare, Aria, Curl}, files, repetitions);
    PrintRow({"500 files of 1 MB", Milliseconds(times[0].cpu), Milliseconds(times[1].cpu), "-",
              times[1].cpu / times[0].cpu, 0.8, 0});
    PrintWall("the same, wall time beside aria2 -j6", times[0].wall, times[2].wall, "aria2c", 1.3, 0);
    PrintWall("the same, wall time beside curl", times[0].wall, times[3].wall, "curl", 0.7, 0);
    PrintPeak(files, server.folder("many"), 80);
    MeasureMixedGroups(server);

    const Job small{server.provide("small", many, 4096), {}, many};
    times = Measure({Ours, Bare}, small, repetitions);
    PrintRow({"500 files of 4 KB, ours over the floor", Milliseconds(times[0].cpu), Milliseconds(times[1].cpu), "-",
              times[0].cpu / times[1].cpu, 0, 2.2});
}

void MeasureFromSlowServer(int repetitions)
{
    vo::test::ScriptedHttpServer server;
    const int many = IsSmokeRun() ? 20 : 500;
    for (int i = 0; i < many; ++i) {
        vo::test::ScriptedAnswer answer = vo::test::ScriptedAnswer::Body(std::string(4096, 'x'));
        answer.delay = 30;
        server.get("/" + std::to_string(i), answer);
        server.head("/" + std::to_string(i), {answer});
    }
    const auto times = Measure({Ours, Curl}, Job{server.url("/"), {}, many}, repetitions);
    // Nearly all of it is waiting, which needs no free core.
    PrintRow({"500 files of 4 KB, answers after 30 ms, over curl", Milliseconds(times[0].wall), "-",
              Milliseconds(times[1].wall) + " curl", times[0].wall / times[1].wall, 0, 2.1});
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    vo::logging::DisableStandardError();
    try {
        if (argc == 6 && std::string(argv[1]).rfind("--fetch", 0) == 0)
            return Fetch(argv);
        const int repetitions = IsSmokeRun() ? 1 : 5;
        MeasureFromWebServer(repetitions);
        MeasureFromSlowServer(repetitions);
        return 0;
    } catch (...) {
        std::fprintf(stderr, "%s\n", vo::CurrentExceptionText().c_str());
        return 1;
    }
}
