#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

#include <cstdint>

struct ColModel;

/// Which body carries the point of a contact: values of ColContact::surfaceIndex.
constexpr std::int16_t kColSurfaceModel1 = 0;
constexpr std::int16_t kColSurfaceModel2 = 1;
/// Neither: the point lies midway.
constexpr std::int16_t kColSurfaceNone = -1;

/// One point of contact between two models, world axes. A plain value, copied by assignment.
struct ColContact {
    lsVec3 position;        ///< on the surface that surfaceIndex names, m
    lsVec3 normal;          ///< unit, from model2 towards model1
    KitReal separation = 0; ///< along the normal, m; negative when the surfaces overlap
    /// Dimensions of the touching features: model1's in the low byte, model2's in the high byte.
    std::int16_t dims = 0;
    std::int16_t surfaceIndex = kColSurfaceNone;
    int indexElement1 = 0; ///< triangle, cell or child of model1's geometry
    int indexElement2 = 0;
    ColModel* model1 = nullptr; ///< for a composite pair the children
    ColModel* model2 = nullptr;
    void* internalData = nullptr; ///< of the generator
};
