#include <Dync/DyncFrames.h>

#include <Kit/KitMatrix4.h>

DyncWorldFrames DyncGetWorldFrames(const DynBaseConstraint& constraint) {
    const DyncConstraintHeader& head = constraint.bclH;
    DyncWorldFrames frames;
    for (int i = 0; i < head.n_bodies; ++i) {
        lsTransform& w = frames.w[i];
        if (head.r[i] == nullptr) {
            w = lsTransform(head.ref[i]);
            frames.p[i] = w.t();
            continue;
        }
        KitMatrix4TMCompound(w.matrix(), head.ref[i], *head.r[i]);
        frames.p[i] = w.t() - lsVec3::constCast((*head.r[i])[3]);
    }
    frames.d01 = frames.w[0].t() - frames.w[1].t();
    return frames;
}

KitReal DyncGetBodiesRelLinearVelocityAlong(const DynBaseConstraint& constraint, const lsVec3* p,
                                            const lsVec3& axis) {
    KitReal speed = 0;
    for (int i = 0; i < 2; ++i) {
        const KitVector4* velocity = constraint.bclH.velocity[i];
        if (velocity == nullptr)
            continue;
        const lsVec3 v =
            lsVec3::constCast(velocity[0]) + lsVec3::constCast(velocity[1]).cross(p[i]);
        speed += (i == 0 ? 1 : -1) * v.dot(axis);
    }
    return speed;
}

KitReal DyncGetBodiesRelAngularVelocityAbout(const DynBaseConstraint& constraint,
                                             const lsVec3& axis) {
    KitReal speed = 0;
    for (int i = 0; i < 2; ++i)
        if (constraint.bclH.velocity[i] != nullptr)
            speed +=
                (i == 0 ? 1 : -1) * lsVec3::constCast(constraint.bclH.velocity[i][1]).dot(axis);
    return speed;
}
