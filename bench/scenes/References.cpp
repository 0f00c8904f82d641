#include "References.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace bench {
namespace {

using State = std::vector<double>;

/// One step of the classical Runge-Kutta method; derive(state, rates).
template <typename Derive>
class RungeKutta {
public:
    RungeKutta(std::size_t size, Derive derive) : mDerive(derive) {
        for (State* s : {&mK1, &mK2, &mK3, &mK4, &mMiddle})
            s->resize(size);
    }
    void step(State& y, double h) {
        mDerive(y, mK1);
        mDerive(moved(y, mK1, h / 2), mK2);
        mDerive(moved(y, mK2, h / 2), mK3);
        mDerive(moved(y, mK3, h), mK4);
        for (std::size_t i = 0; i < y.size(); ++i)
            y[i] += h / 6 * (mK1[i] + 2 * mK2[i] + 2 * mK3[i] + mK4[i]);
    }

private:
    const State& moved(const State& y, const State& k, double h) {
        for (std::size_t i = 0; i < y.size(); ++i)
            mMiddle[i] = y[i] + h * k[i];
        return mMiddle;
    }

    Derive mDerive;
    State mK1, mK2, mK3, mK4, mMiddle;
};

/// Step of the cables' references, s. Half of it moves no end by more than 1e-6 m.
constexpr double kCableStep = 2.5e-4;
constexpr double kNetStep = 1.0 / 960;

} // namespace

std::vector<double> pendulumReference(const Scene& scene) {
    constexpr int kFine = 100;
    const Body& body = scene.bodies[0];
    const double r = norm(body.start.p), mgr = -body.mass * scene.gravity.z * r;
    const double inertia = body.shape.inertia(body.mass).y + body.mass * r * r;
    const auto derive = [&](const State& y, State& rate) {
        rate[0] = y[1];
        rate[1] = mgr * std::cos(y[0]) / inertia;
    };
    RungeKutta integrator(2, derive);
    State y{0, 0};
    std::vector<double> angles{0};
    for (int step = 0; step < scene.steps; ++step) {
        for (int k = 0; k < kFine; ++k)
            integrator.step(y, scene.dt / kFine);
        angles.push_back(y[0]);
    }
    return angles;
}

// Cable. Rod k hangs at joint k, has its centre half a length on, and ends at joint k + 1. F_k is the
// force on rod k at joint k, and -F_(k+1) that at its other end. With d = (sin a, -cos a) along the rod
// and e = (cos a, sin a) across, in (x, z):
//   centre   m c'' = F_k - F_(k+1) + m g,     c'' = p_k'' + L/2 (a'' e - a'^2 d)
//   turning  I a'' = -L/2 e.(F_k + F_(k+1))
// so that the ends of a rod accelerate by
//   p_k''     = g + (F_k - F_(k+1))/m - L/2 (a'' e - a'^2 d),
//   p_(k+1)'' = g + (F_k - F_(k+1))/m + L/2 (a'' e - a'^2 d).
// Equal accelerations at each joint, none at joint 0, and p_n'' = g + F_n/M at the load give a block
// tridiagonal system in F_0 .. F_n.

CableDynamics::CableDynamics(const Cable& cable, double gravity)
    : mLinks(cable.links), mLength(cable.length), mMass(cable.mass),
      mInertia(Shape::cylinder(0.02, cable.length / 2).inertia(cable.mass).x), mLoad(cable.load),
      mGravity(gravity) {
    mReduced.resize(static_cast<std::size_t>(mLinks) + 1);
    mForce.resize(static_cast<std::size_t>(mLinks) + 1);
}

void CableDynamics::accelerate(const std::vector<double>& angles, const std::vector<double>& speeds,
                               std::vector<double>& accelerations) {
    const auto n = static_cast<std::size_t>(mLinks);
    const double m1 = 1 / mMass, s = mLength * mLength / (4 * mInertia), half = mLength / 2;
    // Of rod k: near = 1/m + s e e^T couples an end to its own force, far = -1/m + s e e^T to the other.
    const auto rod = [&](std::size_t k, double diagonal) {
        const double ex = std::cos(angles[k]), ez = std::sin(angles[k]);
        return Block{diagonal + s * ex * ex, s * ex * ez, s * ex * ez, diagonal + s * ez * ez};
    };
    const auto inward = [&](std::size_t k) { // L/2 a'^2 d
        const double c = half * speeds[k] * speeds[k];
        return Plane{c * std::sin(angles[k]), -c * std::cos(angles[k])};
    };
    // Row 0: near_0 F_0 + far_0 F_1 = -g - inward_0. Row k: the end of rod k - 1 is the start of rod k.
    Block upper;
    Plane before{};
    for (std::size_t k = 0; k <= n; ++k) {
        Block diagonal;
        Plane right{};
        if (k < n) {
            diagonal = rod(k, m1);
            const Plane in = inward(k);
            right = {-in.x, -in.z};
        } else {
            diagonal.xx = diagonal.zz = 1 / mLoad;
        }
        if (k == 0) {
            right.z += mGravity;
        } else {
            const Block previous = rod(k - 1, m1);
            const Plane in = inward(k - 1);
            diagonal.xx += previous.xx;
            diagonal.xz += previous.xz;
            diagonal.zx += previous.zx;
            diagonal.zz += previous.zz;
            right.x -= in.x;
            right.z -= in.z;
            // Eliminate F_(k-1): the coupling is symmetric, `upper` for both.
            const Block& r = mReduced[k - 1];
            const Block t{upper.xx * r.xx + upper.xz * r.zx, upper.xx * r.xz + upper.xz * r.zz,
                          upper.zx * r.xx + upper.zz * r.zx, upper.zx * r.xz + upper.zz * r.zz};
            diagonal.xx -= t.xx * upper.xx + t.xz * upper.zx;
            diagonal.xz -= t.xx * upper.xz + t.xz * upper.zz;
            diagonal.zx -= t.zx * upper.xx + t.zz * upper.zx;
            diagonal.zz -= t.zx * upper.xz + t.zz * upper.zz;
            right.x -= t.xx * before.x + t.xz * before.z;
            right.z -= t.zx * before.x + t.zz * before.z;
        }
        const double d = 1 / (diagonal.xx * diagonal.zz - diagonal.xz * diagonal.zx);
        mReduced[k] = {diagonal.zz * d, -diagonal.xz * d, -diagonal.zx * d, diagonal.xx * d};
        mForce[k] = before = right;
        if (k < n)
            upper = rod(k, -m1);
    }
    for (std::size_t k = n + 1; k-- > 0;) {
        Plane right = mForce[k];
        if (k < n) {
            const Block far = rod(k, -m1);
            right.x -= far.xx * mForce[k + 1].x + far.xz * mForce[k + 1].z;
            right.z -= far.zx * mForce[k + 1].x + far.zz * mForce[k + 1].z;
        }
        const Block& r = mReduced[k];
        mForce[k] = {r.xx * right.x + r.xz * right.z, r.zx * right.x + r.zz * right.z};
    }
    for (std::size_t k = 0; k < n; ++k)
        accelerations[k] = -half / mInertia *
                           (std::cos(angles[k]) * (mForce[k].x + mForce[k + 1].x) +
                            std::sin(angles[k]) * (mForce[k].z + mForce[k + 1].z));
}

Vec3 CableDynamics::end(const std::vector<double>& angles) const {
    Vec3 p;
    for (std::size_t k = 0; k < static_cast<std::size_t>(mLinks); ++k)
        p += mLength * Vec3{std::sin(angles[k]), 0, -std::cos(angles[k])};
    return p;
}

std::vector<Vec3> cableReference(const Cable& cable, double gravity) {
    CableDynamics dynamics(cable, gravity);
    const auto n = static_cast<std::size_t>(cable.links);
    State angles(n, cable.angle), speeds(n), accelerations(n);
    const auto derive = [&](const State& y, State& rate) {
        std::copy_n(y.begin(), n, angles.begin());
        std::copy_n(y.begin() + static_cast<std::ptrdiff_t>(n), n, speeds.begin());
        dynamics.accelerate(angles, speeds, accelerations);
        std::copy(speeds.begin(), speeds.end(), rate.begin());
        std::copy(accelerations.begin(), accelerations.end(),
                  rate.begin() + static_cast<std::ptrdiff_t>(n));
    };
    RungeKutta integrator(2 * n, derive);
    State y(2 * n, 0);
    std::fill_n(y.begin(), n, cable.angle);
    std::vector<Vec3> ends{dynamics.end(angles)};
    const int samples = static_cast<int>(std::lround(cable.end / cable.interval));
    const int fine = static_cast<int>(std::lround(cable.interval / kCableStep));
    for (int sample = 0; sample < samples; ++sample) {
        for (int k = 0; k < fine; ++k)
            integrator.step(y, cable.interval / fine);
        std::copy_n(y.begin(), n, angles.begin());
        ends.push_back(dynamics.end(angles));
    }
    return ends;
}

// Net. The nodes' positions are the coordinates; a rod between nodes a and b at velocities va and vb has
// the kinetic energy m/8 |va + vb|^2 + I/(2 L^2) |vb - va|^2, a constant form, and its spin about its own
// axis stays zero. 760 lengths are kept by multipliers: with d = xa - xb,
//   d.(aa - ab) = -|va - vb|^2,   a = a_free + M^-1 J^T lambda.
// The scene is symmetric to both diagonals of the grid, and so are the multipliers: one stands for up to
// four rods.

namespace {

/// Cholesky factor of a symmetric positive definite matrix, and solutions with it.
class Cholesky {
public:
    explicit Cholesky(std::size_t n) : mN(n), mL(n * n) {}
    double& at(std::size_t i, std::size_t j) { return mL[i * mN + j]; }
    void factor() {
        for (std::size_t j = 0; j < mN; ++j)
            for (std::size_t i = j; i < mN; ++i) {
                const double sum =
                    at(i, j) - std::inner_product(&at(i, 0), &at(i, 0) + j, &at(j, 0), 0.0);
                at(i, j) = i == j ? std::sqrt(sum) : sum / at(j, j);
            }
    }
    void solve(double* x) {
        for (std::size_t i = 0; i < mN; ++i)
            x[i] = (x[i] - std::inner_product(&at(i, 0), &at(i, 0) + i, x, 0.0)) / at(i, i);
        for (std::size_t i = mN; i-- > 0;) {
            x[i] /= at(i, i);
            for (std::size_t k = 0; k < i; ++k)
                x[k] -= at(i, k) * x[i];
        }
    }

private:
    std::size_t mN;
    std::vector<double> mL;
};

class NetDynamics {
public:
    explicit NetDynamics(double gravity) {
        for (const net::Edge& e : net::edges())
            mRods.push_back({nodeAt(e.i, e.j), nodeAt(e.i2, e.j2)});
        findOrbits();
        invertMasses(gravity);
        coupleRods();
    }
    [[nodiscard]] State start() const {
        State y(6 * kNodes);
        for (std::size_t i = 0; i < kNodes; ++i) {
            y[3 * i] = net::kSpacing * static_cast<double>(i / net::kSide);
            y[3 * i + 1] = net::kSpacing * static_cast<double>(i % net::kSide);
        }
        return y;
    }
    static std::size_t nodeAt(int i, int j) { return static_cast<std::size_t>(i * net::kSide + j); }
    static Vec3 at(const State& y, std::size_t node) {
        return {y[3 * node], y[3 * node + 1], y[3 * node + 2]};
    }

    /// The state as a reference tells it.
    [[nodiscard]] NetSample sample(const State& y, double gravity) const {
        NetSample told{at(y, nodeAt(2, 2)), 0, 0};
        for (const Rod& rod : mRods) {
            const Vec3 va = at(y, kNodes + rod.a), vb = at(y, kNodes + rod.b);
            const Vec3 sum = va + vb, turning = va - vb;
            told.energy += net::kMass / 8 * dot(sum, sum) +
                           turningMass() / 2 * dot(turning, turning) +
                           net::kMass * gravity / 2 * (at(y, rod.a).z + at(y, rod.b).z);
            told.stretch =
                std::max(told.stretch, std::abs(norm(direction(y, rod)) - net::kSpacing));
        }
        return told;
    }

    void derive(const State& y, State& rate) {
        const State lambda = multipliers(y);
        mForce.assign(kNodes, {});
        for (std::size_t r = 0; r < mRods.size(); ++r) {
            const Vec3 f = lambda[mOrbit[r]] * direction(y, r);
            mForce[mRods[r].a] += f;
            mForce[mRods[r].b] -= f;
        }
        for (std::size_t i = 0; i < kNodes; ++i) {
            Vec3 a{0, 0, mFall[i]};
            for (std::size_t j = 0; j < kNodes; ++j)
                a += inverse(i, j) * mForce[j];
            for (std::size_t k = 0; k < 3; ++k)
                rate[3 * i + k] = y[3 * (kNodes + i) + k];
            rate[3 * (kNodes + i)] = a.x;
            rate[3 * (kNodes + i) + 1] = a.y;
            rate[3 * (kNodes + i) + 2] = a.z;
        }
    }

private:
    static constexpr std::size_t kNodes = static_cast<std::size_t>(net::kSide * net::kSide);
    struct Rod {
        std::size_t a, b;
    };

    /// Transverse moment of inertia of a rod over the square of its length, kg.
    static double turningMass() {
        const double L = net::kSpacing;
        return Shape::cylinder(net::kRadius, L / 2).inertia(net::kMass).x / (L * L);
    }
    static Vec3 direction(const State& y, const Rod& rod) { return at(y, rod.a) - at(y, rod.b); }
    [[nodiscard]] Vec3 direction(const State& y, std::size_t r) const {
        return direction(y, mRods[r]);
    }
    [[nodiscard]] double inverse(std::size_t i, std::size_t j) const {
        return mInverse[i * kNodes + j];
    }

    void findOrbits() {
        std::map<std::pair<std::size_t, std::size_t>, std::size_t> index;
        const auto key = [](int i, int j, int i2, int j2) {
            const std::size_t a = nodeAt(i, j), b = nodeAt(i2, j2);
            return std::pair(std::min(a, b), std::max(a, b));
        };
        constexpr int kLast = net::kSide - 1;
        for (const net::Edge& e : net::edges()) {
            const auto mirrored = key(kLast - e.j, kLast - e.i, kLast - e.j2, kLast - e.i2);
            const auto swapped = key(e.j, e.i, e.j2, e.i2);
            const auto both = key(kLast - e.i, kLast - e.j, kLast - e.i2, kLast - e.j2);
            const auto first =
                std::min(std::min(key(e.i, e.j, e.i2, e.j2), mirrored), std::min(swapped, both));
            const auto [place, isNew] = index.emplace(first, index.size());
            if (isNew) {
                mFirstOf.push_back(mOrbit.size());
                mSize.push_back(0);
            }
            mOrbit.push_back(place->second);
            ++mSize[place->second];
        }
    }

    // Of nodes that move; the rows and columns of the two that hold the net stay zero.
    void invertMasses(double gravity) {
        const double m = net::kMass, turning = turningMass();
        Cholesky mass(kNodes);
        State weight(kNodes);
        for (const Rod& rod : mRods) {
            for (const std::size_t i : {rod.a, rod.b}) {
                mass.at(i, i) += m / 4 + turning;
                weight[i] -= m / 2 * gravity;
            }
            mass.at(std::max(rod.a, rod.b), std::min(rod.a, rod.b)) += m / 4 - turning;
        }
        const std::size_t held[] = {0, kNodes - 1};
        for (const std::size_t h : held) {
            for (std::size_t i = 0; i < kNodes; ++i)
                mass.at(std::max(i, h), std::min(i, h)) = i == h;
            weight[h] = 0;
        }
        mass.factor();
        mInverse.assign(kNodes * kNodes, 0);
        for (std::size_t i = 1; i + 1 < kNodes; ++i) {
            mInverse[i * kNodes + i] = 1;
            mass.solve(&mInverse[i * kNodes]);
        }
        mFall = weight;
        mass.solve(mFall.data());
    }

    void coupleRods() {
        mCoupling.resize(mFirstOf.size() * mRods.size());
        for (std::size_t o = 0; o < mFirstOf.size(); ++o)
            for (std::size_t r = 0; r < mRods.size(); ++r) {
                const Rod &p = mRods[mFirstOf[o]], &q = mRods[r];
                mCoupling[o * mRods.size() + r] =
                    inverse(p.a, q.a) - inverse(p.a, q.b) - inverse(p.b, q.a) + inverse(p.b, q.b);
            }
    }

    /// One for each orbit of rods.
    State multipliers(const State& y) {
        const std::size_t n = mFirstOf.size();
        Cholesky system(n);
        State right(n);
        std::vector<Vec3> directions;
        for (const Rod& rod : mRods)
            directions.push_back(direction(y, rod));
        for (std::size_t o = 0; o < n; ++o) {
            const Rod& rod = mRods[mFirstOf[o]];
            const Vec3 d = directions[mFirstOf[o]];
            const Vec3 v = at(y, kNodes + rod.a) - at(y, kNodes + rod.b);
            const double size = mSize[o]; // makes the system symmetric
            for (std::size_t r = 0; r < mRods.size(); ++r)
                system.at(o, mOrbit[r]) +=
                    size * mCoupling[o * mRods.size() + r] * dot(d, directions[r]);
            right[o] = size * (-dot(v, v) - d.z * (mFall[rod.a] - mFall[rod.b]));
        }
        system.factor();
        system.solve(right.data());
        return right;
    }

    std::vector<Rod> mRods;
    std::vector<std::size_t> mOrbit;   ///< of each rod
    std::vector<std::size_t> mFirstOf; ///< a rod of each orbit
    std::vector<double> mSize;         ///< rods of each orbit
    State mInverse, mFall, mCoupling;
    std::vector<Vec3> mForce;
};

} // namespace

std::vector<NetSample> netReference(double gravity) {
    constexpr int kSamples = 4;
    NetDynamics dynamics(gravity);
    State y = dynamics.start();
    const auto derive = [&](const State& s, State& rate) { dynamics.derive(s, rate); };
    RungeKutta integrator(y.size(), derive);
    std::vector<NetSample> samples{dynamics.sample(y, gravity)};
    const int fine = static_cast<int>(std::lround(1.0 / kSamples / kNetStep));
    for (int sample = 0; sample < kSamples; ++sample) {
        for (int k = 0; k < fine; ++k)
            integrator.step(y, 1.0 / kSamples / fine);
        samples.push_back(dynamics.sample(y, gravity));
    }
    return samples;
}

} // namespace bench
