#include "Fuzz.h"

#include <Documents/VoCSVReader.h>
#include <Documents/VoVariantTable.h>
#include <IO/VoStringDevice.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace vo::fuzz;

namespace {

// Hands out its bytes in small pieces.
class SlowDevice : public VoStringDevice
{
public:
    explicit SlowDevice(const VoString& text)
        : VoStringDevice(text)
    {
    }

protected:
    std::size_t onReadInto(char* data, std::size_t count) override
    {
        return VoStringDevice::onReadInto(data, std::min<std::size_t>(count, 3));
    }
};

std::vector<std::string> FieldsOf(VoIODevice& device, const VoCSVFormat& format)
{
    std::vector<std::string> fields;
    Allow([&] {
        VoCSVReader reader(device, format);
        while (reader.nextRow()) {
            for (std::size_t i = 0; i < reader.numberFields(); ++i)
                fields.emplace_back(reader.field(i));
            fields.push_back("end of row");
        }
    });
    return fields;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VoString text(reinterpret_cast<const char*>(data), size);
    VoStringDevice whole(text);
    SlowDevice pieces(text);
    VoCSVFormat format;
    format.encoding = static_cast<VoCSVFormat::Encoding>(size % 7);
    Require(FieldsOf(whole, format) == FieldsOf(pieces, format), "the same fields wherever a block ends");

    Allow([&] {
        const VoVariantTable table(text, true, format);
        const VoString written = table.toString();
        const VoVariantTable back(written, true);
        Require(back.numberRows() == table.numberRows() && back.numberColumns() == table.numberColumns(),
                "a table comes back in its shape");
        Require(back.toString().toStdString() == written.toStdString(), "and with its cells");
    });
    return 0;
}
