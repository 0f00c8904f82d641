#pragma once
#include <Dync/DyncLimit.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstdint>

struct DynBaseConstraint;
struct DynBody;
struct DynWorld;
struct DyncConstraintParameters;
struct KitPool;
namespace Hy {
class HyConstraint;
}

/// Builds the rows of a constraint from its record and pushes them; answers how many.
using DyncAddConstraintFn = int (*)(DynsConstraints* clist, DynBaseConstraint* constraint,
                                    const DyncConstraintParameters* params);

/// Value of tag for the records of contacts.
constexpr int kDynTagContact = 5;
/// Behind the last multiplier that a step wrote.
constexpr KitReal kDynLambdaEnd = 4294967295.0;
/// Partition group of what belongs to none.
constexpr int kDynNoPartitionGroup = 2147483647;

enum DynGraphEdgeType : int {
    kDynGraphEdgeUnseen = 0,
    kDynGraphEdgePrimary = 1,
    kDynGraphEdgeSecondary = 2,
};

/// What the partitioner knows of a constraint.
struct DynGraphEdgeData {
    int type = kDynGraphEdgeUnseen;
    int partitionIDs[2] = {-1, -1};
    int e_pgroup_index = kDynNoPartitionGroup;
    int coupling_iteration = 0;
};

/// Values of DynConstraintHeader::weak.
enum DynWeak : int {
    kDynWeakNever = 0,
    kDynWeakOneFrame = 1, ///< cleared when the step's results are unpacked
    kDynWeakAlways = 2,
};

/// Values of DyncConstraintHeader::dynamic_flags.
enum DyncDynamicFlag : int {
    kDyncRowAtBound = 1,
    kDyncRowAtUpper = 2,
    kDyncRowAtLower = 4,
    kDyncRowComplianceRaised = 8, ///< the global floor replaced the row's softness
};

/// Friction of one axis of a joint. Entries 0 to 2 act along the axes of the reference frame, 3 to
/// 5 about them.
struct DyncFriction {
    KitBool mProportional = 0; ///< mMaxForce follows the load of the last step
    KitBool mEnabled = 0;
    int mPartRef = 0;         ///< slot whose frame carries the axis
    KitReal mMaxForce = 0;    ///< N or N m
    KitReal mLoss = 0;        ///< velocity softness
    KitReal mCoefficient = 0; ///< of proportional friction
    KitReal mStaticFrictionScale = 1.0;
    int mLastStepRow = -1; ///< row of the last step, -1 if there was none
};

/// A body slot of a constraint, as a place in one of the lists that the slot's body has.
struct KitCListNode {
    DynBaseConstraint* constraint = nullptr;
    int slot = 0;
    KitCListNode* next = nullptr;
    KitCListNode** tome = nullptr; ///< address of the pointer to this node; null in no list
};

/// Links and identity of a constraint; the part of a record that the world and the partitioner use.
struct DynConstraintHeader {
    DynWorld* world;
    DynBaseConstraint* enabledNext;
    DynBaseConstraint** enabledTome; ///< not null: enabled
    DynBody* body[kDynsMaxConstraintBodies];
    KitCListNode* cNode[kDynsMaxConstraintBodies]; ///< this constraint's node in each body's list
    DyncAddConstraintFn bclFunction;
    DynGraphEdgeData edge_data;
    std::uint64_t preparedStep; ///< world step in which the partitioner met it last
    KitBool flag;               ///< scratch of the partitioner
    KitBool merged;             ///< all slots hold one root body
    int weak;                   ///< DynWeak
    int iNumLimits;
    DyncLimit* limits;    ///< the coordinates, inside the record; null if there are none
    std::uint64_t serial; ///< order of creation, never repeated in a process
    KitPool* pool;        ///< that it was made in, null for none
    KitBool needKinematicUpdate;
    int kinematicUpdateIndex; ///< place in the world's list, -1 if none
    void (*updateKinematicFunction)(DynBaseConstraint* constraint, KitReal h);
    /// Puts a body, or none, into a slot; for the body that is there, binds it anew.
    void (*setBodyFunc)(DynBaseConstraint* constraint, int slot, DynBody* body);
    /// The part of setBodyFunc that points the slot at what its body holds.
    void (*set1BodyFunc)(DynBaseConstraint* constraint, int slot, DynBody* body);
    /// Sets the attachment axes of a slot, world axes.
    void (*setAxisFunc)(DynBaseConstraint* constraint, int slot, const KitVector3 primary,
                        const KitVector3 secondary);
    Hy::HyConstraint* mConstraint;                    ///< back link to the high layer, may be null
    KitVector4 resultForce[kDynsMaxConstraintBodies]; ///< of the last step, at the centre of mass
    KitVector4 resultTorque[kDynsMaxConstraintBodies];
    /// The slot's place among all, of enabled constraints or not, that hold its body.
    KitCListNode hold[kDynsMaxConstraintBodies];
    DynBaseConstraint* next; ///< in the list of all constraints of the world
    DynBaseConstraint** tome;
};

/// What a row builder reads and what it leaves for the next step.
struct DyncConstraintHeader {
    int tag;                             ///< type of joint, -1 once destroyed
    int n_bodies;                        ///< slots in use
    int max_rows;                        ///< upper bound on the rows; the solver's sizing input
    int gflag;                           ///< how many partitions hold the constraint in this step
    DynBody* bodySeenAsKinematic;        ///< forced to act as kinematic in this constraint, or null
    DynBody* strongestBody;              ///< see DynConstraintFindStrongestBody
    const DynsBody* strongestSolverBody; ///< of the root of strongestBody, or null
    /// Solver body of each slot: null if it is empty, the body is not dynamic or the constraint is
    /// disabled.
    DynsBody* b[kDynsMaxConstraintBodies];
    const KitMatrix4* r[kDynsMaxConstraintBodies]; ///< centre-of-mass transforms; null without body
    /// Linear, then angular velocity; null without body and for a frozen one.
    const KitVector4* velocity[kDynsMaxConstraintBodies];
    const KitReal* q[kDynsMaxConstraintBodies]; ///< orientation quaternions
    /// Attachment frames relative to the centre-of-mass frame, or the world in an empty slot.
    KitMatrix4 ref[kDynsMaxConstraintBodies];
    KitReal lambda[kDynsMaxConstraintRows + 1]; ///< last multipliers, then kDynLambdaEnd
    KitReal phi[kDynsMaxConstraintRows];        ///< last errors
    int flags[kDynsMaxConstraintRows];
    int dynamic_flags[kDynsMaxConstraintRows]; ///< DyncDynamicFlag
    KitBool hasProportionalFriction;
    KitBool bRelaxConstraint[kDynsMaxConstraintRows]; ///< the row is relaxed by what follows
    KitReal compliance[kDynsMaxConstraintRows];
    KitReal damping[kDynsMaxConstraintRows];
    KitReal loss[kDynsMaxConstraintRows];
    KitReal lower[kDynsMaxConstraintRows];
    KitReal upper[kDynsMaxConstraintRows];
    DyncFriction friction[6];
};

/// The flat record of a constraint; each joint's record derives from it.
struct DynBaseConstraint : DynConstraintHeader {
    DyncConstraintHeader bclH;
};
