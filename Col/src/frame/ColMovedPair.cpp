#include "ColMovedPair.h"

#include <Col/ColModelFunctions.h>

namespace {
bool isNull(const KitReal* v) {
    return !v || (v[0] == 0 && v[1] == 0 && v[2] == 0);
}
} // namespace

ColMovedPair::ColMovedPair(ColModelPair* original)
    : mOriginal(original), mPair(*original), mModels{*original->model1, *original->model2} {
    for (int i = 0; i < 2; ++i) {
        mModels[i].mGlobalTM = &mTransforms[i];
        mModels[i].mTransformUpdateFn = nullptr;
    }
    mPair.model1 = &mModels[0];
    mPair.model2 = &mModels[1];
}

ColMovedPair::~ColMovedPair() {
    mOriginal->m_cachedData = mPair.m_cachedData;
    mOriginal->m_flags = mPair.m_flags;
}

void ColMovedPair::moveTo(KitReal time) {
    const ColModel* originals[2] = {mOriginal->model1, mOriginal->model2};
    for (int i = 0; i < 2; ++i) {
        const ColModel& original = *originals[i];
        if (mIsPlaced[i])
            continue;
        if (time != 0)
            ColModelExtrapolateTransform(&original, time, &mTransforms[i]);
        else
            mTransforms[i] = *original.mGlobalTM;
        mIsPlaced[i] = isNull(original.linearVelocity) && isNull(original.angularVelocity) &&
                       isNull(original.linearAcceleration);
        lsVec3 minCorner, maxCorner;
        ColGeometryGetAABB(mModels[i].mGeometry, &mTransforms[i], &minCorner, &maxCorner,
                           mModels[i].mBounds);
    }
}

void ColMovedPair::nameOriginals(ColIntersectResult* result) const {
    const auto original = [this](ColModel* m) {
        return m == &mModels[0] ? mOriginal->model1 : m == &mModels[1] ? mOriginal->model2 : m;
    };
    const bool isSimple =
        !ColModelIsComposite(mOriginal->model1) && !ColModelIsComposite(mOriginal->model2);
    for (int i = 0; i < result->contactCount; ++i) {
        ColContact& contact = result->contacts[i];
        contact.model1 = isSimple ? mOriginal->model1 : original(contact.model1);
        contact.model2 = isSimple ? mOriginal->model2 : original(contact.model2);
    }
    result->pair = mOriginal;
}
