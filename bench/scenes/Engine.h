#pragma once
#include "Measures.h"
#include "Rays.h"
#include "Scene.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What the runner asks of an engine. Each adapter is a program of its own with these functions.
namespace bench {

/// How an engine is run: "mode/subN/tN", the parts in any order and each of them optional.
struct Variant {
    std::string mode; ///< empty for the engine's default
    int substeps = 1, threads = 1;
};

/// A scene in an engine.
class Engine {
public:
    virtual ~Engine() = default;
    /// One time step of the scene; this is what is timed.
    virtual void step() = 0;
    /// In the order of the scene's bodies.
    virtual void read(std::vector<Motion>& motions) = 0;
    /// Distances from the starts to the nearest hits, negative for none, among bodies that have not been
    /// stepped. False if the engine does not serve segments here.
    virtual bool cast(const std::vector<Segment>&, std::vector<double>&) { return false; }
    /// After each step, outside of the measured time: what the engine tells of it.
    virtual void observe() {}
    /// Sums of what observe() saw, over the steps.
    virtual Results counters() { return {}; }
};

/// A broad phase with the spheres of Swarm.
class BroadPhase {
public:
    virtual ~BroadPhase() = default;
    /// Moves, updates, and counts the pairs of overlapping boxes.
    virtual int update(const std::vector<Vec3>& centres) = 0;
    /// The pairs that were counted, the smaller index first.
    virtual std::vector<std::pair<int, int>> pairs() = 0;
};

[[nodiscard]] const char* engineName();
/// Modes of the engine, its default (empty) included.
[[nodiscard]] std::vector<std::string> engineModes();
/// Null for a mode that does not know the scene.
[[nodiscard]] std::unique_ptr<Engine> makeEngine(const Scene& scene, const Variant& variant);
[[nodiscard]] std::unique_ptr<BroadPhase> makeBroadPhase(const Variant& variant);
/// Begins to record a trace; false if the engine has none. It ends with the process.
bool recordTrace(const std::string& path);

} // namespace bench
