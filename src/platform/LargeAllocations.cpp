#include "platform/LargeAllocations.h"

#include <cstdlib>

namespace tunelark {

// glibc serves blocks above its mmap threshold from mappings of their own, but on freeing one it raises
// the threshold to that block's size: from then on such blocks come from the heap, whose pages stay. The
// page's process paints the first track changes into buffers of a megabyte or more, and so kept about a
// megabyte more for good. A threshold that is set (here glibc's own starting value, in the environment
// variable glibc documents) is never raised. A value the user set stays.
void handLargeBlocksBackInPageProcesses() { setenv("MALLOC_MMAP_THRESHOLD_", "131072", 0); }

}  // namespace tunelark
