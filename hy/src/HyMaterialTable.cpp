#include <Hy/HyMaterialTable.h>

#include <Hy/DumpFileHelper.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyContactProperties.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMessage.h>
#include <Hy/HyNameValidation.h>
#include <Hy/HyStringUtils.h>

#include <algorithm>

namespace Hy {
namespace {

constexpr int kMaxMaterialCount = 16384; // whose pairs take some 60 GB

bool isMaterialCount(int n, const char* operation) {
    if (n >= 0 && n <= kMaxMaterialCount)
        return true;
    HyWarning(0, "HyMaterialTable::%s: the number of materials must be from 0 to %d.\n", operation,
              kMaxMaterialCount);
    return false;
}

std::string validName(const char* name) {
    return name ? HyNameValidation::replaceRestrictedCharacters(name, '_') : std::string();
}

/// Strength of a friction model against a different one.
int priorityOf(DyncContactMaterial::FrictionModel model) {
    switch (model) {
    case DyncContactMaterial::kFrictionModelNone:
        return 6;
    case DyncContactMaterial::kFrictionModelBoxProportionalLow:
        return 5;
    case DyncContactMaterial::kFrictionModelBoxProportionalHigh:
        return 4;
    case DyncContactMaterial::kFrictionModelScaledBox:
        return 3;
    case DyncContactMaterial::kFrictionModelScaledBoxFast:
        return 2;
    case DyncContactMaterial::kFrictionModelBox:
        return 1;
    case DyncContactMaterial::kFrictionModelNeutral:
        return 0;
    }
    return 0;
}

void mergeAxis(const DyncContactMaterial& a, const DyncContactMaterial& b, int axis,
               DyncContactMaterial& out) {
    const int priorityA = priorityOf(a.model[axis]), priorityB = priorityOf(b.model[axis]);
    const DyncContactMaterial& stronger = priorityA > priorityB ? a : b;
    out.model[axis] = stronger.model[axis];
    if (a.model[axis] == b.model[axis]) {
        out.sbCoefficient[axis] = std::min(a.sbCoefficient[axis], b.sbCoefficient[axis]);
        out.boxMaxForce[axis] = std::min(a.boxMaxForce[axis], b.boxMaxForce[axis]);
        out.slip[axis] = std::max(a.slip[axis], b.slip[axis]);
        out.staticFrictionScale[axis] =
            std::min(a.staticFrictionScale[axis], b.staticFrictionScale[axis]);
    } else {
        out.sbCoefficient[axis] = stronger.sbCoefficient[axis];
        out.boxMaxForce[axis] = stronger.boxMaxForce[axis];
        out.slip[axis] = stronger.slip[axis];
        out.staticFrictionScale[axis] = stronger.staticFrictionScale[axis];
    }
    out.slide[axis] = std::max(a.slide[axis], b.slide[axis]);
}

DyncContactMaterial mergeValues(const DyncContactMaterial& a, const DyncContactMaterial& b) {
    DyncContactMaterial out;
    const DyncContactMaterial& softer = a.compliance > b.compliance ? a : b;
    out.restitution = softer.restitution;
    out.velThreshold = softer.velThreshold;
    DyncContactMaterialSetCompliance(&out, softer.compliance, softer.damping);
    out.max_adhesive_force = std::max(a.max_adhesive_force, b.max_adhesive_force);
    for (int axis = 0; axis < DyncContactMaterial::kFrictionAxisCount; ++axis)
        mergeAxis(a, b, axis, out);
    return out;
}

} // namespace

HyMaterialTable::MergeMaterialFn HyMaterialTable::sMergeMaterialFn =
    HyMaterialTable::defaultMergeMaterialFn;

HyMaterialTable::HyMaterialTable() {
    registerMaterial("default");
}

HyMaterialTable::~HyMaterialTable() {
    clear(false);
}

// Materials.

HyMaterial* HyMaterialTable::getDefaultMaterial() const {
    return getMaterial(0);
}

HyMaterial* HyMaterialTable::registerMaterial(const char* name) {
    const std::string valid = validName(name);
    if (valid.empty()) {
        HyWarning(0, "HyMaterialTable::registerMaterial: name must not be null or empty.\n");
        return nullptr;
    }
    if (HyMaterial* present = findMaterial(valid))
        return present;
    if (!isMaterialCount(getMaterialCount() + 1, "registerMaterial"))
        return nullptr;
    auto* const material = new HyMaterial;
    material->setHyName(valid);
    if (const HyMaterial* first = getDefaultMaterial())
        *material = *first;
    return append(material);
}

HyMaterial* HyMaterialTable::registerMaterial(const HyMaterial* material) {
    if (!material)
        return nullptr;
    if (holds(material))
        return getMaterial(material->mIndex);
    if (HyMaterial* present = findMaterial(material->getName()))
        return present;
    if (!isMaterialCount(getMaterialCount() + 1, "registerMaterial"))
        return nullptr;
    auto* const copy = new HyMaterial;
    copy->setHyName(material->getName());
    *copy = *material;
    copy->setUserData(material->getUserData());
    copy->setMaterialOrigin(material->mMaterialOrigin, material->mMaterialOriginFilename);
    return append(copy);
}

HyMaterial* HyMaterialTable::append(HyMaterial* material) {
    mMapMaterialToID.push_back(material);
    extendContactPropertyTable(getMaterialCount());
    return material;
}

void HyMaterialTable::extendContactPropertyTable(int n) {
    if (!isMaterialCount(n, "extendContactPropertyTable"))
        return;
    if (n > getMaterialCount())
        mMapMaterialToID.resize(static_cast<std::size_t>(n));
    fillMaterialSlots();
    addContactMaterials();
}

void HyMaterialTable::fillMaterialSlots() {
    HyStringUtils::UniqueNamesCollection names;
    const auto empty = [](const HySmartPtr<HyMaterial>& slot) { return !slot.valid(); };
    if (std::any_of(mMapMaterialToID.begin(), mMapMaterialToID.end(), empty))
        for (const HySmartPtr<HyMaterial>& slot : mMapMaterialToID)
            if (slot.valid())
                names.addReferenceName(slot->getName());
    int index = 0;
    for (HySmartPtr<HyMaterial>& slot : mMapMaterialToID) {
        if (!slot.valid()) {
            slot = new HyMaterial;
            slot->setHyName(names.add(slot->getName()));
        }
        slot->mIndex = index++;
    }
}

void HyMaterialTable::addContactMaterials() {
    const int present = mContactMaterials.size(), count = getMaterialCount();
    if (present >= count)
        return;
    mContactMaterials.resize(count);
    for (int j = present; j < count; ++j)
        for (int i = 0; i <= j; ++i)
            mContactMaterials.getEntry(i, j) =
                new HyContactMaterial(getMaterial(i), getMaterial(j));
}

HyMaterial* HyMaterialTable::getMaterial(int index) const {
    if (index < 0 || index >= getMaterialCount())
        return nullptr;
    return mMapMaterialToID[static_cast<std::size_t>(index)].get();
}

HyMaterial* HyMaterialTable::getMaterial(const char* name) const {
    return findMaterial(validName(name));
}

HyMaterial* HyMaterialTable::findMaterial(const std::string& name) const {
    for (const HySmartPtr<HyMaterial>& material : mMapMaterialToID)
        if (material->getName() == name)
            return material.get();
    return nullptr;
}

bool HyMaterialTable::holds(const HyMaterial* material) const {
    return material && getMaterial(material->mIndex) == material;
}

bool HyMaterialTable::removeMaterial(HyMaterial* material) {
    if (!holds(material) || material->mIndex == 0 || material->isUsed())
        return false;
    const int index = material->mIndex;
    deleteContactMaterials(index);
    mContactMaterials.removeRow(index);
    for (int later = index + 1; later < getMaterialCount(); ++later)
        --getMaterial(later)->mIndex;
    material->mIndex = -1;
    mMapMaterialToID.erase(mMapMaterialToID.begin() + index); // which may be its end
    return true;
}

void HyMaterialTable::deleteContactMaterials(int index) {
    for (int other = 0; other < mContactMaterials.size(); ++other) {
        HyContactMaterial*& entry = mContactMaterials.getEntry(index, other);
        HyAssertImplementation(__FILE__, __LINE__, entry != nullptr,
                               "Trying to remove contact material failed. I crash");
        delete std::exchange(entry, nullptr);
    }
}

void HyMaterialTable::clear(bool createDefault) {
    for (HyContactProperties* properties : mLegacyContactProperties)
        delete properties;
    mLegacyContactProperties.clear();
    for (int j = 0; j < mContactMaterials.size(); ++j)
        for (int i = 0; i <= j; ++i)
            delete mContactMaterials.getEntry(i, j);
    mContactMaterials.clear();
    for (HySmartPtr<HyMaterial>& material : mMapMaterialToID)
        material->mIndex = -1;
    mMapMaterialToID.clear();
    if (createDefault)
        registerMaterial("default");
}

void HyMaterialTable::merge(const HyMaterialTable* other) {
    if (!other) {
        HyWarning(0, "HyMaterialTable::merge: other must not be null.\n");
        return;
    }
    if (other == this)
        return;
    HyArray<HyMaterial*> here; // by index there
    for (const HySmartPtr<HyMaterial>& theirs : other->mMapMaterialToID) {
        HyMaterial* const ours = registerMaterial(theirs->getName().c_str());
        if (!ours) // the table is full
            return;
        *ours = *theirs;
        here.push_back(ours);
    }
    for (std::size_t i = 0; i < here.size(); ++i)
        for (std::size_t j = i; j < here.size(); ++j) {
            const HyContactMaterial* const theirs =
                other->getContactMaterial(static_cast<int>(i), static_cast<int>(j));
            if (theirs->isLocked())
                setContactMaterial(here[i], here[j], theirs);
        }
}

// Contact materials.

int HyMaterialTable::pairIndex(const HyMaterial* material) const {
    if (!material)
        return getMaterialCount() > 0 ? 0 : -1;
    return holds(material) ? material->mIndex : -1;
}

HyContactMaterial* HyMaterialTable::getContactMaterial(const HyMaterial* material1,
                                                       const HyMaterial* material2) const {
    const int i = pairIndex(material1), j = pairIndex(material2);
    return i < 0 || j < 0 ? nullptr : mContactMaterials.getEntry(i, j);
}

HyContactMaterial* HyMaterialTable::getContactMaterial(int index1, int index2) const {
    return mContactMaterials.getEntry(index1, index2);
}

bool HyMaterialTable::setContactMaterial(const HyMaterial* material1, const HyMaterial* material2,
                                         const HyContactMaterial* contactMaterial) {
    HyContactMaterial* const entry = getContactMaterial(material1, material2);
    if (!entry || !contactMaterial)
        return false;
    *entry = *contactMaterial;
    return true;
}

HyContactProperties* HyMaterialTable::getContactProperties(const HyMaterial* material1,
                                                           const HyMaterial* material2) {
    HyContactMaterial* const entry = getContactMaterial(material1, material2);
    if (!entry)
        return nullptr;
    for (HyContactProperties* properties : mLegacyContactProperties)
        if (properties->getContactMaterial() == entry)
            return properties;
    mLegacyContactProperties.push_back(new HyContactProperties(entry));
    return mLegacyContactProperties.back();
}

void HyMaterialTable::dump(const char* filename) const {
    const DumpFileHelper helper(filename); // shared by the dumps below
    std::FILE* const file = helper.getFilePtr();
    std::fputs("====== Beginning the material table ========= \n\n", file);
    std::fprintf(file, "Number of registred material %d\n\n", getMaterialCount());
    for (const HySmartPtr<HyMaterial>& material : mMapMaterialToID) {
        std::fprintf(file, "Name: %30s\t\t ID = %5d\n\n", material->getName().c_str(),
                     material->mIndex);
        material->dump(filename);
    }
    std::fputs("====== Material table Entries ========= \n\n", file);
    for (int i = 0; i < getMaterialCount(); ++i)
        for (int j = i; j < getMaterialCount(); ++j) {
            std::fprintf(file, "\nentry (%3d, %3d)             %-12s %-12s:\n", i, j,
                         getMaterial(i)->getName().c_str(), getMaterial(j)->getName().c_str());
            getContactMaterial(i, j)->dump(filename);
        }
}

// The merge rule.

void HyMaterialTable::updateContactMaterial(const HyMaterial* material1,
                                            const HyMaterial* material2,
                                            HyContactMaterial* contactMaterial) {
    if (!material1 || !material2 || !contactMaterial) {
        HyWarning(0, "HyMaterialTable::updateContactMaterial: materials must not be null.\n");
        return;
    }
    sMergeMaterialFn(material1, material2, contactMaterial);
}

void HyMaterialTable::setMergeMaterialFn(MergeMaterialFn fn) {
    sMergeMaterialFn = fn ? fn : defaultMergeMaterialFn;
}

void HyMaterialTable::defaultMergeMaterialFn(const HyMaterial* material1,
                                             const HyMaterial* material2,
                                             HyContactMaterial* contactMaterial) {
    if (!material1 || !material2 || !contactMaterial) {
        HyWarning(0, "HyMaterialTable::defaultMergeMaterialFn: materials must not be null.\n");
        return;
    }
    contactMaterial->mValue = mergeValues(material1->getValue(), material2->getValue());
    contactMaterial->mValue.mIntegratedSlipDisplacementActivated =
        std::max(material1->getIntegratedSlipDisplacement(),
                 material2->getIntegratedSlipDisplacement()) ==
        HyMaterial::kIntegratedSlipDisplacementActivated;
    contactMaterial->updateValue();
}

} // namespace Hy
