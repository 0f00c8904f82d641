// Mechanisms, chains and nets.
#include "Scene.h"

#include <map>
#include <utility>

namespace bench {
namespace {

constexpr Vec3 kX{1, 0, 0}, kY{0, 1, 0}, kZ{0, 0, 1};
constexpr double kDegree = M_PI / 180;

/// A box between two points of the plane y = 0, local x along it.
int addBar(Scene& scene, const Vec3& p, const Vec3& q) {
    const Vec3 d = q - p;
    const double length = norm(d);
    return scene.add(Shape::box(length / 2, 0.03, 0.03), 2 * length, 0.5 * (p + q),
                     turn(kY, -std::atan2(d.z, d.x)));
}

} // namespace

void makePendulum(Scene& scene, int) {
    scene.add(Shape::box(0.5, 0.05, 0.05), 1, {0.5, 0, 0});
    scene.join(JointKind::kHinge, 0, Joint::kWorld, {}, kY);
}

Cable cableOf(const std::string& scene) {
    if (scene == "crane")
        return {100, 0.2, 0.5, 5000, 0.5, 5 * kDegree, 1, 10};
    return {std::stoi(scene.substr(5)), 0.1, 0.1, 10, 0.2, 30 * kDegree, 0.5, 5};
}

static void addCable(Scene& scene) {
    const Cable cable = cableOf(scene.name);
    const Vec3 d{std::sin(cable.angle), 0, -std::cos(cable.angle)};
    const Quat q = turnZ(d);
    int last = Joint::kWorld;
    for (int k = 0; k < cable.links; ++k) {
        const int link = scene.add(Shape::cylinder(0.02, cable.length / 2), cable.mass,
                                   (k + 0.5) * cable.length * d, q);
        scene.join(JointKind::kBall, link, last, k * cable.length * d);
        last = link;
    }
    const Vec3 end = cable.links * cable.length * d;
    const int load = scene.add(Shape::sphere(cable.radius), cable.load, end);
    scene.join(JointKind::kBall, load, last, end);
}

void makeChain(Scene& scene, int) {
    addCable(scene);
}

void makeCrane(Scene& scene, int) {
    addCable(scene);
}

std::vector<net::Edge> net::edges() {
    std::vector<Edge> all;
    for (int i = 0; i < kSide; ++i)
        for (int j = 0; j < kSide; ++j) {
            if (i + 1 < kSide)
                all.push_back({i, j, i + 1, j});
            if (j + 1 < kSide)
                all.push_back({i, j, i, j + 1});
        }
    return all;
}

void makeNet(Scene& scene, int) {
    scene.steps = 120;
    std::map<std::pair<int, int>, std::vector<int>> rodsAt;
    for (const net::Edge& e : net::edges()) {
        const Vec3 p{e.i * net::kSpacing, e.j * net::kSpacing, 0};
        const Vec3 q{e.i2 * net::kSpacing, e.j2 * net::kSpacing, 0};
        const int rod = scene.add(Shape::cylinder(net::kRadius, net::kSpacing / 2), net::kMass,
                                  0.5 * (p + q), turnZ(normed(q - p)));
        rodsAt[{e.i, e.j}].push_back(rod);
        rodsAt[{e.i2, e.j2}].push_back(rod);
    }
    for (const auto& [node, rods] : rodsAt) {
        const Vec3 at{node.first * net::kSpacing, node.second * net::kSpacing, 0};
        for (std::size_t k = 1; k < rods.size(); ++k)
            scene.join(JointKind::kBall, rods[k], rods[0], at);
        if (node == std::pair(0, 0) || node == std::pair(net::kSide - 1, net::kSide - 1))
            scene.join(JointKind::kBall, rods[0], Joint::kWorld, at);
    }
}

namespace {

/// One figure, given in its own frame.
struct Figure {
    Scene& scene;
    Vec3 at;
    Quat q;

    int add(const Shape& shape, double mass, const Vec3& p) const {
        return scene.add(shape, mass, at + rotate(q, p), q);
    }
    void join(int a, int b, const Vec3& p, double lower, double upper) const {
        Joint& joint = scene.join(JointKind::kHinge, a, b, at + rotate(q, p), rotate(q, kY));
        joint.limited = true;
        joint.lower = lower * kDegree;
        joint.upper = upper * kDegree;
    }
    void build() const {
        const int trunk = add(Shape::box(0.15, 0.10, 0.30), 30, {});
        const int head = add(Shape::sphere(0.11), 5, {0, 0, 0.45});
        join(trunk, head, {0, 0, 0.32}, -40, 40);
        for (const double k : {-1.0, 1.0}) {
            const double arm = 0.22 * k, leg = 0.10 * k;
            const int upperArm = add(Shape::capsule(0.05, 0.10), 2, {0, arm, 0.12});
            const int lowerArm = add(Shape::capsule(0.04, 0.10), 1.5, {0, arm, -0.16});
            const int upperLeg = add(Shape::capsule(0.07, 0.14), 8, {0, leg, -0.55});
            const int lowerLeg = add(Shape::capsule(0.055, 0.14), 4, {0, leg, -1.0});
            join(trunk, upperArm, {0, arm, 0.25}, -120, 60);
            join(upperArm, lowerArm, {0, arm, -0.02}, -120, 5);
            join(trunk, upperLeg, {0, leg, -0.32}, -90, 30);
            join(upperLeg, lowerLeg, {0, leg, -0.78}, -5, 120);
        }
    }
};

} // namespace

void makeRagdolls(Scene& scene, int) {
    scene.ground = true;
    scene.friction = 0.5;
    Random random;
    for (int i = 0; i < 20; ++i)
        for (int j = 0; j < 10; ++j) {
            const double yaw = random(0, 2 * M_PI), roll = random(-0.5, 0.5);
            const double pitch = random(-0.5, 0.5);
            Figure{scene,
                   {(i - 9.5) * 3, (j - 4.5) * 3, 2.2},
                   turn(kZ, yaw) * turn(kX, roll) * turn(kY, pitch)}
                .build();
        }
}

void makeVehicle(Scene& scene, int) {
    scene.ground = true;
    scene.friction = 0.8;
    const int chassis = scene.add(Shape::box(1.5, 0.6, 0.25), 1200, {0, 0, 0.6});
    for (const double x : {-1.1, 1.1})
        for (const double y : {-0.8, 0.8}) {
            const Vec3 at{x, y, 0.35};
            const int wheel = scene.add(Shape::cylinder(0.35, 0.1), 20, at, turnZ(kY));
            Joint& axle = scene.join(JointKind::kHinge, chassis, wheel, at, kY);
            axle.motor = x < 0;
            axle.speed = 30;
            axle.bound = 150;
        }
}

void makeFourbar(Scene& scene, int) {
    scene.steps = 3600;
    const Vec3 A, B{0.5 * std::cos(M_PI / 3), 0, 0.5 * std::sin(M_PI / 3)}, D{1.6, 0, 0};
    const Vec3 BD = D - B;
    const double d = norm(BD), s = (1.5 * 1.5 - 1.2 * 1.2 + d * d) / (2 * d);
    const Vec3 up = Vec3{-BD.z, 0, BD.x} / d;
    const Vec3 C = B + s / d * BD + std::sqrt(1.5 * 1.5 - s * s) * up;
    const int crank = addBar(scene, A, B), coupler = addBar(scene, B, C);
    const int rocker = addBar(scene, C, D);
    Joint& motor = scene.join(JointKind::kHinge, crank, Joint::kWorld, A, kY);
    motor.motor = true;
    motor.speed = -3;
    motor.bound = 1000;
    scene.join(JointKind::kHinge, coupler, crank, B, kY);
    scene.join(JointKind::kHinge, rocker, coupler, C, kY);
    scene.join(JointKind::kHinge, rocker, Joint::kWorld, D, kY);
}

void makeGrasp(Scene& scene, int) {
    scene.pairs = true;
    scene.friction = 0.5;
    scene.add(Shape::box(0.05, 0.05, 0.05), 1, {0, 0, 1});
    for (const double side : {-1.0, 1.0}) {
        const Vec3 at{0.07 * side, 0, 1};
        const int finger = scene.add(Shape::box(0.02, 0.05, 0.05), 0.5, at);
        Joint& rail = scene.join(JointKind::kSlider, finger, Joint::kWorld, at, kX);
        rail.motor = true;
        rail.speed = side < 0 ? 0 : 0.5; // of the world relative to the finger
        rail.bound = side < 0 ? 200 : 20;
    }
}

Vec3 bridge::node(int k) {
    const double step = 2 * std::asin(kChord / 2 / kRadius), end = kPlanks / 2.0 * step;
    const double angle = (k - kPlanks / 2.0) * step;
    return {kRadius * std::sin(angle), 0, kRadius * (std::cos(end) - std::cos(angle))};
}

void makeBridge(Scene& scene, int) {
    scene.pairs = true;
    scene.friction = 0.3;
    for (int k = 0; k < bridge::kPlanks; ++k) {
        const Vec3 p = bridge::node(k), d = bridge::node(k + 1) - p;
        scene.add(Shape::box(0.23, 1.5, 0.05), 25, p + 0.5 * d, turn(kY, -std::atan2(d.z, d.x)));
    }
    for (int k = 0; k <= bridge::kPlanks; ++k)
        for (const double y : {-1.4, 1.4}) {
            const Vec3 at = bridge::node(k) + y * kY;
            if (k == 0)
                scene.join(JointKind::kBall, 0, Joint::kWorld, at);
            else
                scene.join(JointKind::kBall, k - 1, k < bridge::kPlanks ? k : Joint::kWorld, at);
        }
    const Vec3 tangent = normed(bridge::node(4) - bridge::node(2));
    const Vec3 normal{-tangent.z, 0, tangent.x};
    const int box = scene.add(Shape::box(0.6, 0.6, 0.4), 500, bridge::node(3) + 0.47 * normal,
                              turn(kY, -std::atan2(tangent.z, tangent.x)));
    scene.bodies[static_cast<std::size_t>(box)].start.v = 6 * tangent;
}

} // namespace bench
