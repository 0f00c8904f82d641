#include <Dyn/DynPartition.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitMatrix4.h>

#include <cmath>

namespace {

void attachmentFrame(const DynBaseConstraint& c, int slot, KitMatrix4 frame) {
    if (c.bclH.r[slot])
        KitMatrix4TMCompound(frame, c.bclH.ref[slot], *c.bclH.r[slot]);
    else
        KitMatrix4Copy(frame, c.bclH.ref[slot]);
}

// Load that presses the joint's faces together: the part of the force across the axis, N.
KitReal loadAcross(const KitVector4 force, const KitVector4 axis) {
    const KitReal along = force[0] * axis[0] + force[1] * axis[1] + force[2] * axis[2];
    KitReal squared = 0;
    for (int i = 0; i < 3; ++i) {
        const KitReal across = force[i] - along * axis[i];
        squared += across * across;
    }
    return std::sqrt(squared);
}

// The first slot of which the solver moves the body; the others report no force.
int loadedSlot(const DyncConstraintHeader& head) {
    return head.b[0] && head.b[0] != head.strongestSolverBody ? 0 : 1;
}

// Proportional friction follows the load of the step that has just been solved.
void updateProportionalFriction(DynBaseConstraint& c) {
    const KitVector4& force = c.resultForce[loadedSlot(c.bclH)];
    bool found = false;
    for (int k = 0; k < 6; ++k) {
        DyncFriction& friction = c.bclH.friction[k];
        if (!friction.mEnabled || !friction.mProportional)
            continue;
        found = true;
        KitMatrix4 frame;
        attachmentFrame(c, friction.mPartRef, frame);
        friction.mMaxForce = friction.mCoefficient * loadAcross(force, frame[k % 3]);
    }
    c.bclH.hasProportionalFriction = found;
}

} // namespace

void DynUnpackPartition(DynsConstraints* constraints, int partitionindex,
                        DynPartitionOutput* output) {
    DynBaseConstraint* const* list = output->constraints + output->constraintsStart[partitionindex];
    for (int i = 0; i < output->constraintsSize[partitionindex]; ++i) {
        DynBaseConstraint& c = *list[i];
        DyncConstraintHeader& h = c.bclH;
        DynsConstraintsGetForces(constraints, i, h.b, h.n_bodies, c.resultForce, c.resultTorque,
                                 h.lambda, h.phi, h.dynamic_flags);
        c.weak &= ~kDynWeakOneFrame;
        if (h.hasProportionalFriction)
            updateProportionalFriction(c);
    }
}
