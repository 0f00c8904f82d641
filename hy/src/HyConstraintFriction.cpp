#include <Hy/HyConstraintFriction.h>

#include <Dyn/DynConstraint.h>
#include <Hy/HyMessage.h>

#include <cmath>

namespace Hy {

void HyConstraintFriction::wake() const {
    if (mConstraint && mFriction->mEnabled)
        DynConstraintEnableBodies(mConstraint);
}

// A step lowers the flag if it finds no entry that is enabled and proportional.
void HyConstraintFriction::raiseProportionalFlag() const {
    if (mConstraint && mFriction->mProportional)
        mConstraint->bclH.hasProportionalFriction = 1;
}

bool HyConstraintFriction::setNotNegative(HyReal& field, HyReal value,
                                          const char* operation) const {
    if (!std::isfinite(value) || !(value >= 0)) {
        HyWarning(0, "HyConstraintFriction::%s: the value must be finite and not negative.\n",
                  operation);
        return false;
    }
    field = value;
    wake();
    return true;
}

void HyConstraintFriction::setEnabled(bool enabled) {
    wake(); // what it has held starts to move
    mFriction->mEnabled = enabled;
    raiseProportionalFlag();
    wake();
}

bool HyConstraintFriction::getEnabled() const {
    return mFriction->mEnabled != 0;
}

void HyConstraintFriction::setMaxForce(HyReal force) {
    setNotNegative(mFriction->mMaxForce, force, "setMaxForce");
}

HyReal HyConstraintFriction::getMaxForce() const {
    return mFriction->mMaxForce;
}

void HyConstraintFriction::setLoss(HyReal loss) {
    setNotNegative(mFriction->mLoss, loss, "setLoss");
}

HyReal HyConstraintFriction::getLoss() const {
    return mFriction->mLoss;
}

void HyConstraintFriction::setCoefficient(HyReal coefficient) {
    setNotNegative(mFriction->mCoefficient, coefficient, "setCoefficient");
}

HyReal HyConstraintFriction::getCoefficient() const {
    return mFriction->mCoefficient;
}

void HyConstraintFriction::setStaticFrictionScale(HyReal scale) {
    setNotNegative(mFriction->mStaticFrictionScale, scale, "setStaticFrictionScale");
}

HyReal HyConstraintFriction::getStaticFrictionScale() const {
    return mFriction->mStaticFrictionScale;
}

void HyConstraintFriction::setProportional(bool proportional) {
    mFriction->mProportional = proportional;
    raiseProportionalFlag();
    wake();
}

bool HyConstraintFriction::getProportional() const {
    return mFriction->mProportional != 0;
}

void HyConstraintFriction::setPartReferenceIndex(int part) {
    if (part != 0 && part != 1) {
        HyWarning(0, "HyConstraintFriction::setPartReferenceIndex: the part must be 0 or 1.\n");
        return;
    }
    mFriction->mPartRef = part;
    wake();
}

int HyConstraintFriction::getPartReferenceIndex() const {
    return mFriction->mPartRef;
}

} // namespace Hy
