#pragma once
#include "Engine.h"

#include <btBulletDynamicsCommon.h>

namespace bench {

inline btVector3 toBt(const Vec3& v) {
    return {btScalar(v.x), btScalar(v.y), btScalar(v.z)};
}
inline btQuaternion toBt(const Quat& q) {
    return {btScalar(q.x), btScalar(q.y), btScalar(q.z), btScalar(q.w)};
}
inline Vec3 fromBt(const btVector3& v) {
    return {double(v.x()), double(v.y()), double(v.z())};
}
inline Quat fromBt(const btQuaternion& q) {
    return {double(q.w()), double(q.x()), double(q.y()), double(q.z())};
}

/// Shapes, ground and what every world needs.
class BulletParts {
public:
    explicit BulletParts(const Scene& scene);
    [[nodiscard]] btCollisionShape* shape(const Shape& shape);
    /// Its filter and mask, by whether bodies of the scene collide with each other.
    [[nodiscard]] int group() const;
    [[nodiscard]] int mask() const;
    void setSurface(btCollisionObject& object) const;
    /// Adds the ground if the scene has it.
    void addGround(btDynamicsWorld& world);

    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher;
    btDbvtBroadphase broadphase;

private:
    const Scene& mScene;
    std::vector<std::unique_ptr<btCollisionShape>> mShapes;
    std::unique_ptr<btRigidBody> mGround;
};

/// Trees of reduced coordinates; null for a scene without joints, or whose joints slide or form loops.
[[nodiscard]] std::unique_ptr<Engine> makeMultiBodyEngine(const Scene& scene,
                                                          const Variant& variant);

} // namespace bench
