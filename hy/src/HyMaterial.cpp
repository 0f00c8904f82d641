#include <Hy/HyMaterial.h>

#include <Hy/DumpFileHelper.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {

HyMaterial::~HyMaterial() {
    for (HyContactMaterial* dependent : mDependencies)
        dependent->forget(this);
}

HyMaterial& HyMaterial::operator=(const HyMaterial& other) {
    mValue = other.mValue;
    mIntegratedSlipDisplacement = other.mIntegratedSlipDisplacement;
    _updateDependecies();
    return *this;
}

void HyMaterial::setName(const char* name) {
    HyMaterialBase::setName(name);
    _updateDependecies();
}

void HyMaterial::updateValue() {
    _updateDependecies();
}

void HyMaterial::reset() {
    mIntegratedSlipDisplacement = kIntegratedSlipDisplacementNeutral;
    HyMaterialBase::reset();
}

void HyMaterial::dump(const char* filename) const {
    static constexpr const char* kNames[] = {"Neutral", "Deactivated", "Activated", "Never"};
    const DumpFileHelper helper(filename);
    HyMaterialBase::dump(filename);
    std::fprintf(helper.getFilePtr(), "integrated displacement: \t %s \n",
                 kNames[mIntegratedSlipDisplacement]);
}

void HyMaterial::setIntegratedSlipDisplacement(IntegratedSlipDisplacement value) {
    if (value < kIntegratedSlipDisplacementNeutral || value > kIntegratedSlipDisplacementNever) {
        HyWarning(0, "HyMaterial::setIntegratedSlipDisplacement: the value must be one of "
                     "IntegratedSlipDisplacement.\n");
        return;
    }
    mIntegratedSlipDisplacement = value;
    updateValue();
}

void HyMaterial::setMaterialOrigin(const std::string& origin, const std::string& filename) {
    mMaterialOrigin = origin;
    mMaterialOriginFilename = filename;
}

void HyMaterial::registerUsage(HyBase* user) {
    if (!user)
        return;
    mUsageReferencesList.eraseAll(nullptr); // notes of the dead
    mUsageReferencesList.push_back(user);
}

void HyMaterial::unregisterUsage(HyBase* user) {
    if (user)
        mUsageReferencesList.eraseOnce(user);
}

bool HyMaterial::isUsed() const {
    return std::any_of(mUsageReferencesList.begin(), mUsageReferencesList.end(),
                       [](const HyPointer<HyBase>& user) { return user.valid(); });
}

void HyMaterial::_updateDependecies() {
    // By index: a merge rule may make contact materials on the way.
    for (std::size_t i = 0; i < mDependencies.size(); ++i)
        mDependencies[i]->update(false);
}

} // namespace Hy
