#pragma once
#include "DynBuffer.h"

#include <algorithm>

/// Sorts stably by merging the runs that stand in the data already, ascending or strictly descending
/// (Knuth, The Art of Computer Programming, vol. 3, section 5.2.4). Work lists change little from
/// step to step, so a few runs cover them and the sort is linear. Allocates only where buffers grow.
template <class T, class Less>
void DynMergeSort(DynBuffer<T>& items, DynBuffer<T>& other, DynBuffer<int>& runs, Less less) {
    const int n = items.size();
    runs.clear();
    for (int start = 0; start < n;) {
        int end = start + 1;
        if (end < n && less(items[end], items[end - 1])) {
            while (end < n && less(items[end], items[end - 1]))
                ++end;
            std::reverse(items.data() + start, items.data() + end);
        } else {
            while (end < n && !less(items[end], items[end - 1]))
                ++end;
        }
        runs.push_back(start);
        start = end;
    }
    runs.push_back(n);
    other.resize(n);
    while (runs.size() > 2) {
        int kept = 0;
        for (int i = 0; i + 1 < runs.size(); i += 2) {
            const int from = runs[i], middle = runs[i + 1];
            const int to = i + 2 < runs.size() ? runs[i + 2] : middle;
            std::merge(items.data() + from, items.data() + middle, items.data() + middle,
                       items.data() + to, other.data() + from, less);
            runs[kept++] = from;
        }
        runs[kept++] = n;
        runs.resize(kept);
        items.swap(other);
    }
}
