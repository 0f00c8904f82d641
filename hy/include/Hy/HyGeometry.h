#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyBaseUserData.h>
#include <Hy/HyRefCount.h>
#include <Hy/HySmartPtr.h>
#include <Hy/HyVector3.h>

struct ColGeometry;

namespace Hy {
class HyCollisionGeometry;
class HyMaterial;
class HyUniverse;

/// A shape. Any number of HyCollisionGeometry place it in the world and hold it together: it goes
/// with the last of them.
///
/// Sizes in m, frame of the shape. What is not finite, or no size, is refused with a warning. A change
/// of size reaches the mass and the space of all placements.
class HY_API HyGeometry : public HyClass<kHyGeometryClassId, HyBaseUserData, HyRefCount> {
public:
    ~HyGeometry() override;
    [[nodiscard]] const char* getClassName() const override { return "HyGeometry"; }

    /// A shape of its own with the same sizes; the caller's until it is placed.
    [[nodiscard]] virtual HyGeometry* clone() const = 0;
    /// Prepares what collision needs; nothing where there is nothing to prepare.
    virtual void build() {}
    [[nodiscard]] virtual bool isBuilt() const { return true; }
    /// Sets the sizes along the axes, where the shape has such; otherwise a warning.
    virtual void setDimensions(const HyVector3& dimensions);

    /// m^3; computed when it is asked for first. 0, after a warning, for a shape without volume.
    [[nodiscard]] HyReal getVolume();
    /// Centre of mass for even density.
    [[nodiscard]] HyVector3 getCOM();
    /// Inertia tensor about the centre of mass for 1 kg/m^3, kg m^2.
    void getInertiaTensor(HyReal tensor[3][3]);
    /// Corners of the bounding box in the shape's frame.
    void getBoundingBox(HyVector3& min, HyVector3& max) const;
    void getBoundingSphere(HyVector3& centre, HyReal& radius) const;

    /// A shape that takes away: only for composites.
    [[nodiscard]] bool isHole() const;
    /// Row of the request table that placements of the shape begin with: 0, or 1 for meshes, height
    /// fields and level sets. 0 for null.
    [[nodiscard]] static int getDefaultRequestID(const HyGeometry* geometry);

    // Materials of a shape that has several, by index; elsewhere the placement's material counts.

    /// Makes the map of a size, filled with a material. A negative count: a warning, no change.
    void createMaterialMap(int count, HyMaterial* material);
    /// An index out of range: a warning, no change.
    void setMaterial(int index, HyMaterial* material);
    /// Null for an index out of range.
    [[nodiscard]] HyMaterial* getMaterial(int index) const;
    [[nodiscard]] int getMaterialCount() const { return static_cast<int>(mMaterialMap.size()); }
    /// Replaces each material by that of the universe's table.
    void registerMaterials(HyUniverse* universe);

    // Placements, in the order of placing; kept while the process-wide switch is on, as at the start.

    static void setAutomaticGeometryOwnerListMaintenance(bool on);
    [[nodiscard]] static bool getAutomaticGeometryOwnerListMaintenance();
    [[nodiscard]] const HyArray<HyCollisionGeometry*>& getOwners() const { return mOwners; }
    [[nodiscard]] bool hasOwner(const HyCollisionGeometry* owner) const;
    /// Brings mass and space of all placements up to date.
    void updateOwners();

    [[nodiscard]] ColGeometry* getColGeometry() const { return mColGeometryID; }

    // For placements.

    void addOwner(HyCollisionGeometry* owner);
    void removeOwner(HyCollisionGeometry* owner);

protected:
    /// @param geometry becomes the shape's own; null if it could not be made
    explicit HyGeometry(ColGeometry* geometry);
    /// Volume, centre of mass and tensor for 1 kg/m^3; false if the shape has none.
    virtual bool _computeMassPropertiesImplementation(HyReal& volume, HyVector3& centre,
                                                      HyReal tensor[3][3]);
    /// After a change of size.
    void shapeChanged();

    template <class Record>
    [[nodiscard]] Record* record() const {
        return static_cast<Record*>(mColGeometryID);
    }

private:
    void _computeMassProperties();

    ColGeometry* mColGeometryID = nullptr;
    HyArray<HySmartPtr<HyMaterial>> mMaterialMap;
    HyArray<HyCollisionGeometry*> mOwners;
    HyVector3 mCOM;
    HyReal mVolume = 0;
    HyReal mTensor[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    bool mMassPropertiesComputed = false;

    static bool sAutomaticGeometryOwnerListMaintenance;
};

} // namespace Hy
