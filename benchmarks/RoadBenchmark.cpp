#include "InterleavedTiming.h"
#include "ProcessTiming.h"
#include "ResultRow.h"

#include <Core/VoByteArray.h>
#include <Core/VoChecksum.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryFile.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/VoUpdater.h>

#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>
#include <QtCore/QString>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <locale>
#include <random>
#include <string>
#include <thread>
#include <vector>

/// @file
/// Jobs of the road of an update that are measured within a process: digests, compression, the comparison of listings,
/// and strings on two threads.

namespace {

using vo::updater::AdvertisedFileListing;
using vo::updater::AdvertisedPackageListing;
using vo::updater::ChunkListing;
using vo::updater::ChunkReferenceListing;

std::vector<double> Times(const std::vector<std::function<void()>>& ways)
{
    return IsSmokeRun() ? InterleavedTiming(ways, 1, 0) : InterleavedTiming(ways);
}

// Words and numbers: compresses about as well as program text.
std::string Text(std::size_t size)
{
    std::mt19937 random(1);
    std::string text;
    while (text.size() < size)
        text += "node" + std::to_string(random() % 5000) + (random() % 8 == 0 ? ";\n" : " = ");
    text.resize(size);
    return text;
}

void Compare(const std::string& job, const std::function<void()>& ours, const std::function<void()>& floor,
             const char* what, double goal)
{
    const std::vector<double> times = Times({ours, floor});
    ResultRow row{job, Milliseconds(times[0]), Milliseconds(times[1]) + " " + what};
    row.ratio = times[1] / times[0];
    row.atLeast = goal;
    PrintRow(row);
}

void Digests()
{
    const std::string text = Text(16 << 20);
    const VoTemporaryFile file;
    std::ofstream(file.path().path().replaced("\\", "/").toStdString(), std::ios_base::binary) << text;
    const auto floor = [&text] {
        QCryptographicHash hash(QCryptographicHash::Sha3_256);
        hash.addData(text.data(), static_cast<int>(text.size()));
        benchmark::DoNotOptimize(hash.result());
    };
    Compare(
        "digest of a 16 MB file", [&file] { benchmark::DoNotOptimize(VoFileSystem::Checksum(file.path())); }, floor,
        "QCryptographicHash", 0.95);
}

void Compression()
{
    const std::string text = Text(4 << 20);
    const VoByteArray bytes(text.data(), text.size());
    const QByteArray other(text.data(), static_cast<int>(text.size()));
    Compare(
        "compress 4 MB, level 6", [&] { benchmark::DoNotOptimize(bytes.compress(6)); },
        [&] { benchmark::DoNotOptimize(qCompress(other, 6)); }, "qCompress", 0.97);
    const VoByteArray packed = bytes.compress(6);
    const QByteArray otherPacked = qCompress(other, 6);
    Compare(
        "decompress 4 MB", [&] { benchmark::DoNotOptimize(packed.decompress()); },
        [&] { benchmark::DoNotOptimize(qUncompress(otherPacked)); }, "qUncompress", 0.97);
}

AdvertisedPackageListing Listing(int files, int changedEvery)
{
    AdvertisedPackageListing package(VoUUID("package"), VoUUID(VoUUID::Format()), "Examples", VoVersion());
    const VoChecksum same(QByteArray("same"));
    const VoChecksum changed(QByteArray("changed"));
    std::mt19937 random(1);
    for (int i = 0; i < files; ++i) {
        const VoUUID id(VoString(static_cast<std::int64_t>(random())) + "-" + VoString(i));
        package.add(AdvertisedFileListing(VoFilePath("d/f" + VoString(i)), {}, id,
                                          changedEvery > 0 && i % changedEvery == 0 ? changed : same,
                                          VoDownloadSize(std::int64_t{1000})));
    }
    return package;
}

void Differences()
{
    const int files = IsSmokeRun() ? 1000 : 100000;
    std::vector<std::function<void()>> ways;
    const AdvertisedPackageListing old = Listing(files, 0);
    const AdvertisedPackageListing fresh = Listing(files, 50);
    const AdvertisedPackageListing quarter = Listing(files / 4, 0);
    const AdvertisedPackageListing freshQuarter = Listing(files / 4, 50);
    const std::vector<double> times = Times({[&] { benchmark::DoNotOptimize(old.compare(fresh)); },
                                             [&] { benchmark::DoNotOptimize(quarter.compare(freshQuarter)); }});
    ResultRow row{"differences of 100,000 files, in s", Milliseconds(times[0])};
    row.ratio = times[0];
    row.atMost = 0.25;
    PrintRow(row);
    ResultRow growth{"the same at 4 n over n", Milliseconds(times[0]), Milliseconds(times[1])};
    growth.ratio = times[0] / times[1];
    growth.atMost = 6; // linear, but for the memory further away
    PrintRow(growth);
}

// As a release of so many files is published: digests and identifiers like no others, a piece of a chunk for each file.
void WriteDefinition(const std::string& path, int files)
{
    AdvertisedPackageListing package(VoUpdater::GenerateID(), VoUpdater::GenerateID(), "Examples", VoVersion());
    VoUUID chunk;
    for (int i = 0; i < files; ++i) {
        const VoString number(i);
        const VoChecksum digest(number.toQString().toUtf8());
        if (i % 2000 == 0) {
            chunk = VoUpdater::GenerateID();
            package.add(ChunkListing(chunk, digest, VoDownloadSize(std::int64_t{1} << 20), VoFilePath("c" + number)));
        }
        const VoFilePath target("part" + VoString(i / 50) + "/element_" + number + ".mdl");
        package.add(AdvertisedFileListing(target, {ChunkReferenceListing(chunk, i % 2000 * 1500ULL, 1500, 0)},
                                          VoUpdater::GenerateID(), digest, VoDownloadSize(std::int64_t{1500})));
    }
    package.write(VoFilePath(VoString(path)));
}

// In processes of their own, before this one takes any memory.
void Definitions()
{
    const BenchmarkFolder folder;
    const std::string path = folder / "package.xml";
    const int files = IsSmokeRun() ? 1000 : 100000;
    RunProcess([&] { WriteDefinition(path, files); });
    const auto read = [&path] {
        const auto listing = AdvertisedPackageListing::Open(VoFilePath(VoString(path)));
        benchmark::DoNotOptimize(listing->files().size());
    };
    const std::vector<ProcessCost> costs = TakeTurns({read, [] {}}, IsSmokeRun() ? 1 : 7);
    ResultRow row{"definition of 100,000 files, read, in s", Milliseconds(costs[0].processor)};
    row.ratio = costs[0].processor;
    row.atMost = 0.5;
    PrintRow(row);
    const double megabytes = static_cast<double>(costs[0].peak - costs[1].peak) / 1024;
    ResultRow memory{"memory of it, in MB", std::to_string(std::lround(megabytes)) + " MB"};
    memory.ratio = megabytes;
    memory.atMost = 100;
    PrintRow(memory);
}

// Every string asks for the global locale. Wall time of a fixed number of strings on each thread.
double SecondsOfStrings(int threads)
{
    const int strings = IsSmokeRun() ? 1000 : 2000000;
    const auto make = [strings] {
        for (int i = 0; i < strings; ++i)
            benchmark::DoNotOptimize(VoString("transistor.lib"));
    };
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i)
        others.emplace_back(make);
    make();
    for (std::thread& other : others)
        other.join();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Threads(const std::string& job, const std::locale& global, double goal)
{
    const std::locale previous = std::locale::global(global);
    std::vector<double> scales;
    double one = 0;
    double two = 0;
    for (int i = 0; i < 5; ++i) {
        one = SecondsOfStrings(1);
        two = SecondsOfStrings(2);
        scales.push_back(2 * one / two);
    }
    std::locale::global(previous);
    std::sort(scales.begin(), scales.end());
    ResultRow row{job, Milliseconds(two), Milliseconds(one) + " on one"};
    row.ratio = HasTwoFreeCores() ? scales[2] : 0;
    row.atLeast = goal;
    PrintRow(row);
}

} // namespace

int main()
{
    Definitions();
    Digests();
    Compression();
    Differences();
    Threads("strings on 2 threads: scale", std::locale::classic(), 1.9);
    // A lock of the standard library's decides here.
    Threads("the same, other locale", std::locale(std::locale::classic(), new std::numpunct<char>), 0);
    return 0;
}
