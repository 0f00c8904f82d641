#pragma once
#include "Scene.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Measures of quality from poses and velocities alone.
namespace bench {

using Results = std::vector<std::pair<std::string, double>>;

/// One subject of measuring. Sees the state before the first step (step 0) and after those that it wants.
class Measure {
public:
    explicit Measure(int interval) : mInterval(interval) {}
    virtual ~Measure() = default;
    [[nodiscard]] bool wants(int step) const { return step % mInterval == 0; }
    /// @param step steps done
    virtual void sample(int step, const std::vector<Motion>& motions) = 0;
    virtual void report(Results& results) const = 0;

private:
    int mInterval;
};

/// All measures of a scene. References are read from and kept in a folder, if one is given.
[[nodiscard]] std::vector<std::unique_ptr<Measure>> makeMeasures(const Scene& scene,
                                                                 const std::string& cache);

/// Names of the measures that miss what is acceptable, with their values; empty if all are met.
[[nodiscard]] std::string whatIsUnacceptable(const Scene& scene, const Results& results);

// The state as a whole.

[[nodiscard]] bool hasFailed(const std::vector<Motion>& motions);
[[nodiscard]] double kineticEnergy(const Scene& scene, const std::vector<Motion>& motions);
[[nodiscard]] double energy(const Scene& scene, const std::vector<Motion>& motions);
[[nodiscard]] Vec3 angularMomentum(const Body& body, const Motion& motion);

} // namespace bench
