#include "platform/PageProcessTuning.h"

#include <cstdlib>

namespace tunelark {

void tunePageProcesses() {
    // glibc serves blocks above its mmap threshold from mappings of their own, but on freeing one it raises
    // the threshold to that block's size: from then on such blocks come from the heap, whose pages stay.
    // The page's process paints the first track changes into buffers of a megabyte or more, and so kept
    // about a megabyte more for good. A threshold that is set (here glibc's own starting value, in the
    // environment variable glibc documents) is never raised.
    setenv("MALLOC_MMAP_THRESHOLD_", "131072", 0);
    // The page's hot code is a handful of small functions that set a text or a value; the script engine's
    // first compiler runs them as fast as its optimising one does, measured. The optimising one kept about
    // a megabyte of compiler memory and code after the first hundred track changes, and its compiling
    // cost CPU of its own.
    setenv("JSC_useDFGJIT", "false", 0);
}

}  // namespace tunelark
