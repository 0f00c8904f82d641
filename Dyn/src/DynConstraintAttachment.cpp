#include <Dyn/DynConstraint.h>

#include "DynChecks.h"
#include "DynConstraintInternal.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitMessage.h>
#include <Kit/lsTransform.h>

#include <cmath>

namespace {

/// A secondary axis nearer to the primary one than this is as good as none: sine of the angle.
constexpr KitReal kMinSine = 1e-9;

const KitMatrix4* centreOf(const DynBody* body) {
    return body ? &body->kiroBody.tm : nullptr;
}

void toWorld(const DynBody* body, KitVector3 v) {
    if (body)
        KitMatrix4TMRotate(v, v, *centreOf(body));
}

lsVec3 anyNormal(const lsVec3& unit) {
    int smallest = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(unit[i]) < std::abs(unit[smallest]))
            smallest = i;
    lsVec3 axis;
    axis[smallest] = 1;
    return axis - axis.dot(unit) * unit;
}

lsVec3 unitOf(const KitVector3 v) {
    lsVec3 unit(v[0], v[1], v[2]);
    unit.reduce();
    unit.normalize();
    return unit;
}

// Rows 0 to 2 of a frame. Answers false, with a warning, if the primary axis is no direction.
bool setAxes(KitMatrix4 frame, const KitVector3 primary, const KitVector3 secondary) {
    const lsVec3 first = unitOf(primary);
    if (!KitVector3IsFinite(primary) || !(first.square_norm() > 0) ||
        (secondary && !KitVector3IsFinite(secondary))) {
        KitWarning(12, "DynConstraintBodySetAxes: the axes must be finite, the primary one not "
                       "zero.\n");
        return false;
    }
    lsVec3 second;
    if (secondary) {
        const lsVec3 wanted = unitOf(secondary);
        second = wanted - wanted.dot(first) * first;
    }
    if (!(second.norm() > kMinSine))
        second = anyNormal(first);
    second.normalize();
    second -= second.dot(first) * first; // what rounding left of a nearly parallel one
    second.normalize();
    const lsVec3 third = first.cross(second);
    for (int i = 0; i < 3; ++i) {
        frame[0][i] = first[i];
        frame[1][i] = second[i];
        frame[2][i] = third[i];
    }
    return true;
}

void attachmentInWorld(const DynBaseConstraint* c, int slot, KitMatrix4 frame) {
    if (c->body[slot])
        KitMatrix4TMCompound(frame, c->bclH.ref[slot], *centreOf(c->body[slot]));
    else
        KitMatrix4Copy(frame, c->bclH.ref[slot]);
}

bool isAxis(int axis, const char* function) {
    if (axis >= 0 && axis < 3)
        return true;
    KitWarning(12, "%s: the axis must be 0, 1 or 2.\n", function);
    return false;
}

} // namespace

void DynConvertCOMVector(const DynBody* from, const DynBody* to, KitVector3 v) {
    toWorld(from, v);
    if (to)
        KitMatrix4TMInverseRotate(v, v, *centreOf(to));
}

void DynConvertCOMPositionVector(const DynBody* from, const DynBody* to, KitVector3 p) {
    if (from)
        KitMatrix4TMTransform(p, p, *centreOf(from));
    if (to)
        KitMatrix4TMInverseTransform(p, p, *centreOf(to));
}

void DynConstraintAdaptAttachments(DynBaseConstraint* constraint, const DynBody* body,
                                   const KitMatrix4 change) {
    for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
        if (constraint->body[slot] == body)
            KitMatrix4TMCompound(constraint->bclH.ref[slot], constraint->bclH.ref[slot], change);
}

void DynConstraintBodySetPosition(DynBaseConstraint* constraint, int slot,
                                  const KitVector3 position) {
    constexpr const char* kFunction = "DynConstraintBodySetPosition";
    if (!DynConstraintIsSlot(constraint, slot, kFunction) || !DynCheckVector(position, kFunction))
        return;
    KitReal* p = constraint->bclH.ref[slot][3];
    KitVector3Copy(p, position);
    DynConvertCOMPositionVector(nullptr, constraint->body[slot], p);
}

void DynConstraintBodySetPositionRel(DynBaseConstraint* constraint, int slot,
                                     const KitVector3 position) {
    constexpr const char* kFunction = "DynConstraintBodySetPositionRel";
    if (!DynConstraintIsSlot(constraint, slot, kFunction) || !DynCheckVector(position, kFunction))
        return;
    KitReal* p = constraint->bclH.ref[slot][3];
    KitVector3Copy(p, position);
    if (const DynBody* body = constraint->body[slot]; body && body->useBodyOffset)
        KitMatrix4TMTransform(p, p, body->comToBodyTM);
}

void DynConstraintBodySetPositionCOMRel(DynBaseConstraint* constraint, int slot,
                                        const KitVector3 position) {
    constexpr const char* kFunction = "DynConstraintBodySetPositionCOMRel";
    if (DynConstraintIsSlot(constraint, slot, kFunction) && DynCheckVector(position, kFunction))
        KitVector3Copy(constraint->bclH.ref[slot][3], position);
}

void DynConstraintBodyGetPosition(const DynBaseConstraint* constraint, int slot,
                                  KitVector3 position) {
    if (!DynConstraintIsSlot(constraint, slot, "DynConstraintBodyGetPosition"))
        return;
    KitVector3Copy(position, constraint->bclH.ref[slot][3]);
    DynConvertCOMPositionVector(constraint->body[slot], nullptr, position);
}

void DynConstraintBodyGetPositionRel(const DynBaseConstraint* constraint, int slot,
                                     KitVector3 position) {
    if (!DynConstraintIsSlot(constraint, slot, "DynConstraintBodyGetPositionRel"))
        return;
    KitVector3Copy(position, constraint->bclH.ref[slot][3]);
    if (const DynBody* body = constraint->body[slot]; body && body->useBodyOffset)
        KitMatrix4TMInverseTransform(position, position, body->comToBodyTM);
}

void DynConstraintBodySetAxes(DynBaseConstraint* constraint, int slot, const KitVector3 primary,
                              const KitVector3 secondary) {
    if (!DynConstraintIsSlot(constraint, slot, "DynConstraintBodySetAxes"))
        return;
    KitMatrix4 frame;
    if (!setAxes(frame, primary, secondary))
        return;
    for (int axis = 0; axis < 3; ++axis) {
        DynConvertCOMVector(nullptr, constraint->body[slot], frame[axis]);
        KitVector3Copy(constraint->bclH.ref[slot][axis], frame[axis]);
    }
}

void DynConstraintBodySetAxesRel(DynBaseConstraint* constraint, int slot, const KitVector3 primary,
                                 const KitVector3 secondary) {
    if (!DynConstraintIsSlot(constraint, slot, "DynConstraintBodySetAxesRel"))
        return;
    KitMatrix4 frame;
    if (!setAxes(frame, primary, secondary))
        return;
    const DynBody* body = constraint->body[slot];
    for (int axis = 0; axis < 3; ++axis) {
        if (body && body->useBodyOffset)
            KitMatrix4TMRotate(frame[axis], frame[axis], body->comToBodyTM);
        KitVector3Copy(constraint->bclH.ref[slot][axis], frame[axis]);
    }
}

void DynConstraintBodyGetAxis(const DynBaseConstraint* constraint, int slot, int axis,
                              KitVector3 v) {
    constexpr const char* kFunction = "DynConstraintBodyGetAxis";
    if (!DynConstraintIsSlot(constraint, slot, kFunction) || !isAxis(axis, kFunction))
        return;
    KitMatrix4 frame;
    attachmentInWorld(constraint, slot, frame);
    KitVector3Copy(v, frame[axis]);
}

void DynConstraintBodyGetAxisRel(const DynBaseConstraint* constraint, int slot, int axis,
                                 KitVector3 v) {
    constexpr const char* kFunction = "DynConstraintBodyGetAxisRel";
    if (!DynConstraintIsSlot(constraint, slot, kFunction) || !isAxis(axis, kFunction))
        return;
    KitVector3Copy(v, constraint->bclH.ref[slot][axis]);
    if (const DynBody* body = constraint->body[slot]; body && body->useBodyOffset)
        KitMatrix4TMInverseRotate(v, v, body->comToBodyTM);
}

void DynConstraintSetPosition(DynBaseConstraint* constraint, const KitVector3 position) {
    for (int slot = 0; slot < 2; ++slot)
        DynConstraintBodySetPosition(constraint, slot, position);
}

void DynConstraintSetAxis(DynBaseConstraint* constraint, const KitVector3 axis) {
    DynConstraintSetAxes(constraint, axis, nullptr);
}

void DynConstraintSetAxes(DynBaseConstraint* constraint, const KitVector3 primary,
                          const KitVector3 secondary) {
    for (int slot = 0; slot < 2; ++slot)
        DynConstraintBodySetAxes(constraint, slot, primary, secondary);
}
