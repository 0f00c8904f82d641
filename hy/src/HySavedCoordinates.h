#pragma once
#include <Dyn/DynConstraint.h>
#include <Hy/HyArray.h>

namespace Hy {

/// The coordinates of the constraints whose stops or lock targets move, as a step found them.
struct HySavedCoordinates {
    struct Entry {
        DynBaseConstraint* record; ///< null once it has left
        DynConstraintCoordinates coordinates;
    };
    HyArray<Entry> entries;

    void forget(const DynBaseConstraint* record) {
        for (Entry& entry : entries)
            if (entry.record == record)
                entry.record = nullptr;
    }
};

} // namespace Hy
