#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Values of DynsBody::flags.
enum DynsBodyFlag : int {
    kDynsBodyFastSpinAxis = 1,     ///< a fast spin axis is set
    kDynsBodyHasConstraints = 2,   ///< refreshed whenever a partition is packed
    kDynsBodySphericalInertia = 4, ///< the tensor is replaced by the mean of its diagonal
    kDynsBodyFrozen = 16,
    kDynsBodyKinematic = 32,
};

/// What the solver sees of a rigid body. It stands inside a DynBody and lies on a cache line of its
/// own; the fields that each pass of a solve reads come first. World axes unless said otherwise.
struct alignas(64) DynsBody {
    // A body vector is a linear and an angular KitVector4 side by side (see DynsBodyVector).
    KitVector4 cf, ct;        ///< constraint force and torque of this step, N, N m
    KitVector4 force, torque; ///< applied load of this step, N, N m
    KitVector4 linearMomentum, angularMomentum; ///< taken when the solve starts
    KitVector4 vel, velrot;                     ///< m/s, rad/s
    KitVector4 accel, accelrot;                 ///< result of the step
    KitReal inverse_massmatrix[3][4]; ///< effective inverse inertia; [0][3] effective inverse mass
    KitMatrix4 tm;                    ///< transform of the centre of mass
    KitVector4 qrot;                  ///< orientation w, x, y, z
    KitReal _I[3][4];                 ///< inertia tensor; [0][3] holds the mass
    KitReal _invI[3][4];              ///< its inverse; [0][3] holds invmass
    /// Body axes: rows 0 to 2 the tensor, rows 3 to 5 its inverse; [0][3] holds 1/mass, [3][3] the mass.
    KitReal _i0[6][4];
    KitVector4 fastSpinAxis; ///< unit axis, body axes
    KitReal invmass;
    KitReal linear_damping, angular_damping; ///< N s/m, N m s
    int tag;
    int len; ///< size of the record, bytes
    int flags;
    int partition_index; ///< partition of this step, -1 if none
    int user_group;      ///< solver group, -1 if none
    /// Place of the body in the partition being packed; valid only while localPartition names it.
    int localIndex;
    int localPartition;
    /// Sum over the joints of the last step of -[F]x[r]x, symmetric part, N m/rad, world axes; see
    /// DynsBodyAddGeometricStiffness. Zero unless DynsParameters::geometric_stiffness is on.
    KitMatrix3 geometricStiffness;
};

/// The two halves of a body vector.
struct DynsBodyVector {
    KitVector4 linear, angular;
};

constexpr int kDynsBodyTag = 100;

/// Advances one body by h seconds from the momenta at the start of the solve (semi-implicit Euler
/// with the effective inverse inertia; the orientation by an exact finite rotation).
HY_API void body_integrate(DynsBody* body, KitReal h);
/// The same, under the name by which the layers above know it.
HY_API void DynsBodyIntegrate(DynsBody* body, KitReal h);

/// Advances orientations by one of three methods: 1 explicit, 2 finite rotation, 3 rational.
/// Another method is a fatal error. A fast spin axis is integrated by itself.
HY_API void body_update_quaternion(DynsBody* const* bodies, int n, KitReal timeStep, int method);
/// World inertia from the body's own; spherical: the mean of the diagonal for every body.
HY_API void body_update_inertia_tensor(DynsBody* const* bodies, int n, bool spherical);
HY_API void body_update_momentum(DynsBody* const* bodies, int n);
/// Adds scale times the gyroscopic torque L x w to the applied torque.
HY_API void add_non_inertial_forces(DynsBody* const* bodies, int n, KitReal scale);
HY_API void body_update_accelerations(DynsBody* const* bodies, int n);
HY_API void body_update_velocity(DynsBody* const* bodies, int n, KitReal h);
HY_API void body_update_position(DynsBody* const* bodies, int n, KitReal h);
/// Rotation rows of tm from qrot, which need not be of unit length.
HY_API void body_update_rotation(DynsBody* const* bodies, int n);

/// Adds to geometricStiffness how fast the torque of a force changes as the body turns under it:
/// -[F]x[r]x = (F.r) 1 - r F^T, of which the symmetric part is kept. Called for each joint force when
/// the results of a step are taken back, if the solver group has geometric_stiffness on; the next
/// setup of the body's partition consumes the sum and zeroes it. Vectors that are not finite add
/// nothing.
/// @param force on the body, N, world axes
/// @param arm from the centre of mass to the point where the force acts, m, world axes
HY_API void DynsBodyAddGeometricStiffness(DynsBody* body, const KitVector3 force,
                                          const KitVector3 arm);
