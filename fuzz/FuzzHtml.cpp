#include "Fuzz.h"

#include <Documents/VoDataTable.h>
#include <Documents/detail/HTMLTable.h>

#include <string_view>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Allow([&] {
        const auto table = vo::detail::TableFromHTML({reinterpret_cast<const char*>(data), size});
        if (!table)
            return;
        const auto again = vo::detail::TableFromHTML(vo::detail::TableToHTML(*table));
        Require(again && again->numberRows() == table->numberRows(), "a table that was read can be written and read");
    });
    return 0;
}
