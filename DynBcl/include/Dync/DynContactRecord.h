#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Dync/DyncContactMaterial.h>

/// Values of bclContact::flags.
enum DynContactFlag : int {
    kDynContactTwoAxes = 1,  ///< both linear friction axes exist in this step
    kDynContactMatched = 4,  ///< continues a contact of the last step
    kDynContactCreated = 8,  ///< the record was made in the present update of its pair
    kDynContactMatching = 16 ///< its material, or the global switch, asks for matching
};

/// What a contact adds to the common record, besides its link.
struct bclContact {
    KitVector3 cpos = {0, 0, 0}; ///< point, world
    /// The point in the frames tm0 and tm1 when the contact began to stick; world without body.
    KitVector3 posRel0 = {0, 0, 0}, posRel1 = {0, 0, 0};
    KitVector3 normal = {0, 1, 0};         ///< unit, towards body 0
    KitVector3 direction = {1, 0, 0};      ///< primary friction direction
    const KitMatrix4* tm0 = nullptr;       ///< body frame of body 0, null without body
    const KitMatrix4* tm1 = nullptr;       ///< of body 1
    KitReal penetration = 0;               ///< m, positive when the surfaces overlap
    KitReal surface = 1;                   ///< share of the area, by which the contact is stiffer
    KitReal slidingVelocityThreshold = 0;  ///< m/s; faster is sliding, slower sticks
    KitReal slip_displacement[2] = {0, 0}; ///< m, from where it stuck, along the friction axes
    int flags = 0;                         ///< DynContactFlag
    int groupIndex = -1;                   ///< of contacts of about one normal; -1 for none
    const char* contactMaterialName = nullptr; ///< of the source of params, interned; may be null
    DynBody* originalBodies[2] = {nullptr, nullptr}; ///< before merging
    DyncContactMaterial params;
};

/// One point in which two bodies, or one and the world, press on each other and rub. Lives in the
/// constraint pool of its world.
struct DynContact : DynBaseConstraint, bclContact {
    DynContact* nextContact = nullptr; ///< of the same pair
};
