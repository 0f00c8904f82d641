#include "Scene.h"

#include "Rays.h"

#include <cstdlib>

namespace bench {
namespace {

struct Entry {
    const char* name;
    void (*make)(Scene&, int);
    int size; ///< number behind the name where it is part of it, 0 where it stands for all
};

const Entry kTable[] = {
    {"pyramid", makePyramid, -1},   {"heap", makeHeap, -1},       {"tower", makeTower, -1},
    {"six", makeSix, -1},           {"scale", makeScale, 0},      {"wall10k", makeWall, -1},
    {"pile", makePile, 0},          {"rolling", makeRolling, -1}, {"slide", makeSlide, -1},
    {"bounce", makeBounce, -1},     {"tumble", makeTumble, -1},   {"pendulum", makePendulum, -1},
    {"chain", makeChain, 0},        {"crane", makeCrane, -1},     {"net", makeNet, -1},
    {"ragdolls", makeRagdolls, -1}, {"vehicle", makeVehicle, -1}, {"fourbar", makeFourbar, -1},
    {"grasp", makeGrasp, -1},       {"bridge", makeBridge, -1},   {"rays", makeRays, -1},
};

/// The number behind a name, "5k" being 5000; 0 if there is none.
int sizeBehind(const std::string& name, const std::string& stem) {
    if (name.size() <= stem.size() || name.compare(0, stem.size(), stem) != 0)
        return 0;
    char* end = nullptr;
    const long n = std::strtol(name.c_str() + stem.size(), &end, 10);
    const bool thousands = *end == 'k' && end[1] == '\0';
    const long size = thousands ? 1000 * n : *end == '\0' ? n : 0;
    return size > 0 && size <= 1000000 ? static_cast<int>(size) : 0;
}

double squared(double x) {
    return x * x;
}

Vec3 capsuleInertia(double m, double r, double h) {
    const double L = 2 * h, whole = 2 * h + 4 * r / 3; // volumes over pi r^2
    const double mc = m * L / whole, ms = m * (2 * r / 3) / whole;
    const double across =
        mc * (L * L / 12 + r * r / 4) + 2 * ms * (2 * r * r / 5 + L * L / 4 + 3 * L * r / 8);
    return {across, across, mc * r * r / 2 + 2 * ms * 2 * r * r / 5};
}

} // namespace

Vec3 Shape::inertia(double mass) const {
    switch (kind) {
    case ShapeKind::kBox:
        return mass / 3 *
               Vec3{squared(half.y) + squared(half.z), squared(half.x) + squared(half.z),
                    squared(half.x) + squared(half.y)};
    case ShapeKind::kCapsule:
        return capsuleInertia(mass, radius, halfLength);
    case ShapeKind::kCylinder: {
        const double across = mass * (squared(radius) / 4 + squared(halfLength) / 3);
        return {across, across, mass * squared(radius) / 2};
    }
    case ShapeKind::kSphere:
        break;
    }
    const double all = 0.4 * mass * squared(radius);
    return {all, all, all};
}

double Shape::reach() const {
    switch (kind) {
    case ShapeKind::kBox:
        return norm(half);
    case ShapeKind::kCapsule:
        return radius + halfLength;
    case ShapeKind::kCylinder:
        return std::hypot(radius, halfLength);
    case ShapeKind::kSphere:
        break;
    }
    return radius;
}

double Random::operator()() {
    std::uint64_t z = mState += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    z ^= z >> 31;
    return static_cast<double>(z >> 11) * 0x1p-53;
}

Vec3 Random::vector(double a, double b) {
    const double x = (*this)(a, b), y = (*this)(a, b), z = (*this)(a, b);
    return {x, y, z};
}

bool makeScene(const std::string& name, Scene& scene) {
    for (const Entry& entry : kTable) {
        const int size = entry.size == 0 ? sizeBehind(name, entry.name) : 0;
        if (size == 0 && name != entry.name)
            continue;
        if (entry.size == 0 && size == 0)
            return false;
        scene = Scene();
        scene.name = name;
        entry.make(scene, size);
        return true;
    }
    return false;
}

std::vector<std::string> sceneNames() {
    std::vector<std::string> names;
    for (const Entry& entry : kTable)
        names.emplace_back(entry.size == 0 ? std::string(entry.name) + "<N>" : entry.name);
    names.emplace_back("broad");
    return names;
}

} // namespace bench
