#pragma once
#include <Kit/KitApi.h>

#include <cstdint>

struct DynBody;
struct DynBodyForce;
struct DynWorld;

using DynBodyForceCB = void (*)(DynBodyForce* force);

/// What the owner of a body force sets. Callbacks may be null.
struct DynBodyForceConfig {
    int id = -1;                      ///< of the owner's choice
    void* info = nullptr;             ///< of the owner's choice, not owned
    DynBodyForceCB update = nullptr;  ///< adds the load of a step; see DynBodyForceUpdateEnabled
    DynBodyForceCB destroy = nullptr; ///< the force is about to go
    DynBodyForceCB disable = nullptr; ///< it has been disabled
    DynBodyForceCB enable = nullptr;  ///< it has been enabled
};

/// An object that adds load to bodies in each step of its world. `update` runs after partitioning
/// and before packing. What it adds, in a step, to a body of its list that sleeps is dropped.
struct DynBodyForce : DynBodyForceConfig {
    static constexpr int kDefaultBodies = 3;

    DynWorld* w;
    DynBody** b; ///< defaultBodyList, or an array of the owner's
    int nBodies; ///< entries of b
    DynBody* defaultBodyList[kDefaultBodies];
    DynBodyForce* next;
    DynBodyForce** tome;
    DynBodyForce* enabledNext;
    DynBodyForce** enabledTome; ///< not null: enabled
    std::uint64_t serial;       ///< order of creation, never repeated in a process
};

/// A disabled force without bodies, in the world's pool and list. Null if the pool cannot grow.
[[nodiscard]] HY_API DynBodyForce* DynBodyForceCreate(DynWorld* world);
/// Disables the force, calls `destroy` and gives the force back to its pool. Null is ignored.
HY_API void DynBodyForceDestroy(DynBodyForce* force);
/// The state after DynBodyForceCreate; `disable` is called if the force was enabled.
HY_API void DynBodyForceReset(DynBodyForce* force);
HY_API void DynBodyForceEnable(DynBodyForce* force);
HY_API void DynBodyForceDisable(DynBodyForce* force);
[[nodiscard]] HY_API bool DynBodyForceIsEnabled(const DynBodyForce* force);
HY_API void DynBodyForceSetConfig(DynBodyForce* force, const DynBodyForceConfig& config);
/// Sets the default list and returns to it. Null entries are allowed; a body that is destroyed
/// leaves the list.
HY_API void DynBodyForceSetBodies(DynBodyForce* force, DynBody* b0, DynBody* b1, DynBody* b2);
/// Entry i of the list in use. Out of range: a warning, and null.
[[nodiscard]] HY_API DynBody* DynBodyForceGetBody(const DynBodyForce* force, int i);
/// Lets the force act on an array of the owner's, who keeps it alive and free of destroyed bodies.
/// Null returns to the default list.
HY_API void DynBodyForceSetUserBodyArray(DynBodyForce* force, DynBody** bodies, int count);
/// The owner's array, null while the default list is in use.
[[nodiscard]] HY_API DynBody** DynBodyForceGetUserBodyArray(const DynBodyForce* force);
[[nodiscard]] HY_API DynBodyForce* DynBodyForceGetFirst(DynWorld* world);
[[nodiscard]] HY_API DynBodyForce* DynBodyForceGetNext(DynBodyForce* force);

/// Runs `update` of each enabled force in the order of creation. It may enable, disable, create and
/// destroy forces: the removed are skipped, the created wait for the next call.
HY_API void DynBodyForceUpdateEnabled(DynWorld* world);
/// Takes a body out of the default lists of the world's forces.
HY_API void DynBodyForceForgetBody(DynWorld* world, DynBody* body);
