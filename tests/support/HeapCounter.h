#pragma once

/// Counts the heap calls of all threads: operator new, and the table of memory functions while it is
/// watched.
class HeapCounter {
public:
    /// Calls so far.
    [[nodiscard]] static long calls();
    static void watchMemoryTable(bool on);
};
