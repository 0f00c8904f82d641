// Piles of boxes and spheres on the ground.
#include "Scene.h"

namespace bench {
namespace {

Scene& onGround(Scene& scene, double friction) {
    scene.ground = scene.pairs = true;
    scene.friction = friction;
    return scene;
}

/// Turned by up to half a radian about any axis.
Quat slightTurn(Random& random) {
    const Vec3 axis = normed(random.vector(-1, 1));
    return turn(axis, random(0, 0.5));
}

} // namespace

void makePyramid(Scene& scene, int) {
    onGround(scene, 0.5);
    for (int r = 0; r < 20; ++r)
        for (int j = 0; j < 20 - r; ++j)
            scene.add(Shape::box(0.5, 0.5, 0.5), 1, {(j - (19 - r) / 2.0) * 1.05, 0, 0.5 + r});
}

// A grid of slightly turned boxes, layer after layer, of which the first n are there.
static void addHeap(Scene& scene, int n, int side) {
    Random random;
    for (int count = 0; count < n; ++count) {
        const int i = count % side, j = count / side % side, k = count / side / side;
        const double x = (i - (side - 1) / 2.0) * 0.9 + random(-0.01, 0.01);
        const double y = (j - (side - 1) / 2.0) * 0.9 + random(-0.01, 0.01);
        const Quat q = slightTurn(random);
        scene.add(Shape::box(0.25, 0.25, 0.25), 1, {x, y, 1 + 0.9 * k}, q);
    }
}

void makeHeap(Scene& scene, int) {
    onGround(scene, 0.5);
    addHeap(scene, 1000, 10);
}

// The heap in other sizes, thrown closer together so that it becomes one pile.
void makePile(Scene& scene, int bodies) {
    onGround(scene, 0.5);
    addHeap(scene, bodies, static_cast<int>(std::ceil(std::cbrt(bodies))));
    for (Body& body : scene.bodies) {
        body.start.p.x *= 0.6 / 0.9;
        body.start.p.y *= 0.6 / 0.9;
    }
}

void makeTower(Scene& scene, int) {
    onGround(scene, 0.5);
    for (int k = 0; k < 10; ++k)
        scene.add(Shape::box(0.5, 0.5, 0.5), k == 9 ? 1000 : 1, {0, 0, 0.5 + k});
}

void makeSix(Scene& scene, int) {
    onGround(scene, 0);
    Random random;
    for (int k = 0; k < 6; ++k)
        for (int j = 0; j < 6; ++j)
            for (int i = 0; i < 6; ++i) {
                const double x = (i - 2.5) * 1.01 + random(-0.01, 0.01);
                const double y = (j - 2.5) * 1.01 + random(-0.01, 0.01);
                scene.add(Shape::sphere(0.5), 10, {x, y, 0.6 + k});
            }
}

void makeScale(Scene& scene, int bodies) {
    onGround(scene, 0.5);
    scene.steps = 240;
    Random random;
    const int piles = bodies / 5;
    const int side = static_cast<int>(std::ceil(std::sqrt(piles)));
    for (int k = 0; k < piles; ++k)
        for (int j = 0; j < 5; ++j) {
            const double x = (k % side - side / 2.0) * 3 + random(-0.1, 0.1);
            const double y = (k / side - side / 2.0) * 3 + random(-0.1, 0.1);
            const Quat q = slightTurn(random);
            scene.add(Shape::box(0.25, 0.25, 0.25), 1, {x, y, 0.5 + 0.9 * j}, q);
        }
}

void makeWall(Scene& scene, int) {
    onGround(scene, 0.5);
    scene.steps = 120;
    for (int r = 0; r < 50; ++r)
        for (int j = 0; j < 225 - r; ++j)
            scene.add(Shape::box(0.5, 0.25, 0.25), 1,
                      {(j - (224 - r) / 2.0) * 1.01, 0, 0.25 + r / 2.0});
}

} // namespace bench
