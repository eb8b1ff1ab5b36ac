#include <vo/Memory.h>

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vo::tool {

// The library's allocator takes a large piece from the system and returns it, until one has been freed: from then on it
// keeps pieces up to that size among the small ones, where they leave gaps. The tables of a release of very many files
// are such pieces, and grow.
void PrepareMemory()
{
#ifdef __GLIBC__
    constexpr int largePiece = 1 << 20;
    constexpr int keptAtEnd = 4 << 20;
    mallopt(M_MMAP_THRESHOLD, largePiece);
    mallopt(M_TRIM_THRESHOLD, keptAtEnd);
#endif
}

} // namespace vo::tool
