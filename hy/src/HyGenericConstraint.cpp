#include <Hy/HyGenericConstraint.h>

#include <Dyn/DynGenericConstraint.h>
#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncJoints.h>
#include <Dync/DyncSoftness.h>
#include <Hy/HyMessage.h>
#include <Kit/KitQuaternion.h>

#include <cmath>
#include <cstdio>
#include <numbers>

namespace Hy {
namespace {

constexpr HyReal kUnbounded = std::numeric_limits<HyReal>::max();
constexpr HyReal kTurn = 2 * std::numbers::pi;

bool isStrength(unsigned row, HyReal first, HyReal second) {
    if (row >= static_cast<unsigned>(kDynsMaxConstraintRows)) {
        HyWarning(0, "HyGenericConstraint::ConstraintInternalFactors::setStrength: invalid row "
                     "index\n");
        return false;
    }
    if (std::isfinite(first) && first >= 0 && std::isfinite(second) && second >= 0)
        return true;
    HyWarning(0, "HyGenericConstraint::ConstraintInternalFactors::setStrength: the values must be "
                 "finite and not negative.\n");
    return false;
}

bool isIndex(int index, int first, int last, const char* operation, const char* what) {
    if (index >= first && index <= last)
        return true;
    HyWarning(0, "HyGenericConstraint::%s: the %s must be %d to %d.\n", operation, what, first,
              last);
    return false;
}

bool isAxis(int axis, const char* operation) {
    return isIndex(axis, 0, 2, operation, "axis");
}

bool isPairPart(int part, const char* operation) {
    return isIndex(part, 0, 1, operation, "part");
}

const lsVec3& low(const HyVector3& v) {
    return lsVec3::constCast(v.v);
}

void updateObject(DynBaseConstraint* constraint, KitReal h) {
    DynConstraintUpdateKinematic(constraint, h);
    static_cast<HyGenericConstraint*>(static_cast<DynGenericConstraint*>(constraint)->data)
        ->updateKinematic(h);
}

} // namespace

HyGenericConstraint::HyGenericConstraint(int partCount, int maxRows)
    : HyClass(DynGenericConstraintCreateInPool(getConstraintPool(), partCount, maxRows)) {
    connectRecord();
}

// The record must not call what is no longer there.
HyGenericConstraint::~HyGenericConstraint() {
    enable(false);
    getDynConstraint()->updateKinematicFunction = DynConstraintUpdateKinematic;
    DynGenericConstraintSetHyPointer(static_cast<DynGenericConstraint*>(getDynConstraint()),
                                     nullptr, nullptr);
}

void HyGenericConstraint::connectRecord() {
    auto* record = static_cast<DynGenericConstraint*>(getDynConstraint());
    DynGenericConstraintSetHyPointer(record, this, writeRows);
    record->updateKinematicFunction = updateObject;
    DynConstraintResetNeedKinematicUpdate(record);
}

void HyGenericConstraint::_reset() {
    HyConstraint::_reset();
    connectRecord();
    resetKinematic();
}

void HyGenericConstraint::restoreStateImpl(const HyConstraintState&) {
    resetKinematic();
}

int HyGenericConstraint::addConstraintEquationDefinition(const char* name) {
    const int row = getConstraintEquationCount();
    if (!name || row >= getMaxRowCount()) {
        HyWarning(0, "HyGenericConstraint::addConstraintEquationDefinition: the equation must have "
                     "a name and a row.\n");
        return -1;
    }
    addEquations({{name, row, -1}});
    return row;
}

int HyGenericConstraint::getMaxRowCount() const {
    return getDynConstraint()->bclH.max_rows;
}

void HyGenericConstraint::getAttachmentRelativeQuaternion(HyQuaternion& out) const {
    const DyncWorldFrames frames = DyncGetWorldFrames(*getDynConstraint());
    lsTransform relative;
    relative.thisIsFirstThenInverseSecond(frames.w[0], frames.w[1]);
    KitQuaternionFromTM(out.mQuat, relative.matrix());
}

int HyGenericConstraint::writeRows(DyncGenericRows* rows, void* object) {
    ConstraintInternal internal{};
    internal.mConstraint = rows->constraint;
    internal.mRows = rows;
    internal.mPartCount = rows->constraint->bclH.n_bodies;
    internal.mMaxRowCount = rows->constraint->bclH.max_rows;
    for (int i = 0; i < kDynsMaxConstraintBodies; ++i) {
        internal.mWorldAttachment[i] = &HyTransform::constCast(rows->frames->w[i].matrix());
        internal.mWorldAttachmentPosition[i] = &HyVector3::constCast(rows->frames->p[i].v);
        internal.mFactors.G[i] = (*rows->G)[i];
    }
    const DynsInputRowFactors& f = *rows->factors;
    internal.mFactors.phi = f.phi;
    internal.mFactors.v0 = f.v0;
    internal.mFactors.lower = f.lower;
    internal.mFactors.upper = f.upper;
    internal.mFactors.xepsilon = f.xepsilon;
    internal.mFactors.xgamma = f.xgamma;
    internal.mFactors.flags = f.flags;
    internal.mFactors.invTimeStep = rows->params->h_inv;
    static_cast<HyGenericConstraint*>(object)->update(&internal);
    return internal.mRowAdded;
}

// Strength of a row.

void HyGenericConstraint::ConstraintInternalFactors::setStrength(unsigned row, HyReal stiffness,
                                                                 HyReal damping) const {
    if (!isStrength(row, stiffness, damping))
        return;
    flags[row] = (flags[row] & ~kDynsRowVelocity) | kDynsRowPosition | kDynsRowOwnSoftness;
    if (damping == kUnbounded) {
        xepsilon[row] = xgamma[row] = 0;
        return;
    }
    DynConvertStiffnessDampingToEpsilonGamma(stiffness, damping, &xepsilon[row], &xgamma[row],
                                             1 / invTimeStep);
    if (stiffness == 0 && damping == 0) // nothing holds it
        lower[row] = upper[row] = 0;
}

void HyGenericConstraint::ConstraintInternalFactors::setStrength(unsigned row, HyReal loss) const {
    if (!isStrength(row, loss, 0))
        return;
    flags[row] = (flags[row] & ~kDynsRowPosition) | kDynsRowVelocity | kDynsRowOwnSoftness;
    xepsilon[row] = loss * invTimeStep;
    xgamma[row] = 0;
}

// Rows.

bool HyGenericConstraint::ConstraintInternal::hasRoom(int rows, const char* operation) const {
    if (mRowAdded >= 0 && mRowAdded + rows <= mMaxRowCount)
        return true;
    HyWarning(0, "HyGenericConstraint::%s: more rows than the constraint's maximum.\n", operation);
    return false;
}

HyReal HyGenericConstraint::ConstraintInternal::getLinearPosition(int i, int j) const {
    constexpr const char* kOperation = "getLinearPosition";
    if (!isPairPart(i, kOperation) || !isAxis(j, kOperation))
        return 0;
    return (getAttachmentPos(0) - getAttachmentPos(1)).dot(getAttachmentAxis(i, j));
}

HyReal HyGenericConstraint::ConstraintInternal::getAngularPosition(int i, int j,
                                                                   HyReal reference) const {
    constexpr const char* kOperation = "getAngularPosition";
    if (!isPairPart(i, kOperation) || !isAxis(j, kOperation))
        return 0;
    constexpr int kCompared[2][3] = {{1, 2, 0}, {2, 0, 1}};
    constexpr int kSense[2][3] = {{2, 0, 1}, {1, 2, 0}};
    const HyVector3& other = getAttachmentAxis(1 - i, kCompared[i][j]);
    const HyReal x = getAttachmentAxis(i, kCompared[i][j]).dot(other);
    const HyReal y = getAttachmentAxis(i, kSense[i][j]).dot(other);
    const HyReal angle = -std::atan2(y, x);
    return angle + kTurn * std::round((reference - angle) / kTurn);
}

int HyGenericConstraint::ConstraintInternal::addSphericalConstraint(int reference) {
    constexpr const char* kOperation = "addSphericalConstraint";
    if (!isIndex(reference, -1, 1, kOperation, "reference") || !hasRoom(3, kOperation))
        return 0;
    const int added = DyncSetSphericalConstraint(mRows->factors, *mRows->G, mRowAdded,
                                                 mRows->frames->w, mRows->frames->p, reference, 1);
    mRowAdded += added;
    return added;
}

int HyGenericConstraint::ConstraintInternal::addDot2Constraint(const HyVector3& axis, int refBody) {
    return addDot2Constraint(axis, refBody, HyVector3(mRows->frames->d01.v));
}

int HyGenericConstraint::ConstraintInternal::addDot2Constraint(const HyVector3& axis, int refBody,
                                                               const HyVector3& arm) {
    constexpr const char* kOperation = "addDot2Constraint";
    if (!isPairPart(refBody, kOperation) || !hasRoom(1, kOperation))
        return 0;
    const int added = DyncSetDot2Constraint(mRows->factors, *mRows->G, mRowAdded, low(arm),
                                            low(axis), mRows->frames->p, refBody, 1);
    mRowAdded += added;
    return added;
}

int HyGenericConstraint::ConstraintInternal::addDot1Constraint(int i, int j) {
    constexpr const char* kOperation = "addDot1Constraint";
    if (!isAxis(i, kOperation) || !isAxis(j, kOperation) || !hasRoom(1, kOperation))
        return 0;
    const int added =
        DyncSetDot1Constraint(mRows->factors, *mRows->G, mRowAdded, mRows->frames->w[0].axis(i),
                              mRows->frames->w[1].axis(j), 1);
    mRowAdded += added;
    return added;
}

int HyGenericConstraint::ConstraintInternal::addSphericalLock(const HyQuaternion& orientation,
                                                              const HyVector3& rate) {
    if (!hasRoom(3, "addSphericalLock"))
        return 0;
    DyncOrientationLock lock = DyncGetOrientationLock(*mConstraint);
    KitVector4Copy(lock.qr0, orientation.mQuat);
    KitVector3Copy(lock.omega0, rate.v);
    const int added = DyncSetSphericalLock(mRows->factors, *mRows->G, mRowAdded, lock, nullptr);
    mRowAdded += added;
    return added;
}

int HyGenericConstraint::ConstraintInternal::addSphericalLock() {
    return addSphericalLock(HyQuaternion(), HyVector3());
}

int HyGenericConstraint::ConstraintInternal::addAxialRow(const HyVector3& axis) {
    if (!hasRoom(1, "addAxialRow"))
        return 0;
    const int added = DyncSetAxialConstraint(mRows->factors, *mRows->G, mRowAdded, low(axis), 1);
    mRowAdded += added;
    return added;
}

int HyGenericConstraint::ConstraintInternal::addDistanceConstraint(HyReal distance) {
    if (!hasRoom(1, "addDistanceConstraint"))
        return 0;
    const int added = DyncSetDistanceConstraint(mRows->factors, *mRows->G, mRowAdded,
                                                mRows->frames->d01, mRows->frames->p, distance, 1);
    mRowAdded += added;
    return added;
}

// With p from the line's origin to the point, a the line's direction and e = p - (p a) a:
//   C = |e| - d0,  n = e/|e|;  C' = n (v_point - velocity of the line's body at the foot of e).
int HyGenericConstraint::ConstraintInternal::addLinePointDistanceConstraint(int pointBody,
                                                                            int lineBody, int axis,
                                                                            HyReal distance) {
    constexpr const char* kOperation = "addLinePointDistanceConstraint";
    if (!isIndex(pointBody, 0, mPartCount - 1, kOperation, "part") ||
        !isIndex(lineBody, 0, mPartCount - 1, kOperation, "part") || !isAxis(axis, kOperation) ||
        !hasRoom(1, kOperation))
        return 0;
    const HyVector3 p = getAttachmentPos(pointBody) - getAttachmentPos(lineBody);
    const HyVector3& a = getAttachmentAxis(lineBody, axis);
    const HyReal s = p.dot(a);
    HyVector3 n = p - s * a;
    const HyReal length = n.norm();
    if (length > 0)
        n /= length;
    const int row = mRowAdded++;
    getJacobianLinear(pointBody, row) = n;
    getJacobianAngular(pointBody, row) = getAttachmentPosRel(pointBody).cross(n);
    getJacobianLinear(lineBody, row) = -n;
    getJacobianAngular(lineBody, row) = -(getAttachmentPosRel(lineBody) + s * a).cross(n);
    mFactors.phi[row] = length - distance;
    mFactors.v0[row] = 0;
    mFactors.lower[row] = -kUnbounded;
    mFactors.upper[row] = kUnbounded;
    constexpr int kKinds = kDynsRowLinear | kDynsRowAngular | kDynsRowPosition | kDynsRowVelocity;
    mFactors.flags[row] = (mFactors.flags[row] & ~kKinds) | kDynsRowLinear | kDynsRowPosition;
    return 1;
}

void HyGenericConstraint::ConstraintInternal::printRows() const {
    for (int row = 0; row < mRowAdded; ++row) {
        std::printf("row %d: phi=%.3f v0=%.3f min=%g max=%g\n", row, mFactors.phi[row],
                    mFactors.v0[row], mFactors.lower[row], mFactors.upper[row]);
        for (int i = 0; i < mPartCount; ++i) {
            const HyReal* g = getJacobianRow(i, row);
            std::printf("row %d, b %d G=%.3f %.3f %.3f %.3f %.3f %.3f\n", row, i, g[0], g[1], g[2],
                        g[3], g[4], g[5]);
        }
    }
}

} // namespace Hy
