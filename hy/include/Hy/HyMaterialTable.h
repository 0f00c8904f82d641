#pragma once
#include <Hy/HyArray.h>
#include <Hy/HySmartPtr.h>
#include <Hy/HySymmetricTable.h>
#include <Kit/KitApi.h>

#include <memory>
#include <string>

namespace Hy {
class HyContactMaterial;
class HyContactProperties;
class HyMaterial;

/// The materials of one or more universes, by index, and a contact material for each pair of them.
///
/// Material 0, "default", is there from the start, stays, and is what new names begin as. A null
/// material stands for it. Names are unique as long as no material is renamed; a name's restricted
/// characters count as '_' (see HyNameValidation). Is changed between steps only.
class HY_API HyMaterialTable {
public:
    /// How two materials make a contact material; calls its setters, which do not lock it then.
    using MergeMaterialFn = void (*)(const HyMaterial* material1, const HyMaterial* material2,
                                     HyContactMaterial* contactMaterial);

    /// With the default material.
    HyMaterialTable();
    HyMaterialTable(const HyMaterialTable&) = delete;
    HyMaterialTable& operator=(const HyMaterialTable&) = delete;
    ~HyMaterialTable();

    // Materials.

    /// Material 0; null in a table that was cleared without one.
    [[nodiscard]] HyMaterial* getDefaultMaterial() const;
    /// The material of a name; a new one takes the present values of material 0. Null or empty: a
    /// warning, and null.
    HyMaterial* registerMaterial(const char* name);
    /// The table's material that is this one or has its name; else a copy of it that the table
    /// takes. Null for null.
    HyMaterial* registerMaterial(const HyMaterial* material);
    /// Null for an index out of range.
    [[nodiscard]] HyMaterial* getMaterial(int index) const;
    /// The first of this name; null if there is none.
    [[nodiscard]] HyMaterial* getMaterial(const char* name) const;
    [[nodiscard]] int getMaterialCount() const { return static_cast<int>(mMapMaterialToID.size()); }
    /// Takes a material and its contact materials out; those behind it move down by one index.
    /// False, and nothing, for null, a material of another table, material 0, and one in use.
    bool removeMaterial(HyMaterial* material);
    /// Makes sure that there are n materials and a contact material for each pair; new ones have
    /// the values of a new material and names of their own.
    /// @param n up to 16384; out of range: a warning, nothing changes
    void extendContactPropertyTable(int n);
    /// Removes everything.
    /// @param createDefault register "default" again
    void clear(bool createDefault);
    /// Takes over the materials of another table by their names, and the contact materials that are
    /// locked there. Null: a warning; itself: nothing.
    void merge(const HyMaterialTable* other);

    // Contact materials.

    /// Gives a pair the values of a contact material, its rolling resistance and tire model, and
    /// locks it. False, with nothing changed, for a material of another table or a null contact
    /// material.
    bool setContactMaterial(const HyMaterial* material1, const HyMaterial* material2,
                            const HyContactMaterial* contactMaterial);
    /// The contact material of a pair; null for a material of another table.
    [[nodiscard]] HyContactMaterial* getContactMaterial(const HyMaterial* material1,
                                                        const HyMaterial* material2) const;
    /// The same by indices; one out of range is a fatal error.
    [[nodiscard]] HyContactMaterial* getContactMaterial(int index1, int index2) const;
    /// A view in the older form on a pair's contact material, made once and owned by the table; null
    /// for a material of another table.
    HyContactProperties* getContactProperties(const HyMaterial* material1,
                                              const HyMaterial* material2);

    /// Writes materials and contact materials in readable form.
    /// @param filename see DumpFileHelper; null for standard error
    void dump(const char* filename) const;

    // The merge rule, one for all tables.

    /// Merges two materials by the rule in force. Null: a warning, nothing changes.
    static void updateContactMaterial(const HyMaterial* material1, const HyMaterial* material2,
                                      HyContactMaterial* contactMaterial);
    /// Replaces the rule for merges from now on; null restores defaultMergeMaterialFn().
    static void setMergeMaterialFn(MergeMaterialFn fn);
    /// The softer material decides the normal direction, the second one if they are alike, the
    /// larger adhesion holds. On an axis with different models the stronger model brings its
    /// numbers: None, proportional low, proportional high, ScaledBox, ScaledBoxFast, Box, Neutral.
    /// With the same model the smaller bounds and static scale and the larger slip hold. The larger
    /// slide holds in any case.
    static void defaultMergeMaterialFn(const HyMaterial* material1, const HyMaterial* material2,
                                       HyContactMaterial* contactMaterial);

private:
    [[nodiscard]] bool holds(const HyMaterial* material) const;
    [[nodiscard]] int pairIndex(const HyMaterial* material) const;
    [[nodiscard]] HyMaterial* findMaterial(const std::string& validName) const;
    HyMaterial* append(HyMaterial* material);
    void fillMaterialSlots();
    void addContactMaterials();
    void deleteContactMaterials(int index);

    HyArray<HySmartPtr<HyMaterial>> mMapMaterialToID;
    HySymmetricTable<HyContactMaterial*> mContactMaterials; ///< owned, none null between calls
    HyArray<HyContactProperties*> mLegacyContactProperties; ///< owned

    static MergeMaterialFn sMergeMaterialFn;
};

} // namespace Hy
