// Runs one scene in one engine and prints its times and measures, a name and a value a line.
#include "Engine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::string scene, trace, cache;
    Variant variant;
    double cap = 60; // s
    int steps = 0;   ///< 0: the scene's
};

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

double quantile(std::vector<double> values, double share) {
    if (values.empty())
        return 0;
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

void printTimes(const std::vector<double>& times, int asked) {
    double sum = 0;
    for (const double t : times)
        sum += t;
    const std::vector<double> late(times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                                   times.end());
    std::printf("steps %zu\nsteps_asked %d\n", times.size(), asked);
    std::printf("median_ms %.6g\np95_ms %.6g\nmean_ms %.6g\n", quantile(times, 0.5),
                quantile(times, 0.95),
                sum / static_cast<double>(std::max<std::size_t>(times.size(), 1)));
    std::printf("late_median_ms %.6g\n", quantile(late, 0.5));
}

void print(const Results& results) {
    for (const auto& [name, value] : results)
        std::printf("%s %.6g\n", name.c_str(), value);
}

void printVerdict(const Scene& scene, const Results& results, bool cut) {
    const std::string missed = cut ? "cut" : whatIsUnacceptable(scene, results);
    std::printf("acceptable %d\n", missed.empty());
    std::printf("why %s\n", missed.empty() ? "-" : missed.c_str());
}

int runScene(const Scene& scene, const Options& options) {
    const auto built = Clock::now();
    const auto engine = makeEngine(scene, options.variant);
    if (!engine) {
        std::fprintf(stderr, "%s: no such mode for %s\n", engineName(), scene.name.c_str());
        return 2;
    }
    std::printf("build_ms %.6g\n", milliseconds(Clock::now() - built));
    const auto measures = makeMeasures(scene, options.cache);
    std::vector<Motion> motions;
    engine->read(motions);
    for (const auto& measure : measures)
        measure->sample(0, motions);
    std::vector<double> times;
    bool failed = false;
    const auto begin = Clock::now();
    for (int step = 1; step <= scene.steps && !failed; ++step) {
        const auto start = Clock::now();
        engine->step();
        times.push_back(milliseconds(Clock::now() - start));
        engine->observe();
        const bool last =
            step == scene.steps || milliseconds(Clock::now() - begin) > 1000 * options.cap;
        const bool wanted = last || std::any_of(measures.begin(), measures.end(),
                                                [&](const auto& m) { return m->wants(step); });
        if (wanted) {
            engine->read(motions);
            failed = hasFailed(motions);
        }
        if (wanted && !failed)
            for (const auto& measure : measures)
                if (last || measure->wants(step))
                    measure->sample(step, motions);
        if (last)
            break;
    }
    Results results{{"failed", failed}};
    for (const auto& measure : measures)
        measure->report(results);
    printTimes(times, scene.steps);
    std::printf("us_per_body %.6g\n",
                1000 * quantile(times, 0.5) / static_cast<double>(scene.bodies.size()));
    print(results);
    print(engine->counters());
    printVerdict(scene, results, !failed && static_cast<int>(times.size()) < scene.steps);
    return 0;
}

/// Exact pairs that the broad phase did not tell.
int missedPairs(const std::vector<Vec3>& centres, const std::vector<std::pair<int, int>>& told) {
    const std::set<std::pair<int, int>> known(told.begin(), told.end());
    const double reach = 2 * Swarm::kRadius;
    int missed = 0;
    for (std::size_t i = 0; i < centres.size(); ++i)
        for (std::size_t j = i + 1; j < centres.size(); ++j) {
            const Vec3 d = centres[i] - centres[j];
            if (std::abs(d.x) <= reach && std::abs(d.y) <= reach && std::abs(d.z) <= reach)
                missed += !known.count({static_cast<int>(i), static_cast<int>(j)});
        }
    return missed;
}

int runBroad(const Options& options) {
    const auto broad = makeBroadPhase(options.variant);
    if (!broad)
        return 2;
    const Swarm swarm;
    Scene scene;
    scene.name = "broad";
    scene.steps = Swarm::kSteps;
    std::vector<double> times;
    std::vector<Vec3> centres(Swarm::kCount);
    double missed = 0, pairs = 0;
    const auto begin = Clock::now();
    for (int step = 0;
         step < scene.steps && milliseconds(Clock::now() - begin) < 1000 * options.cap; ++step) {
        for (int i = 0; i < Swarm::kCount; ++i)
            centres[static_cast<std::size_t>(i)] = swarm.centre(i, step);
        const auto start = Clock::now();
        const int count = broad->update(centres);
        times.push_back(milliseconds(Clock::now() - start));
        pairs += count;
        if ((step + 1) % 60 == 0)
            missed += missedPairs(centres, broad->pairs());
    }
    const Results results{{"missed", missed}, {"pairs", pairs / static_cast<double>(times.size())}};
    printTimes(times, scene.steps);
    print(results);
    printVerdict(scene, results, static_cast<int>(times.size()) < scene.steps);
    return 0;
}

int runRays(const Scene& scene, const Options& options) {
    constexpr double kWrong = 0.05; // m
    const auto engine = makeEngine(scene, options.variant);
    const std::vector<Segment> segments = raySegments(scene);
    std::vector<double> found(segments.size()), times;
    const auto begin = Clock::now();
    for (int round = 0;
         round < scene.steps && milliseconds(Clock::now() - begin) < 1000 * options.cap; ++round) {
        const auto start = Clock::now();
        if (!engine || !engine->cast(segments, found))
            return 2;
        times.push_back(milliseconds(Clock::now() - start));
    }
    double wrong = 0, worst = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const double truth = nearestHit(scene, segments[i]);
        const double error = truth >= 0 && found[i] >= 0 ? std::abs(truth - found[i]) : 0;
        worst = std::max(worst, error);
        wrong += (truth >= 0) != (found[i] >= 0) || error > kWrong;
    }
    const Results results{{"wrong", wrong}, {"max_dist_err_m", worst}};
    printTimes(times, scene.steps);
    print(results);
    printVerdict(scene, results, static_cast<int>(times.size()) < scene.steps);
    return 0;
}

bool parseVariant(const std::string& text, Variant& variant) {
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t to = std::min(text.find('/', from), text.size());
        const std::string part = text.substr(from, to - from);
        if (part.compare(0, 3, "sub") == 0)
            variant.substeps = std::atoi(part.c_str() + 3);
        else if (part.size() > 1 && part[0] == 't' &&
                 std::isdigit(static_cast<unsigned char>(part[1])))
            variant.threads = std::atoi(part.c_str() + 1);
        else if (part != "default")
            variant.mode = part;
        from = to + 1;
    }
    return variant.substeps > 0 && variant.threads > 0;
}

bool parse(int argc, char** argv, Options& options) {
    if (argc < 2)
        return false;
    options.scene = argv[1];
    for (int i = 2; i + 1 < argc; i += 2) {
        const char* value = argv[i + 1];
        if (std::strcmp(argv[i], "--variant") == 0) {
            if (!parseVariant(value, options.variant))
                return false;
        } else if (std::strcmp(argv[i], "--cap") == 0) {
            options.cap = std::atof(value);
        } else if (std::strcmp(argv[i], "--steps") == 0) {
            options.steps = std::atoi(value);
        } else if (std::strcmp(argv[i], "--trace") == 0) {
            options.trace = value;
        } else if (std::strcmp(argv[i], "--cache") == 0) {
            options.cache = value;
        } else {
            return false;
        }
    }
    return argc % 2 == 0;
}

int usage(const char* program) {
    std::fprintf(stderr,
                 "usage: %s SCENE [--variant MODE/subN/tN] [--cap SECONDS] [--steps N] "
                 "[--cache FOLDER] [--trace FILE]\nscenes:",
                 program);
    for (const std::string& name : sceneNames())
        std::fprintf(stderr, " %s", name.c_str());
    std::fprintf(stderr, "\nmodes of %s: default", engineName());
    for (const std::string& mode : engineModes())
        std::fprintf(stderr, " %s", mode.c_str());
    std::fprintf(stderr, "\n");
    return 2;
}

} // namespace

int run(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options))
        return usage(argv[0]);
    const auto modes = engineModes();
    if (!options.variant.mode.empty() &&
        std::find(modes.begin(), modes.end(), options.variant.mode) == modes.end())
        return usage(argv[0]);
    if (!options.trace.empty() && !recordTrace(options.trace))
        std::fprintf(stderr, "%s records no trace\n", engineName());
    if (options.scene == "broad")
        return runBroad(options);
    Scene scene;
    if (!makeScene(options.scene, scene))
        return usage(argv[0]);
    if (options.scene == "rays")
        return runRays(scene, options);
    if (options.steps > 0)
        scene.steps = std::min(options.steps, scene.steps);
    return runScene(scene, options);
}

} // namespace bench

int main(int argc, char** argv) {
    return bench::run(argc, argv);
}
