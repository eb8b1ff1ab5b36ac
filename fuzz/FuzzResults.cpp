#include "Fuzz.h"

#include <Misc/XMLReport/ReportDataFile.h>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    const VoFilePath path = scratch.write("results.xml", data, size);
    Allow([&] {
        const ReportDataFile read = ReportDataFile::Read(path);
        const VoFilePath first = scratch.file("first.xml");
        const VoFilePath second = scratch.file("second.xml");
        ReportDataFile::Write(first, read.cases, read.header);
        const ReportDataFile again = ReportDataFile::Read(first);
        Require(again.cases.size() == read.cases.size(), "no case is lost in writing");
        ReportDataFile::Write(second, again.cases, again.header);
        Require(scratch.read(first) == scratch.read(second), "writing what was read gives the same bytes");
    });
    return 0;
}
