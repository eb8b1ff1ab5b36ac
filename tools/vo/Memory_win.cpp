#include <vo/Memory.h>

namespace vo::tool {

// The system's allocator returns large pieces as it is.
void PrepareMemory() {}

} // namespace vo::tool
