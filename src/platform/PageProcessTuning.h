#pragma once

namespace tunelark {

// Settings for the page's processes, which WebKit starts later from ours and with our environment: they
// keep less memory, and cost no more CPU for it. Call before the web view exists. A value the user set
// stays.
void tunePageProcesses();

}  // namespace tunelark
