#pragma once
#include "Vectors.h"

#include <cstdint>
#include <string>
#include <vector>

/// What every engine is told: bodies, joints, surfaces, in SI units with z up.
namespace bench {

enum class ShapeKind { kSphere, kBox, kCapsule, kCylinder };

/// Capsule and cylinder lie along local z.
struct Shape {
    ShapeKind kind = ShapeKind::kSphere;
    Vec3 half;             ///< half sizes of a box
    double radius = 0;     ///< of the others
    double halfLength = 0; ///< of capsule (without its caps) and cylinder

    static Shape sphere(double r) { return {ShapeKind::kSphere, {}, r, 0}; }
    static Shape box(double a, double b, double c) { return {ShapeKind::kBox, {a, b, c}, 0, 0}; }
    static Shape capsule(double r, double h) { return {ShapeKind::kCapsule, {}, r, h}; }
    static Shape cylinder(double r, double h) { return {ShapeKind::kCylinder, {}, r, h}; }

    /// Diagonal of the inertia of a solid, uniform body, kg m².
    [[nodiscard]] Vec3 inertia(double mass) const;
    /// Radius of a sphere about the origin that holds it.
    [[nodiscard]] double reach() const;
};

/// Where a body is and how it moves: centre of mass, world axes.
struct Motion {
    Vec3 p;
    Quat q;
    Vec3 v, w;
};

struct Body {
    Shape shape;
    double mass = 1;
    Motion start;
};

enum class JointKind { kBall, kHinge, kSlider };

/// Its coordinate is the motion of b relative to a, along or about the axis, 0 at the start.
struct Joint {
    static constexpr int kWorld = -1;

    JointKind kind = JointKind::kBall;
    int a = kWorld, b = kWorld; ///< a is a body
    Vec3 anchor, axis;          ///< world, at the start
    bool limited = false;
    double lower = 0, upper = 0; ///< rad
    bool motor = false;
    double speed = 0, bound = 0; ///< rad/s and N m, or m/s and N
};

struct Scene {
    std::string name;
    std::vector<Body> bodies;
    std::vector<Joint> joints;
    bool ground = false; ///< the half space below z = 0
    bool pairs = false;  ///< moving bodies collide, but those that a joint connects
    double friction = 0, restitution = 0;
    Vec3 gravity{0, 0, -9.81};
    double dt = 1.0 / 60;
    int steps = 600;

    int add(const Shape& shape, double mass, const Vec3& p, const Quat& q = {}) {
        bodies.push_back({shape, mass, {p, q, {}, {}}});
        return static_cast<int>(bodies.size()) - 1;
    }
    Joint& join(JointKind kind, int a, int b, const Vec3& anchor, const Vec3& axis = {}) {
        joints.push_back({.kind = kind, .a = a, .b = b, .anchor = anchor, .axis = axis});
        return joints.back();
    }
    [[nodiscard]] bool isLarge() const { return bodies.size() + joints.size() > 150; }
};

/// Random numbers of a scene, the same for every engine.
class Random {
public:
    explicit Random(std::uint64_t seed = 12345) : mState(seed) {}
    /// In [0, 1).
    double operator()();
    double operator()(double a, double b) { return a + (b - a) * (*this)(); }
    /// Three draws of one range, x first.
    Vec3 vector(double a, double b);

private:
    std::uint64_t mState;
};

/// A scene by its name; false if there is none. Names may carry a size: "chain100", "scale5000",
/// "pile300".
bool makeScene(const std::string& name, Scene& scene);
/// The names of the table, in its order.
std::vector<std::string> sceneNames();

// What makeScene() calls. The number is that of the name.

void makePyramid(Scene& scene, int);
void makeHeap(Scene& scene, int);
void makeTower(Scene& scene, int);
void makeSix(Scene& scene, int);
void makeScale(Scene& scene, int bodies);
void makeWall(Scene& scene, int);
void makePile(Scene& scene, int bodies);
void makeRolling(Scene& scene, int);
void makeSlide(Scene& scene, int);
void makeBounce(Scene& scene, int);
void makeTumble(Scene& scene, int);
void makePendulum(Scene& scene, int);
void makeChain(Scene& scene, int links);
void makeCrane(Scene& scene, int);
void makeNet(Scene& scene, int);
void makeRagdolls(Scene& scene, int);
void makeVehicle(Scene& scene, int);
void makeFourbar(Scene& scene, int);
void makeGrasp(Scene& scene, int);
void makeBridge(Scene& scene, int);

/// Sizes that both a scene and its reference need.
struct Cable {
    int links = 0;
    double length = 0, mass = 0;  ///< of a link
    double load = 0, radius = 0;  ///< of the sphere at the end
    double angle = 0;             ///< from the downward vertical towards +x, rad
    double interval = 0, end = 0; ///< of the reference, s
};
[[nodiscard]] Cable cableOf(const std::string& scene);

namespace net {
constexpr int kSide = 20;
constexpr double kSpacing = 0.5, kRadius = 0.02, kMass = 0.2;
/// An edge of the grid from its first node to its second.
struct Edge {
    int i, j, i2, j2;
};
[[nodiscard]] std::vector<Edge> edges();
} // namespace net

namespace bridge {
constexpr int kPlanks = 40;
constexpr double kChord = 0.5, kRadius = 30;
/// A node of the arc; 0 to kPlanks.
[[nodiscard]] Vec3 node(int k);
} // namespace bridge

/// Centres of the spheres of `broad` at a step, and the parameters of their motion.
class Swarm {
public:
    static constexpr int kCount = 5000, kSteps = 300;
    static constexpr double kRadius = 0.5;
    Swarm();
    [[nodiscard]] Vec3 centre(int i, int step) const;

private:
    std::vector<Vec3> mCentres, mOmegas, mPhases;
};

} // namespace bench
