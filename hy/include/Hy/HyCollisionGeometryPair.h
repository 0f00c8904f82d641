#pragma once
#include <Kit/KitApi.h>

struct ColModelPair;

namespace Hy {
class HyCollisionGeometry;

/// Two geometries whose boxes overlap. A view that lies over the pair's record and is never made or
/// deleted; valid from the pair's begin to its end.
class HY_API HyCollisionGeometryPair {
public:
    HyCollisionGeometryPair() = delete;
    HyCollisionGeometryPair(const HyCollisionGeometryPair&) = delete;
    HyCollisionGeometryPair& operator=(const HyCollisionGeometryPair&) = delete;
    ~HyCollisionGeometryPair() = delete;

    /// The view of a record; null for null.
    [[nodiscard]] static HyCollisionGeometryPair* fromColModelPair(ColModelPair* pair);
    [[nodiscard]] ColModelPair* getColModelPair();
    [[nodiscard]] const ColModelPair* getColModelPair() const;

    /// A pointer that the pair stores and never touches.
    void setUserData(void* data);
    [[nodiscard]] void* getUserData() const;
    /// Whether the geometries touched when they were intersected last.
    [[nodiscard]] bool getWasIntersecting() const;
    /// Null where a geometry is gone.
    void getCollisionGeometryPair(HyCollisionGeometry*& g1, HyCollisionGeometry*& g2) const;
};

} // namespace Hy
