#include <Gui/detail/SelectInFolder.h>

namespace vo::detail {

bool SelectInFolder(const QUrl&)
{
    return false;
}

} // namespace vo::detail
