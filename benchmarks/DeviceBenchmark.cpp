#include <Core/VoByteArray.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryFile.h>
#include <IO/VoFileByteStream.h>
#include <IO/VoFileDevice.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

/// @file
/// Files through VoFileDevice beside the standard stream (the floor) and QFile. The argument is the length of a line or
/// of a block in bytes; the files have 16 MiB and stay in the system's cache.

namespace {

constexpr std::size_t FileSize = 16 * 1024 * 1024;

std::string NativeName(const VoTemporaryFile& file)
{
    return file.path().path().replaced("\\", "/").toStdString();
}

// A file of lines, each of so many bytes with its end.
std::unique_ptr<VoTemporaryFile> FileOfLines(std::int64_t length)
{
    auto file = std::make_unique<VoTemporaryFile>();
    std::ofstream out(NativeName(*file), std::ios_base::binary);
    const std::string line = std::string(static_cast<std::size_t>(length) - 1, 'x') + '\n';
    for (std::size_t size = 0; size < FileSize; size += line.size())
        out << line;
    return file;
}

void CountFile(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(FileSize));
}

void LinesVoFileDevice(benchmark::State& state)
{
    const auto file = FileOfLines(state.range(0));
    for (auto _ : state) {
        VoFileDevice device(file->path());
        device.open(VoIODevice::Read);
        while (!device.atEnd())
            benchmark::DoNotOptimize(device.readLine());
    }
    CountFile(state);
}

void LinesStandard(benchmark::State& state)
{
    const auto file = FileOfLines(state.range(0));
    for (auto _ : state) {
        std::ifstream in(NativeName(*file), std::ios_base::binary);
        std::string line;
        while (std::getline(in, line))
            benchmark::DoNotOptimize(line);
    }
    CountFile(state);
}

void LinesQFile(benchmark::State& state)
{
    const auto file = FileOfLines(state.range(0));
    for (auto _ : state) {
        QFile in(QString::fromStdString(NativeName(*file)));
        in.open(QIODevice::ReadOnly);
        while (!in.atEnd())
            benchmark::DoNotOptimize(in.readLine());
    }
    CountFile(state);
}

void WholeVoFileDevice(benchmark::State& state)
{
    const auto file = FileOfLines(64);
    for (auto _ : state) {
        VoFileDevice device(file->path());
        device.open(VoIODevice::Read);
        benchmark::DoNotOptimize(device.readAll());
    }
    CountFile(state);
}

void WholeQFile(benchmark::State& state)
{
    const auto file = FileOfLines(64);
    for (auto _ : state) {
        QFile in(QString::fromStdString(NativeName(*file)));
        in.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(in.readAll());
    }
    CountFile(state);
}

template <typename Write>
void WriteBlocks(benchmark::State& state, Write write)
{
    const std::string block(static_cast<std::size_t>(state.range(0)), 'x');
    const VoTemporaryFile file;
    for (auto _ : state)
        write(file, block);
    CountFile(state);
}

void BlocksVoFileDevice(benchmark::State& state)
{
    WriteBlocks(state, [](const VoTemporaryFile& file, const std::string& block) {
        VoFileDevice device(file.path());
        device.open(VoIODevice::Write);
        for (std::size_t size = 0; size < FileSize; size += block.size())
            device.writeFrom(block.data(), block.size());
        device.close();
    });
}

void BlocksStandard(benchmark::State& state)
{
    WriteBlocks(state, [](const VoTemporaryFile& file, const std::string& block) {
        std::ofstream out(NativeName(file), std::ios_base::binary);
        for (std::size_t size = 0; size < FileSize; size += block.size())
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
    });
}

void BlocksQFile(benchmark::State& state)
{
    WriteBlocks(state, [](const VoTemporaryFile& file, const std::string& block) {
        QFile out(QString::fromStdString(NativeName(file)));
        out.open(QIODevice::WriteOnly);
        for (std::size_t size = 0; size < FileSize; size += block.size())
            out.write(block.data(), static_cast<qint64>(block.size()));
    });
}

void DecompressVoByteArray(benchmark::State& state)
{
    const VoByteArray compressed = VoByteArray(4000000).compress();
    for (auto _ : state)
        benchmark::DoNotOptimize(compressed.decompress());
}

void DecompressQt(benchmark::State& state)
{
    const QByteArray compressed = qCompress(QByteArray(4000000, '\0'));
    for (auto _ : state)
        benchmark::DoNotOptimize(qUncompress(compressed));
}

} // namespace

BENCHMARK(LinesVoFileDevice)->Arg(16)->Arg(80)->Arg(1000);
BENCHMARK(LinesStandard)->Arg(16)->Arg(80)->Arg(1000);
BENCHMARK(LinesQFile)->Arg(16)->Arg(80)->Arg(1000);
BENCHMARK(WholeVoFileDevice);
BENCHMARK(WholeQFile);
BENCHMARK(BlocksVoFileDevice)->Arg(16)->Arg(4096)->Arg(1 << 20);
BENCHMARK(BlocksStandard)->Arg(16)->Arg(4096)->Arg(1 << 20);
BENCHMARK(BlocksQFile)->Arg(16)->Arg(4096)->Arg(1 << 20);
BENCHMARK(DecompressVoByteArray);
BENCHMARK(DecompressQt);
