#pragma once

namespace vo::tool {

/// Has the system get back at once what is freed in large pieces. To be called first.
void PrepareMemory();

} // namespace vo::tool
