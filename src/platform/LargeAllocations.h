#pragma once

namespace tunelark {

// The page's processes, which WebKit starts later from ours and with our environment, hand freed large
// memory blocks back to the system instead of keeping them in their heaps. Call before the web view exists.
void handLargeBlocksBackInPageProcesses();

}  // namespace tunelark
