#pragma once
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HySafeWalk.h>

struct ColCompositeGeometry;

namespace Hy {

/// Placements that act as one, with holes taken out of the solid ones. The children move with it and
/// are owned by it.
class HY_API HyCompositeCollisionGeometry
    : public HyClass<kHyCompositeCollisionGeometryClassId, HyCollisionGeometry> {
public:
    using CollisionGeometries = HyWalkedObjects<HyCollisionGeometry>;

    HyCompositeCollisionGeometry();
    ~HyCompositeCollisionGeometry() override;
    [[nodiscard]] const char* getClassName() const override {
        return "HyCompositeCollisionGeometry";
    }
    [[nodiscard]] HyCompositeCollisionGeometry* clone(bool deep) const override;

    // Children.

    /// Takes a child out of its composite, part and universe. False for null, one that is here, and,
    /// with a warning, a composite that this one is inside of.
    bool addCollisionGeometry(HyCollisionGeometry* child);
    /// Gives a child back to the caller; null if it is not here.
    HyCollisionGeometry* removeCollisionGeometry(HyCollisionGeometry* child);
    void destroyCollisionGeometry(HyCollisionGeometry* child);
    void destroyCollisionGeometries();
    /// In the order of creation.
    [[nodiscard]] const CollisionGeometries& getCollisionGeometries() const {
        return mCollisionGeometries;
    }
    /// Whether a geometry is this one, or inside of it.
    [[nodiscard]] bool isAncestorOf(const HyCollisionGeometry* geometry) const;

    // Forwarded to the children. A composite has no shape and no material of its own.

    void setGeometry(HyGeometry* geometry) override;
    [[nodiscard]] HyGeometry* getGeometry() const override { return nullptr; }
    void setMaterial(HyMaterial* material) override;
    [[nodiscard]] HyMaterial* getMaterial() const override { return nullptr; }
    [[nodiscard]] HyMaterial* getMaterial(int) const override { return nullptr; }
    void registerMaterial() override;
    void setRelativeDensity(HyReal density) override;
    bool computeMassPropertiesFromDensity(HyMassProperties& properties) const override;
    [[nodiscard]] HyVector3 getCOM() const override;
    [[nodiscard]] HyVector3 getExtremePoint(const HyVector3& direction) const override;
    void setStatic(bool on) override;
    void setFastMoving(bool on) override;
    void updateReferenceFrame() override;
    void updateAbsoluteTransform() override;

    // For children.

    /// The child's model joins or leaves those of the composite.
    void attachModel(HyCollisionGeometry& child);
    void detachModel(HyCollisionGeometry& child);
    /// A child has another setting.
    void childChanged();
    /// A child has another size or place.
    void childMoved();

protected:
    HyCollisionGeometryState* createStateImpl() const override;
    void restoreStateImpl(const HyCollisionGeometryState& state) override;

private:
    CollisionGeometries mCollisionGeometries;
    ColCompositeGeometry* mComposite = nullptr; ///< owned
    bool mForwarding = false;                   ///< a setting is on its way to all children
};

} // namespace Hy
