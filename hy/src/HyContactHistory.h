#pragma once
#include <Dync/DynContactRecord.h>
#include <Dync/DyncContact.h>
#include <Kit/lsVec3.h>

#include <cstddef>
#include <cstdint>
#include <vector>

class CxSpace;
struct DynWorld;

namespace Hy {
class HyBridge;

/// What the next step takes over from the contacts of the last one: which boxes overlapped, which pairs
/// touched, and the pairs' contacts with all that they remember. Objects are named by their serials.
struct HyContactHistory {
    struct Box {
        std::uint64_t serial; ///< of the model
        lsVec3 min, max;
    };
    struct Contact {
        bclContact point;
        std::uint64_t serial; ///< which orders the rows of the solver
        KitReal lambda[kDyncMaxContactRows], phi[kDyncMaxContactRows];
        int flags[kDyncMaxContactRows], dynamicFlags[kDyncMaxContactRows];
        KitVector4 force[2], torque[2];
        int weak;
        bool enabled;
    };
    struct Pair {
        std::uint64_t serial1, serial2; ///< of the models
        bool touched;
        std::size_t contactCount; ///< of the next ones
    };
    std::vector<Box> boxes;
    std::vector<Pair> pairs;
    std::vector<Contact> contacts;

    /// Between steps.
    void capture(CxSpace& space, const HyBridge& bridge);
    /// Between steps. What is gone is passed over, what has come has no history. Wakes nothing.
    void restore(CxSpace& space, HyBridge& bridge, DynWorld& world) const;
};

} // namespace Hy
