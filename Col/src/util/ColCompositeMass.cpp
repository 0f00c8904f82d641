#include <Col/ColCompositeGeometry.h>
#include <Col/ColModelFunctions.h>
#include "ColCompositeChild.h"

#include <cmath>
#include <span>

namespace {
/// Adds the tensor of a point mass at r: m (|r|^2 E - r r^T).
void addPointMass(KitMatrix3 inertia, KitReal mass, const lsVec3& r) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inertia[i][j] += mass * ((i == j ? r.square_norm() : 0) - r[i] * r[j]);
}

/// Sum over models in the frame that their relative transforms refer to. False without mass.
bool sumMass(std::span<ColModel* const> models, ColMassProperties* out) {
    ColMassProperties sum;
    lsVec3 moment;
    for (const ColModel* model : models) {
        ColMassProperties part;
        if (!model || !model->mGeometry || !ColModelGetMassProperties(model, &part))
            continue;
        sum.mass += part.mass;
        moment.addMultiple(part.mass, part.centre);
    }
    if (!(sum.mass > 0) || !std::isfinite(sum.mass))
        return false;
    sum.centre = moment / sum.mass;
    for (const ColModel* model : models) {
        ColMassProperties part;
        if (!model || !model->mGeometry || !ColModelGetMassProperties(model, &part))
            continue;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                sum.inertia[i][j] += part.inertia[i][j];
        addPointMass(sum.inertia, part.mass, part.centre - sum.centre);
    }
    *out = sum;
    return true;
}

/// Volume of the solids alone, whatever their densities.
KitReal volumeOf(const ColModel* model) {
    if (!model || !model->mGeometry)
        return 0;
    if (!ColModelIsComposite(model)) {
        ColMassProperties p;
        return ColGeometryGetMassProperties(model->mGeometry, &p) ? p.mass : 0;
    }
    KitReal sum = 0;
    for (const ColModel* child : ColCompositeOf(model->mGeometry).mElements)
        sum += volumeOf(child);
    return sum;
}
} // namespace

bool ColCompositeGetMassProperties(const ColGeometry* g, ColMassProperties* out) {
    return sumMass(ColCompositeOf(g).mElements, out);
}

bool ColGetMassPropertiesAndMassFromModelList(ColModel* const* models, int count, lsTransform* com,
                                              KitMatrix3 inertia, KitReal* volume, KitReal* mass) {
    const std::span<ColModel* const> all(models,
                                         models && count > 0 ? static_cast<std::size_t>(count) : 0);
    *volume = *mass = 0;
    ColMassProperties sum;
    if (!sumMass(all, &sum))
        return false;
    for (const ColModel* model : all)
        *volume += volumeOf(model);
    *mass = sum.mass;
    com->setIdentity();
    com->t() = sum.centre;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inertia[i][j] = sum.inertia[i][j] / sum.mass;
    return true;
}
