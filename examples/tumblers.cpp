// Throws a thousand real objects with spin, under gravity and a steady side wind, for ten seconds, and
// compares the flight with the closed form and the tumbling with a fine-step free top.
// Usage: tumblers [objects.csv]
#include "Gallery.h"

#include <Hy/Hy.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using Hy::HyQuaternion;
using Hy::HyVector3;

namespace {

constexpr int kFrames = 600;
constexpr int kObjects = 1000;
constexpr double kGravity = 9.80665; // m/s^2, that of a new universe

struct Object {
    std::string name;
    double mass;       // kg
    HyVector3 inertia; // principal moments about the centre of mass, kg m^2
};

HyVector3 boxInertia(double m, double x, double y, double z) {
    return m / 12 * HyVector3(y * y + z * z, z * z + x * x, x * x + y * y);
}

/// A handle along x with a head at one end, about the common centre of mass.
HyVector3 handleAndHead(double m1, HyVector3 handle, double m2, HyVector3 head, double distance) {
    const double d = m1 * m2 / (m1 + m2) * distance * distance;
    return handle + head + HyVector3(0, d, d);
}

HyVector3 inertiaOf(const std::string& shape, double m, double x, double y, double z) {
    if (shape == "box")
        return boxInertia(m, x, y, z);
    if (shape == "cylinder" || shape == "tube") {
        const double squares = (x * x + y * y) / 4; // of the two radii
        const double across = m / 12 * (3 * squares + z * z);
        return {across, across, m / 2 * squares};
    }
    if (shape == "ball") {
        const double moment = (y > 0 ? 2.0 / 3 : 2.0 / 5) * m * x * x / 4;
        return {moment, moment, moment};
    }
    if (shape == "wrench")
        return handleAndHead(0.7 * m, boxInertia(0.7 * m, x, y / 2, z), 0.3 * m,
                             boxInertia(0.3 * m, y, y, z), x / 2);
    if (shape == "hammer")
        return handleAndHead(0.35 * m, boxInertia(0.35 * m, x, 0.03, 0.02), 0.65 * m,
                             boxInertia(0.65 * m, z, y, z), x / 2);
    // A racket: the head is a hoop in the plane of x and y.
    const double r = y / 2, hoop = 0.55 * m * r * r;
    return handleAndHead(0.45 * m, boxInertia(0.45 * m, x - y, z, z), 0.55 * m,
                         HyVector3(hoop / 2, hoop / 2, hoop), x / 2);
}

std::vector<Object> readObjects(const char* path) {
    std::vector<Object> objects;
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (line.empty() || line[0] == '#' || line.rfind("name,", 0) == 0)
            continue;
        std::istringstream fields(line);
        std::string name, shape;
        double x = 0, y = 0, z = 0, mass = 0;
        char comma = 0;
        std::getline(fields, name, ',');
        std::getline(fields, shape, ',');
        fields >> x >> comma >> y >> comma >> z >> comma >> mass;
        if (!fields || mass <= 0) {
            std::fprintf(stderr, "%s: not an object: %s\n", path, line.c_str());
            continue;
        }
        objects.push_back({name, mass, inertiaOf(shape, mass, x, y, z)});
    }
    return objects;
}

/// A free top in its principal axes: Euler's equations and the orientation, by classical Runge-Kutta.
struct Top {
    HyVector3 inertia, w; // w in body axes, rad/s
    double q[4];          // w, x, y, z

    struct Rate {
        HyVector3 w;
        double q[4];
    };
    [[nodiscard]] Rate rate() const {
        const HyVector3 L(inertia[0] * w[0], inertia[1] * w[1], inertia[2] * w[2]);
        const HyVector3 torque = L.cross(w);
        Rate r;
        r.w = {torque[0] / inertia[0], torque[1] / inertia[1], torque[2] / inertia[2]};
        r.q[0] = -(q[1] * w[0] + q[2] * w[1] + q[3] * w[2]) / 2;
        r.q[1] = (q[0] * w[0] + q[2] * w[2] - q[3] * w[1]) / 2;
        r.q[2] = (q[0] * w[1] + q[3] * w[0] - q[1] * w[2]) / 2;
        r.q[3] = (q[0] * w[2] + q[1] * w[1] - q[2] * w[0]) / 2;
        return r;
    }
    [[nodiscard]] Top after(const Rate& r, double h) const {
        Top next = *this;
        next.w = w + h * r.w;
        for (int k = 0; k < 4; ++k)
            next.q[k] += h * r.q[k];
        return next;
    }
    void step(double h) {
        const Rate a = rate(), b = after(a, h / 2).rate(), c = after(b, h / 2).rate(),
                   d = after(c, h).rate();
        w += h / 6 * (a.w + 2 * b.w + 2 * c.w + d.w);
        for (int k = 0; k < 4; ++k)
            q[k] += h / 6 * (a.q[k] + 2 * b.q[k] + 2 * c.q[k] + d.q[k]);
    }
};

struct Flight {
    Hy::HyPart* part;
    const Object* object;
    HyVector3 start, speed, wind; // m, m/s, N
    HyVector3 angularMomentum;    // at the start
    Top top;                      // fine-step reference
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

/// Angle between the part and its reference, rad.
double angleError(const Flight& f) {
    const HyQuaternion q = f.part->getOrientationQuaternion();
    double dot = 0, norm = 0;
    for (int k = 0; k < 4; ++k) {
        dot += q[k] * f.top.q[k];
        norm += f.top.q[k] * f.top.q[k];
    }
    return 2 * std::acos(std::min(1.0, std::abs(dot) / std::sqrt(norm)));
}

} // namespace

int main(int argc, char** argv) {
    Gallery gallery(argc, argv);
    const std::vector<Object> objects = readObjects(argc > 1 ? argv[1] : "data/objects.csv");
    if (objects.empty()) {
        std::fprintf(stderr, "no objects: run this from examples/, or give the file's path\n");
        return 1;
    }
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    const double h = frame->getTimeStep();

    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> side(-1, 1);
    const auto direction = [&] { return HyVector3(side(random), side(random), side(random)); };
    std::vector<Flight> flights;
    for (int i = 0; i < kObjects; ++i) {
        const Object& object = objects[static_cast<std::size_t>(i) % objects.size()];
        const HyVector3 I = object.inertia;
        const double tensor[3][3] = {{I[0], 0, 0}, {0, I[1], 0}, {0, 0, I[2]}};
        Flight f{};
        f.part = new Hy::HyPart(object.mass);
        f.object = &object;
        f.start = {3.0 * (i % 40), 3.0 * (i / 40), 0};
        f.speed = 3 * direction() + HyVector3(0, 0, 5 * kGravity); // back at the start in 10 s
        f.wind = 0.1 * kGravity * object.mass * HyVector3(side(random), side(random), 0);
        const HyVector3 spin = 4 * direction();
        f.top = {I, spin, {1, 0, 0, 0}};
        f.part->setMassAndInertia(object.mass, tensor);
        universe.addPart(f.part);
        f.part->setPosition(f.start);
        f.part->setLinearVelocity(f.speed);
        f.part->setAngularVelocity(spin);
        f.angularMomentum = f.part->getAngularMomentum();
        flights.push_back(f);
    }

    const auto energy = [&] {
        double sum = 0;
        for (const Flight& f : flights)
            sum += f.part->getKineticEnergy() +
                   f.object->mass * kGravity * f.part->getPosition()[2] -
                   f.wind.dot(f.part->getPosition() - f.start);
        return sum;
    };
    const auto momentum = [&] {
        HyVector3 sum;
        for (const Flight& f : flights)
            sum += f.object->mass * f.part->getLinearVelocity();
        return sum;
    };
    HyVector3 load; // on all objects together, N
    for (const Flight& f : flights)
        load += f.wind - HyVector3(0, 0, f.object->mass * kGravity);

    gallery.channels.add("energy", "J", energy);
    gallery.watch(universe, {.rate = 15});
    std::printf("%d objects of %zu kinds, %d frames of 1/60 s\n", kObjects, objects.size(),
                kFrames);
    std::printf("   t (s)  energy (J)  vertical momentum (N s)  turned wrong by (rad): median, "
                "worst\n");
    const double energyStart = energy();
    const HyVector3 momentumStart = momentum();
    std::vector<double> times;
    for (int n = 1; n <= kFrames; ++n) {
        for (const Flight& f : flights)
            f.part->addForce(f.wind);
        const auto begin = std::chrono::steady_clock::now();
        frame->step();
        const auto end = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double, std::milli>(end - begin).count());
        for (Flight& f : flights)
            for (int k = 0; k < 8; ++k)
                f.top.step(h / 8);
        if (n % 60 != 0)
            continue;
        std::vector<double> angles;
        for (const Flight& f : flights)
            angles.push_back(angleError(f));
        std::printf("%8.1f  %10.2f  %23.3f  %21.4f, %.4f\n", n * h, energy(), momentum()[2],
                    median(angles), *std::max_element(angles.begin(), angles.end()));
    }

    const double t = kFrames * h;
    double farthest = 0, expected = 0, angular = 0;
    for (const Flight& f : flights) {
        const HyVector3 a = f.wind / f.object->mass - HyVector3(0, 0, kGravity);
        const HyVector3 closed = f.start + t * f.speed + t * t / 2 * a;
        farthest = std::max(farthest, (f.part->getPosition() - closed).norm());
        expected = std::max(expected, a.norm() * t * h / 2);
        angular = std::max(angular, (f.part->getAngularMomentum() - f.angularMomentum).norm() /
                                        f.angularMomentum.norm());
    }
    gallery.expect("farthest from the closed form", "m", expected, farthest);
    const HyVector3 p = momentum() - momentumStart - t * load;
    std::printf(
        "\nflight against the closed form: off by %.4f m at most; a semi-implicit step is off"
        " by a t h / 2 = %.4f m\n",
        farthest, expected);
    std::printf("momentum against load x time:    %.2e of it\n", p.norm() / (t * load.norm()));
    std::printf("energy, less the wind's work:    changed by %.2e of it\n",
                energy() / energyStart - 1);
    std::printf("angular momentum:                turned or changed by %.2e of it at most\n",
                angular);
    std::sort(times.begin(), times.end());
    std::printf("step time: median %.3f ms, 95th percentile %.3f ms; %.0f ns an object\n",
                times[times.size() / 2], times[times.size() * 95 / 100],
                times[times.size() / 2] * 1e6 / kObjects);
    Hy::HyFrame::release();
}
