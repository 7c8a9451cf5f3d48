#pragma once

namespace tunelark {

// Large memory blocks (a painted track change allocates several megabytes) go back to the system when
// freed, in this process and in the page's processes started after this call. Call first thing in main.
void handLargeAllocationsBack();

}  // namespace tunelark
