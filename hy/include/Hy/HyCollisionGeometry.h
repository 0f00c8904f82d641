#pragma once
#include <Hy/HyBaseUserData.h>
#include <Hy/HyMassProperties.h>
#include <Hy/HySequentialID.h>
#include <Hy/HySmartPtr.h>
#include <Hy/HyTransform.h>

struct ColModel;

namespace Hy {
class HyCollisionGeometryState;
class HyCompositeCollisionGeometry;
class HyGeometry;
class HyIntersectFilter;
class HyMaterial;
class HyPart;
class HyUniverse;

/// One placement of a shape: in a part, in a composite, or by itself in a universe.
///
/// It is in the collision space of its universe while collision is enabled. Belongs to what it was
/// added to. Transforms are of the shape's frame; "relative" is in the frame of the part or composite,
/// or the world without one. Numbers that are not finite are refused with a warning.
class HY_API HyCollisionGeometry : public HyClass<kHyCollisionGeometryClassId, HyBaseUserData> {
public:
    /// Values of ColModelTemporaryDisabledStatus.
    enum TemporaryDisabledStatus : int {
        kNotTemporaryDisabled = 0,
        kTemporaryDisabledShortTerm = 1, ///< its pairs are passed over
        kTemporaryDisabledLongTerm = 2,  ///< it has no pairs
    };

    // Life.

    /// @param geometry shape, held by reference; null for none yet
    /// @param material null stands for the default material
    explicit HyCollisionGeometry(HyGeometry* geometry = nullptr, HyMaterial* material = nullptr);
    HyCollisionGeometry(HyGeometry* geometry, HyMaterial* material, const HyTransform& relative);
    /// Leaves its part, composite and universe.
    ~HyCollisionGeometry() override;
    [[nodiscard]] const char* getClassName() const override { return "HyCollisionGeometry"; }
    /// A free copy with the same settings; the caller's.
    /// @param deep with a shape of its own, otherwise the shape is shared
    [[nodiscard]] virtual HyCollisionGeometry* clone(bool deep) const;

    // Shape and material.

    /// Null leaves a placement without a shape. Filter, contact tolerance and density stay.
    virtual void setGeometry(HyGeometry* geometry);
    [[nodiscard]] virtual HyGeometry* getGeometry() const { return mGeometry.get(); }
    [[nodiscard]] bool isHole() const;
    virtual void setMaterial(HyMaterial* material);
    /// Null for none, which stands for the default material.
    [[nodiscard]] virtual HyMaterial* getMaterial() const { return mMaterial.get(); }
    /// The material of an element of the shape: that of its map if there is one, else this one's.
    [[nodiscard]] virtual HyMaterial* getMaterial(int element) const;

    // Place.

    virtual void setTransformRelative(const HyTransform& transform);
    [[nodiscard]] const HyTransform& getTransformRelative() const { return mTransform; }
    /// Places it in the world by its transform in the part or composite.
    void setTransformAbsolute(const HyTransform& transform);
    [[nodiscard]] HyTransform getTransformAbsolute() const;

    // Mass.

    /// kg/m^3, above 0.
    virtual void setRelativeDensity(HyReal density);
    [[nodiscard]] virtual HyReal getRelativeDensity() const;
    /// Whether it counts for the mass of its part; true at first.
    void setMassEnabled(bool enabled);
    [[nodiscard]] bool isMassEnabled() const { return mMassEnabled; }
    /// Mass properties by its density, frame of the part or composite. False without volume.
    virtual bool computeMassPropertiesFromDensity(HyMassProperties& properties) const;
    /// The same scaled to a mass in kg.
    virtual bool computeMassPropertiesFromMass(HyReal mass, HyMassProperties& properties) const;
    /// Centre of mass, absolute.
    [[nodiscard]] virtual HyVector3 getCOM() const;

    // Collision.

    /// Whether it is in its universe's space; true at first.
    void setCollisionEnabled(bool enabled);
    [[nodiscard]] bool isCollisionEnabled() const { return mCollisionEnabled; }
    void setTemporaryDisabledStatus(TemporaryDisabledStatus status);
    [[nodiscard]] TemporaryDisabledStatus getTemporaryDisabledStatus() const {
        return mTemporarilyDisabledFlag;
    }
    /// A static one does not move; pairs of two static ones are not looked at.
    virtual void setStatic(bool on);
    [[nodiscard]] virtual bool isStatic() const { return mStatic; }
    /// A fast one is followed along its path.
    virtual void setFastMoving(bool on);
    [[nodiscard]] virtual bool isFastMoving() const { return mFastMoving; }
    /// @param filter not owned; null for none
    void setIntersectFilter(HyIntersectFilter* filter);
    [[nodiscard]] HyIntersectFilter* getIntersectFilter() const;
    /// Distance at which contacts begin, m, not negative; that of a pair is the sum.
    void setContactTolerance(HyReal tolerance);
    [[nodiscard]] HyReal getContactTolerance() const;
    /// Row of the request table, not negative.
    /// @param updatePairs give living pairs the new request
    bool setRequestID(int id, bool updatePairs);
    [[nodiscard]] int getRequestID() const;
    /// Row of the response table: one of the ids of HyUniverse. Living pairs end and begin anew.
    void setResponseID(int id);
    [[nodiscard]] int getResponseID() const;

    /// World box and sphere.
    void getBoundingBox(HyVector3& min, HyVector3& max) const;
    void getBoundingSphere(HyVector3& centre, HyReal& radius) const;
    /// Point of the shape farthest along a direction, world.
    [[nodiscard]] virtual HyVector3 getExtremePoint(const HyVector3& direction) const;

    // Where it belongs.

    [[nodiscard]] HyPart* getPart() const { return mPart; }
    /// Its own, or that of the composite it is in.
    [[nodiscard]] HyUniverse* getUniverse() const;
    [[nodiscard]] HyCompositeCollisionGeometry* getParent() const { return mParent; }
    /// The name by which subscribers know it; 0 for none.
    [[nodiscard]] HySequentialID& collisionGeometryID() { return mCollisionGeometryID; }
    [[nodiscard]] const HySequentialID& collisionGeometryID() const { return mCollisionGeometryID; }
    [[nodiscard]] ColModel* getColModel() const { return mColModelID; }
    /// Whether its fields agree; a warning for each that does not.
    [[nodiscard]] bool invariant() const;

    // State.

    /// Owned by the caller.
    [[nodiscard]] HyCollisionGeometryState* createState();
    /// False, and no change, for null and for the state of another one.
    bool restoreState(const HyCollisionGeometryState* state);

    // For parts, composites, universes and shapes.

    void setPart(HyPart* part);
    void setUniverse(HyUniverse* universe);
    void setParent(HyCompositeCollisionGeometry* parent);
    /// Registers the material with its universe's table and uses what that answers.
    virtual void registerMaterial();
    /// Brings the space in line with the settings.
    void updateSpaceProperties();
    void updateBodyProperties();
    /// Decides how the model finds its world transform.
    virtual void updateReferenceFrame();
    virtual void updateAbsoluteTransform();
    /// Its part takes new mass properties.
    void updateMassPropertiesPart();
    /// Tells the universe that collision rules are to look at it again.
    void setDirtyFlag();
    void clearDirtyFlag() { mDirtyFlag = false; }
    [[nodiscard]] bool isDirty() const { return mDirtyFlag; }

protected:
    virtual HyCollisionGeometryState* createStateImpl() const;
    virtual void restoreStateImpl(const HyCollisionGeometryState& state);
    /// What a clone takes besides shape, material and place.
    void copySettings(const HyCollisionGeometry& from);
    /// Takes the model of a composite, made by it.
    void adoptModel(ColModel* model);
    /// Removes the model from the space and answers it; null if there is none.
    ColModel* releaseModel();

private:
    void initModel();
    void disableCollisionsWithPart();
    void enableCollisionsWithPart();
    [[nodiscard]] bool isInPartAtIdentity() const;

    HyTransform mTransform;
    HyTransform mAbsoluteTransform;
    HySmartPtr<HyGeometry> mGeometry;
    HySmartPtr<HyMaterial> mMaterial;
    HySequentialID mCollisionGeometryID;
    HyUniverse* mUniverse = nullptr; ///< null inside a composite
    HyPart* mPart = nullptr;         ///< null inside a composite
    HyCompositeCollisionGeometry* mParent = nullptr;
    ColModel* mColModelID = nullptr;
    // What a model without a shape would forget.
    HyIntersectFilter* mFilter = nullptr;
    HyReal mDensity = 1;
    HyReal mTolerance = -1; ///< below 0: the default
    TemporaryDisabledStatus mTemporarilyDisabledFlag = kNotTemporaryDisabled;
    bool mCollisionEnabled = true;
    bool mMassEnabled = true;
    bool mStatic = false;
    bool mFastMoving = false;
    bool mDirtyFlag = false;
};

} // namespace Hy
