#pragma once

/// Calls of operator new so far in this process: what does not pass through the allocator table.
[[nodiscard]] long heapCalls();
