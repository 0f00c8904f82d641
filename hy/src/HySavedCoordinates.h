#pragma once
#include <Dyn/DynConstraint.h>
#include <Hy/HyArray.h>

#include <cstdint>

struct DynWorld;

namespace Hy {

/// What a step changes that cannot be computed back, as the step found it: the coordinates of the
/// constraints whose stops or lock targets move, and the slip that contacts sum up.
struct HySavedCoordinates {
    struct Slip {
        std::uint64_t serial; ///< of the contact
        KitReal displacement[2];
        KitVector3 posRel0, posRel1;
    };
    struct Entry {
        DynBaseConstraint* record; ///< null once it has left
        DynConstraintCoordinates coordinates;
    };
    HyArray<Entry> entries;
    HyArray<Slip> slips; ///< of the last solve

    void saveSlips(const DynWorld& world);
    void restoreSlips(const DynWorld& world);

    void forget(const DynBaseConstraint* record) {
        for (Entry& entry : entries)
            if (entry.record == record)
                entry.record = nullptr;
    }
};

} // namespace Hy
