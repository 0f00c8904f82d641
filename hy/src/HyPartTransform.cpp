#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Hy/HyMessage.h>

#include <cmath>
#include <cstring>

namespace Hy {

namespace {

/// Below it a quaternion is not normalised.
constexpr HyReal kMinSquareNorm = 1e-7;

bool checkTransform(const HyTransform& tm) {
    if (tm.isFinite())
        return true;
    HyWarning(0, "HyPart::setTransform: the transform must be finite.\n");
    return false;
}

bool isNear(HyReal a, HyReal b) {
    constexpr HyReal kEpsilon = HY_SMALL_REAL<double>::epsilon;
    const HyReal difference = std::abs(a - b);
    if (std::abs(a) <= kEpsilon || std::abs(b) <= kEpsilon)
        return difference <= kEpsilon;
    return difference / std::abs(a) <= kEpsilon && difference / std::abs(b) <= kEpsilon;
}

// Compare axes and position, entry by entry.
bool isNear(const HyTransform& a, const HyTransform& b) {
    for (int row = 0; row < 4; ++row)
        for (int i = 0; i < 3; ++i)
            if (!isNear(a[row][i], b[row][i]))
                return false;
    return true;
}

bool isSameToTheBit(const HyTransform& a, const HyTransform& b) {
    for (int row = 0; row < 4; ++row)
        if (std::memcmp(a[row], b[row], 3 * sizeof(HyReal)) != 0)
            return false;
    return true;
}

} // namespace

void HyPart::setTransform(const HyTransform& tm) {
    if (!checkTransform(tm))
        return;
    const HyTransform target = tm; // tm may be the part's own
    if (isNear(target, getTransform())) {
        refreshTransform(target);
    } else if (mFreezeState || mControlType == kControlStatic) {
        placeHeldPart(target);
    } else {
        DynBodySetTransform(mDynBodyID, target.m);
        wakeDynamics(true);
        setEnabledSteps(0);
    }
    mPrevTransform = target;
}

// The new bits count, but a transform that is the body's own keeps the quaternion that made it.
void HyPart::refreshTransform(const HyTransform& tm) {
    if (!isSameToTheBit(tm, getTransform()))
        DynBodySetTransform(mDynBodyID, tm.m);
}

void HyPart::placeHeldPart(const HyTransform& tm) {
    _freeze(false);
    DynBodySetTransform(mDynBodyID, tm.m);
    _freeze(true);
}

void HyPart::setTransform(const HyTransform& tm, HyReal dt) {
    if (!checkTransform(tm))
        return;
    if (dt == 0 || mInternalControl == kControlStatic || !mUniverse) {
        if (mInternalControl == kControlStatic)
            HyInfo(0, "HyPart::setTransform(tm, dt): This method should not be called if the part "
                      "is frozen. \n. Please think to use setTransform(tm) in that case.\n");
        setTransform(tm);
        return;
    }
    const HyTransform target = tm;
    mPrevTransform = getTransform();
    DynBodyMoveTo(mDynBodyID, target.m, dt);
}

void HyPart::setPositionKinematic(const HyVector3& position, HyReal dt) {
    HyTransform tm = getTransform();
    tm.t() = position;
    setTransform(tm, dt);
}

void HyPart::setPosition(const HyVector3& position) {
    HyTransform tm = getTransform();
    tm.t() = position;
    setTransform(tm);
}

void HyPart::setOrientationQuaternion(HyQuaternion& q) {
    const HyReal squareNorm = q.squareNorm();
    if (!(squareNorm > 0) || !std::isfinite(squareNorm)) {
        HyWarning(0, "HyPart::setOrientationQuaternion: the quaternion must be finite and not "
                     "zero.\n");
        return;
    }
    if (squareNorm >= kMinSquareNorm)
        q.normalize();
    setTransform(HyTransform(q, getPosition()));
}

void HyPart::setOrientationEulerAngles(const HyEulerAngles& angles) {
    HyTransform tm(getPosition());
    angles.toHyMatrix44(tm);
    setTransform(tm);
}

const HyTransform& HyPart::getTransform() const {
    return HyTransform::constCast(mDynBodyID->bodyTM);
}

HyQuaternion HyPart::getOrientationQuaternion() const {
    HyQuaternion q;
    DynBodyGetQuaternion(mDynBodyID, q.mQuat);
    return q;
}

HyEulerAngles HyPart::getOrientationEulerAngles() const {
    HyEulerAngles angles;
    angles.fromHyMatrix44(getTransform(), HyEulerAngles::getDefaultEulerOrder());
    return angles;
}

} // namespace Hy
