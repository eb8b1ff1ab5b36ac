#pragma once

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>

#include <cstdint>

namespace vo::test {

using Cases = YHashTable<XMLReportInfo>;

inline XMLReportInfo::LotItem LotItem(const char* description, double nominal, double value)
{
    XMLReportInfo::LotItem item;
    item.description = description;
    item.nominal = nominal;
    item.value = value;
    return item;
}

inline XMLReportInfo::Result Result(double reference, double delta)
{
    XMLReportInfo::Result result;
    result.reference = reference;
    result.delta = delta;
    return result;
}

inline XMLReportInfo Case(std::int32_t id, std::vector<XMLReportInfo::Result> results,
                          std::vector<XMLReportInfo::LotItem> items)
{
    XMLReportInfo info;
    info.caseID = id;
    info.results = VoVector<XMLReportInfo::Result>(results.begin(), results.end());
    info.lotItems = VoVector<XMLReportInfo::LotItem>(items.begin(), items.end());
    info.buildNormalisedSensitivity();
    return info;
}

inline Cases Table(std::vector<XMLReportInfo> infos)
{
    Cases cases;
    for (XMLReportInfo& info : infos) {
        const int number = info.caseID;
        cases.insert(number, std::move(info));
    }
    return cases;
}

/// Tests that write into a directory of their own.
class ReportTest : public testing::Test
{
protected:
    YString path(const char* name) const { return YString(m_folder.native(name).string()); }

    ScratchFolder m_folder;
    LogCapture m_log; // what these tests provoke is not shown
};

} // namespace vo::test
