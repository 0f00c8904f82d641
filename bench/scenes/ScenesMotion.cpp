// Friction, impact and free motion.
#include "Scene.h"

namespace bench {

void makeRolling(Scene& scene, int) {
    scene.ground = true;
    scene.friction = 0.3;
    scene.steps = 300;
    scene.add(Shape::sphere(0.5), 1, {0, 0, 0.5});
    scene.bodies[0].start.v = 5 * Vec3{std::cos(M_PI / 6), std::sin(M_PI / 6), 0};
}

void makeSlide(Scene& scene, int) {
    scene.ground = true;
    scene.friction = 0.4;
    scene.steps = 180;
    scene.add(Shape::box(0.5, 0.5, 0.1), 1, {0, 0, 0.1});
    scene.bodies[0].start.v = 4 * Vec3{std::cos(M_PI / 4), std::sin(M_PI / 4), 0};
}

void makeBounce(Scene& scene, int) {
    scene.ground = true;
    scene.restitution = 1;
    for (int i = 0; i < 7; ++i)
        for (int j = 0; j < 7; ++j)
            scene.add(Shape::sphere(0.5), 10, {(i - 3) * 2.0, (j - 3) * 2.0, 2.5});
}

void makeTumble(Scene& scene, int) {
    scene.gravity = {};
    scene.add(Shape::box(0.1, 0.2, 0.4), 1, {});
    scene.bodies[0].start.w = {0.1, 5, 0.1};
}

Swarm::Swarm() {
    Random place, motion(777);
    for (int i = 0; i < kCount; ++i)
        mCentres.push_back(place.vector(0, 60));
    for (int i = 0; i < kCount; ++i) {
        mOmegas.push_back(motion.vector(0.5, 2));
        mPhases.push_back(motion.vector(0, 6.2831853));
    }
}

Vec3 Swarm::centre(int i, int step) const {
    const auto k = static_cast<std::size_t>(i);
    const double t = (step + 1) / 60.0;
    const Vec3 &o = mOmegas[k], &f = mPhases[k];
    return mCentres[k] +
           2 * Vec3{std::sin(o.x * t + f.x), std::sin(o.y * t + f.y), std::sin(o.z * t + f.z)};
}

} // namespace bench
