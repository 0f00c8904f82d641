#include <Hy/HyGeometry.h>

#include "HyCollisionDetection.h"

#include <Col/ColGeometry.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

#include <algorithm>

namespace Hy {

bool HyGeometry::sAutomaticGeometryOwnerListMaintenance = true;

HyGeometry::HyGeometry(ColGeometry* geometry) : mColGeometryID(geometry) {
    HyCollisionDetection_INCREF();
}

HyGeometry::~HyGeometry() {
    if (mColGeometryID)
        ColGeometryDestroy(mColGeometryID);
    HyCollisionDetection_DECREF();
}

void HyGeometry::setDimensions(const HyVector3&) {
    HyWarning(0, "HyGeometry::setDimensions: the shape has no dimensions along its axes.\n");
}

// Mass.

bool HyGeometry::_computeMassPropertiesImplementation(HyReal& volume, HyVector3& centre,
                                                      HyReal tensor[3][3]) {
    ColMassProperties properties;
    if (!mColGeometryID || !ColGeometryGetMassProperties(mColGeometryID, &properties))
        return false;
    volume = properties.mass; // for a density of 1
    centre = HyVector3(properties.centre.v);
    for (int row = 0; row < 3; ++row)
        std::copy_n(properties.inertia[row], 3, tensor[row]);
    return true;
}

void HyGeometry::_computeMassProperties() {
    if (mMassPropertiesComputed)
        return;
    mMassPropertiesComputed = true;
    if (_computeMassPropertiesImplementation(mVolume, mCOM, mTensor))
        return;
    mVolume = 0;
    mCOM = HyVector3();
    for (auto& row : mTensor)
        std::fill_n(row, 3, HyReal{0});
    HyWarning(0,
              "HyGeometry::_computeMassProperties: an error occurred while trying to compute mass "
              "properties.\n");
}

HyReal HyGeometry::getVolume() {
    _computeMassProperties();
    return mVolume;
}

HyVector3 HyGeometry::getCOM() {
    _computeMassProperties();
    return mCOM;
}

void HyGeometry::getInertiaTensor(HyReal tensor[3][3]) {
    _computeMassProperties();
    for (int row = 0; row < 3; ++row)
        std::copy_n(mTensor[row], 3, tensor[row]);
}

void HyGeometry::getBoundingBox(HyVector3& min, HyVector3& max) const {
    lsVec3 low, high;
    if (mColGeometryID)
        ColGeometryGetAABB(mColGeometryID, nullptr, &low, &high, nullptr);
    min = HyVector3(low.v);
    max = HyVector3(high.v);
}

void HyGeometry::getBoundingSphere(HyVector3& centre, HyReal& radius) const {
    lsVec3 middle;
    radius = 0;
    if (mColGeometryID)
        ColGeometryGetBSphere(mColGeometryID, &middle, &radius);
    centre = HyVector3(middle.v);
}

bool HyGeometry::isHole() const {
    if (!mColGeometryID)
        return false;
    const int id = mColGeometryID->mID;
    return id == kColSphereHole || id == kColBoxHole || id == kColCylinderHole;
}

int HyGeometry::getDefaultRequestID(const HyGeometry* geometry) {
    if (!geometry)
        return 0;
    for (const int id : {kHyTriangleMeshBVTreeClassId, kHyTriangleMeshUVGridClassId,
                         kHyHeightFieldClassId, kHyLevelSetClassId})
        if (geometry->HyBaseUserData::isOfClassType(id))
            return 1;
    return 0;
}

// Materials.

void HyGeometry::createMaterialMap(int count, HyMaterial* material) {
    if (count < 0) {
        HyWarning(0, "HyGeometry::createMaterialMap: the count must not be negative.\n");
        return;
    }
    mMaterialMap.clear();
    for (int i = 0; i < count; ++i)
        mMaterialMap.push_back(HySmartPtr<HyMaterial>(material));
}

void HyGeometry::setMaterial(int index, HyMaterial* material) {
    if (index < 0 || index >= getMaterialCount()) {
        HyWarning(0, "HyGeometry::setMaterial: the index must be in the material map.\n");
        return;
    }
    mMaterialMap[static_cast<std::size_t>(index)] = material;
}

HyMaterial* HyGeometry::getMaterial(int index) const {
    return index >= 0 && index < getMaterialCount()
               ? mMaterialMap[static_cast<std::size_t>(index)].get()
               : nullptr;
}

void HyGeometry::registerMaterials(HyUniverse* universe) {
    if (!universe)
        return;
    for (HySmartPtr<HyMaterial>& material : mMaterialMap)
        if (material.valid())
            material = universe->getMaterialTable()->registerMaterial(material.get());
}

// Placements.

void HyGeometry::setAutomaticGeometryOwnerListMaintenance(bool on) {
    sAutomaticGeometryOwnerListMaintenance = on;
}

bool HyGeometry::getAutomaticGeometryOwnerListMaintenance() {
    return sAutomaticGeometryOwnerListMaintenance;
}

void HyGeometry::addOwner(HyCollisionGeometry* owner) {
    if (sAutomaticGeometryOwnerListMaintenance)
        mOwners.addUnique(owner);
}

void HyGeometry::removeOwner(HyCollisionGeometry* owner) {
    mOwners.eraseOnce(owner);
}

bool HyGeometry::hasOwner(const HyCollisionGeometry* owner) const {
    return std::find(mOwners.begin(), mOwners.end(), owner) != mOwners.end();
}

void HyGeometry::updateOwners() {
    for (HyCollisionGeometry* owner : mOwners)
        owner->updateMassPropertiesPart();
    for (HyCollisionGeometry* owner : mOwners)
        owner->updateSpaceProperties();
}

void HyGeometry::shapeChanged() {
    mMassPropertiesComputed = false;
    updateOwners();
}

} // namespace Hy
