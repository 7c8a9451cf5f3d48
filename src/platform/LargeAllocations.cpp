#include "platform/LargeAllocations.h"

#include <malloc.h>

#include <cstdlib>

namespace tunelark {

namespace {
// glibc's own starting threshold.
constexpr int kMmapThreshold = 128 * 1024;
}  // namespace

// glibc serves blocks above the threshold from mappings of their own, but on freeing one it raises the
// threshold to that block's size: from then on such blocks come from the heap, whose pages stay. Painting
// the first track changes, of a megabyte or more each, so kept a megabyte or more in each process for good.
// A threshold set once is never raised. WebKit's processes start from ours and read it from the environment,
// in the form glibc documents; a value the user set stays.
void handLargeAllocationsBack() {
    mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
    setenv("MALLOC_MMAP_THRESHOLD_", "131072", 0);
}

}  // namespace tunelark
