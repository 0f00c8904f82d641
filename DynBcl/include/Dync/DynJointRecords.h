#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Dync/DyncLimit.h>

#include <numbers>

/// Records of the ordinary joints: what each adds to the common record. The functions that make and
/// change them stand in the layer of bodies and worlds, one file a joint.

/// Axes along which a joint's position rows act: those of frame 0 or 1, or the world's (-1).
struct DynPositionAxes {
    int linearAxisReferenceBody = -1;
};

struct DynBSJoint : DynBaseConstraint, DynPositionAxes {};

/// Coordinate: rotation about axis 0 of frame 0.
struct DynHinge : DynBaseConstraint, DynPositionAxes {
    DyncLimit limit[1];
};

/// Coordinate: position along axis 0 of frame 0.
struct DynPrismatic : DynBaseConstraint {
    DyncLimit limit[1];
};

/// Coordinates: position along, then rotation about axis 0 of frame 0.
struct DynCylindrical : DynBaseConstraint {
    DyncLimit limit[2];
};

/// Coordinates: rotation about axis 0 of frame 0, then about axis 1 of frame 1.
struct DynUniversal : DynBaseConstraint, DynPositionAxes {
    DyncLimit limit[2];
};

struct DynHomokinetic : DynBaseConstraint, DynPositionAxes {};
struct DynLinear1 : DynBaseConstraint {};
struct DynLinear2 : DynBaseConstraint {};
struct DynLinear3 : DynBaseConstraint {};

struct DynAngular3 : DynBaseConstraint {
    KitBool rotationEnabled = 0; ///< leaves the rotation about axis 0 free
};

/// Coordinate: linear or angular along axis 0 of a frame, by the limit's type.
struct DynMotorJoint : DynBaseConstraint {
    DyncLimit limit[1];
};

/// Coordinates: rotation about axis 0, then positions along the three axes of frame 0.
struct DynA1P3Joint : DynBaseConstraint {
    DyncLimit limit[4];
};

/// Coordinates: rotations as in DynUniversal, then positions along the three axes of frame 0.
struct DynA2P3Joint : DynBaseConstraint {
    DyncLimit limit[5];
};

struct DynFixedPath : DynBaseConstraint {
    KitVector3 velocity = {0, 0, 0}; ///< of the path point, world axes, m/s
};

/// Distance of the attachments that is not exceeded.
struct DynDistance : DynBaseConstraint {
    KitReal distance = 0; ///< m, finite, not negative
};

/// Keeps axis 0 of frame 1 within an angle of axis 0 of frame 0.
struct DynConeLimit : DynBaseConstraint {
    KitReal cone_half_angle = std::numbers::pi; ///< rad; negative opens around the opposite axis
    KitReal cosine = -1;                        ///< of cone_half_angle
    KitReal cone_compliance = 0;                ///< stored only
    KitReal cone_damping = kKitInfinity;        ///< stored only
};

/// Two hinges with parallel axes and a springy link between them. Coordinates: length of the link,
/// its angle in frame 0, its angle in frame 1.
struct DynDoubleHinge : DynBaseConstraint {
    DyncLimit limit[3];
};

/// Rows from a function of the application.
struct DynGenericConstraint : DynBaseConstraint {
    /// Writes rows behind what the builder has set up; answers how many. See DyncGenericRows.
    using RowsFn = int (*)(struct DyncGenericRows* rows, void* data);
    RowsFn rowsFunction = nullptr;
    void* data = nullptr; ///< the object of the application, not owned
};

/// Rows from a builder of the application, which may drive the coordinates: positions along the
/// three axes of frame 0, then rotations about them.
struct DynUserConstraint : DynBaseConstraint {
    DyncLimit limit[6];
    void* data = nullptr; ///< of the application, not owned
};
