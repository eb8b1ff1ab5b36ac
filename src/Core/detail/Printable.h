#pragma once

#include <Core/VoPrintable.h>

namespace vo::detail {

using vo::IsUnprintable;
using vo::Printable;

} // namespace vo::detail
