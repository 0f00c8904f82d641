#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyMaterialBase.h>
#include <Hy/HyPointer.h>
#include <Hy/HyRefCount.h>

#include <string>

namespace Hy {
class HyContactMaterial;

/// What one surface brings into its contacts; two of them give a HyContactMaterial.
///
/// Belongs to a HyMaterialTable, which holds one reference to it. Contact materials made from it
/// follow its changes until they are edited themselves.
class HY_API HyMaterial : public HyClass<kHyMaterialClassId, HyMaterialBase, HyRefCount> {
public:
    /// Whether the slip of a sticking contact is summed up and taken back. Of two surfaces the
    /// greater value decides.
    enum IntegratedSlipDisplacement : int {
        kIntegratedSlipDisplacementNeutral = 0, ///< leaves it to the other surface; then off
        kIntegratedSlipDisplacementDeactivated = 1,
        kIntegratedSlipDisplacementActivated = 2,
        kIntegratedSlipDisplacementNever = 3, ///< off, whatever the other surface says
    };

    HyMaterial() = default;
    /// Lets go of the contact materials that were made from it; they keep their values.
    ~HyMaterial() override;
    /// Takes the values of another material; name, index, users, origin and user data stay.
    HyMaterial& operator=(const HyMaterial& other);
    [[nodiscard]] const char* getClassName() const override { return "HyMaterial"; }
    void setName(const char* name) override;
    void updateValue() override;
    void reset() override;
    void dump(const char* filename) const override;

    /// Position in its table, -1 in none.
    [[nodiscard]] int getIndex() const { return mIndex; }

    void setIntegratedSlipDisplacement(IntegratedSlipDisplacement value);
    [[nodiscard]] IntegratedSlipDisplacement getIntegratedSlipDisplacement() const {
        return mIntegratedSlipDisplacement;
    }

    /// Where the material was defined; stored for who loads and saves, and not read.
    void setMaterialOrigin(const std::string& origin, const std::string& filename);
    [[nodiscard]] const std::string& getMaterialOrigin() const { return mMaterialOrigin; }
    [[nodiscard]] const std::string& getMaterialOriginFilename() const {
        return mMaterialOriginFilename;
    }

    /// Notes an object that uses the material, which keeps it in its table. One that registers twice
    /// is noted twice. One that is destroyed counts no more. Null: nothing.
    void registerUsage(HyBase* user);
    /// Drops one note of an object.
    void unregisterUsage(HyBase* user);
    /// The notes in the order of registering; null for an object that is gone.
    [[nodiscard]] const HyArray<HyPointer<HyBase>>& getUsageReferenceList() const {
        return mUsageReferencesList;
    }

private:
    friend class HyContactMaterial;
    friend class HyMaterialTable;

    void _updateDependecies();
    [[nodiscard]] bool isUsed() const;

    int mIndex = -1;
    IntegratedSlipDisplacement mIntegratedSlipDisplacement = kIntegratedSlipDisplacementNeutral;
    HyArray<HyContactMaterial*> mDependencies; ///< made from this material; they enter and leave
    HyArray<HyPointer<HyBase>> mUsageReferencesList;
    std::string mMaterialOrigin;
    std::string mMaterialOriginFilename;
};

} // namespace Hy
