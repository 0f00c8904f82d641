#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Kit/KitMessage.h>
#include <Kit/KitQuaternion.h>

#include <cmath>

namespace {
constexpr KitReal kMinMoveTime = 1e-7; ///< s; a shorter move has no velocity

/// Rotation vector from one orientation to the other over the time, world axes. To first order it
/// is exact: twice the vector part of the relative quaternion.
lsVec3 angularVelocityBetween(const lsTransform& from, const lsTransform& to, KitReal time) {
    KitVector4 a, b, turn;
    KitQuaternionFromTM(a, from.matrix());
    KitQuaternionFromTM(b, to.matrix());
    const KitVector4 inverse = {a[0], -a[1], -a[2], -a[3]};
    KitQuaternionMultiply(turn, b, inverse);
    const KitReal scale = (turn[0] < 0 ? -2 : 2) / time; // q and -q are one turn; take the shorter
    return {turn[1] * scale, turn[2] * scale, turn[3] * scale};
}

bool hasOwnVelocities(const ColModel& model) {
    return model.linearVelocity && model.angularVelocity &&
           model.linearVelocity != ColDefault0Velocity &&
           model.angularVelocity != ColDefault0Velocity;
}

/// The model reads its velocities alone, but a move is the one place that writes them.
void writeVelocity(const KitReal* velocity, const lsVec3& value) {
    lsVec3::cast(const_cast<KitReal*>(velocity)) = value;
}

/// Tensor of local axes in the frame that the transform leads to: R^T I R with axes as rows.
void rotateTensor(KitMatrix3 inertia, const lsTransform& tm) {
    KitMatrix3 half, r;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            half[i][j] = inertia[i][0] * tm.axis(0)[j] + inertia[i][1] * tm.axis(1)[j] +
                         inertia[i][2] * tm.axis(2)[j];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            r[i][j] = tm.axis(0)[i] * half[0][j] + tm.axis(1)[i] * half[1][j] +
                      tm.axis(2)[i] * half[2][j];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inertia[i][j] = 0.5 * (r[i][j] + r[j][i]);
}
} // namespace

void ColModelMoveTo(ColModel* model, const lsTransform& transform, KitReal time) {
    if (!model) {
        ColMistake(kColErrorModel, " in ColModelMoveTo.");
        return;
    }
    lsTransform* moved = model->mRefTM ? model->mRefTM : model->mGlobalTM;
    if (!moved) {
        ColMistake(kColErrorTransform, " in ColModelMoveTo.");
        return;
    }
    if (time > kMinMoveTime && hasOwnVelocities(*model)) {
        writeVelocity(model->linearVelocity, (transform.t() - moved->t()) / time);
        writeVelocity(model->angularVelocity, angularVelocityBetween(*moved, transform, time));
    }
    *moved = transform;
    ColModelUpdate(model);
}

void ColModelSetCOMRelativePosition(ColModel* model, const lsVec3& com) {
    if (!model)
        ColMistake(kColErrorModel, " in ColModelSetCOMRelativePosition.");
    else if (!KitVector3IsFinite(com.v))
        KitWarning(0, "ColModelSetCOMRelativePosition: com must be finite.\n");
    else
        model->mCOMOffset = -(model->mRelTM ? model->mRelTM->inverseTransform(com) : com);
}

bool ColModelGetMassProperties(const ColModel* model, ColMassProperties* out) {
    if (!model || !model->mGeometry) {
        ColMistake(kColErrorModel, " in ColModelGetMassProperties.");
        return false;
    }
    if (!ColGeometryGetMassProperties(model->mGeometry, out))
        return false;
    out->mass *= model->mDensity;
    for (auto& row : out->inertia)
        for (KitReal& entry : row)
            entry *= model->mDensity;
    if (model->mRelTM) {
        out->centre = model->mRelTM->transform(out->centre);
        rotateTensor(out->inertia, *model->mRelTM);
    }
    return true;
}
