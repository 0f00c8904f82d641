#pragma once
#include "Scene.h"

#include <vector>

/// What a scene does, by fine integration with the classical Runge-Kutta method of order 4 in
/// coordinates that fulfil the joints (pendulum, cable) or keep them to the method's order (net).
namespace bench {

/// Angle of `pendulum` from the horizontal at each of its steps, rad; the first is 0.
[[nodiscard]] std::vector<double> pendulumReference(const Scene& scene);
/// The end of a cable every cable.interval, from 0 on.
[[nodiscard]] std::vector<Vec3> cableReference(const Cable& cable, double gravity);
/// What a reference of `net` knows at one time.
struct NetSample {
    Vec3 node;          ///< (2, 2)
    double energy = 0;  ///< J, 0 at the start
    double stretch = 0; ///< largest change of a rod's length, m
};
/// Every 0.25 s from 0 to 1 s.
[[nodiscard]] std::vector<NetSample> netReference(double gravity);

/// A planar chain of uniform rods in absolute angles from the downward vertical, with a point mass at
/// its end, hung at the origin.
class CableDynamics {
public:
    CableDynamics(const Cable& cable, double gravity);
    /// Angular accelerations from angles and speeds, rad/s². Linear in the number of links: the forces
    /// in the joints follow from a block tridiagonal system.
    void accelerate(const std::vector<double>& angles, const std::vector<double>& speeds,
                    std::vector<double>& accelerations);
    [[nodiscard]] Vec3 end(const std::vector<double>& angles) const;

private:
    struct Plane {
        double x = 0, z = 0;
    };
    struct Block {
        double xx = 0, xz = 0, zx = 0, zz = 0;
    };

    int mLinks;
    double mLength, mMass, mInertia, mLoad, mGravity;
    std::vector<Block> mReduced; ///< of the elimination
    std::vector<Plane> mForce;
};

} // namespace bench
