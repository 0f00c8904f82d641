#include <Hy/HyUniverse.h>

#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>

// What a universe tells about its contents: what looks unstable, and all of it.

namespace Hy {
namespace {

/// Ratios beyond which a system is badly conditioned for the solver.
constexpr HyReal kMaxInertiaRatio = 10000, kMaxMassRatio = 1000;

bool isDynamic(const HyPart& part) {
    return part.getControl() == HyPart::kControlDynamic;
}

HyReal inertiaRatio(const HyPart& part) {
    HyVector3 moments;
    HyTransform axes;
    part.getOrthogonalInertia(moments, axes);
    const auto [least, greatest] = std::minmax_element(moments.v, moments.v + 3);
    return *greatest / *least;
}

void verifyInertias(const HyUniverse::Parts& parts) {
    for (HyPart* part : parts) {
        if (!isDynamic(*part) || !(inertiaRatio(*part) > kMaxInertiaRatio))
            continue;
        std::fprintf(stderr,
                     "HyUniverse::verifyUniverseContent: part (%s) has high ratio of value in its "
                     "inertia tensor\n",
                     part->getName().c_str());
        std::fprintf(stderr, "   which might cause unstability. Suggested max ratio is %f.\n",
                     kMaxInertiaRatio);
    }
}

void verifyMasses(const HyUniverse::Parts& parts) {
    HyReal least = std::numeric_limits<HyReal>::max(), greatest = 0;
    for (const HyPart* part : parts) {
        if (!isDynamic(*part))
            continue;
        least = std::min(least, part->getMass());
        greatest = std::max(greatest, part->getMass());
    }
    const HyReal ratio = greatest / least; // 0 without a dynamic part
    if (!(ratio > kMaxMassRatio))
        return;
    std::fprintf(stderr,
                 "HyUniverse::verifyUniverseContent: Ratio of max mass on min mass is very large "
                 "(%f)\n",
                 ratio);
    std::fprintf(stderr, "   and might cause unstability. Suggested max ratio is %f.\n",
                 kMaxMassRatio);
}

const char* nameOf(HyPart::EntityControlTypeEnum control) {
    switch (control) {
    case HyPart::kControlAnimated:
        return "animated";
    case HyPart::kControlDynamic:
        return "dynamic";
    case HyPart::kControlStatic:
        return "static";
    }
    return "?";
}

void printVector(std::FILE* file, const char* name, const HyVector3& v) {
    std::fprintf(file, "  %s = (%.17g, %.17g, %.17g)\n", name, v[0], v[1], v[2]);
}

void printMass(std::FILE* file, const HyPart& part) {
    HyReal inertia[3][3];
    part.getInertiaLocal(inertia);
    std::fprintf(file, "  mass = %.17g kg\n", part.getMass());
    printVector(file, "center of mass offset", part.getCOMOffset());
    for (const HyReal* row : inertia)
        printVector(file, "inertia", HyVector3(row));
}

void printSleep(std::FILE* file, const HyPart& part) {
    std::fprintf(file, "  awake = %d, enabled steps = %d\n", part.isDynamicsAwake(),
                 part.getEnabledSteps());
    std::fprintf(
        file,
        "  sleep below = %.17g m/s, %.17g m/s^2, %.17g rad/s, %.17g rad/s^2 after %d "
        "steps\n",
        part.getAutoSleepLinearSpeedThreshold(), part.getAutoSleepLinearAccelerationThreshold(),
        part.getAutoSleepAngularSpeedThreshold(), part.getAutoSleepAngularAccelerationThreshold(),
        part.getAutoSleepStepLiveThreshold());
}

void printPart(std::FILE* file, const HyPart& part) {
    std::fprintf(file, "part %s\n", part.getName().c_str());
    std::fprintf(file, "  control = %s, frozen = %d\n", nameOf(part.getControl()), part.isFrozen());
    const HyTransform& tm = part.getTransform();
    for (int row = 0; row < 4; ++row)
        printVector(file, row < 3 ? "axis" : "position", HyVector3(tm[row]));
    printMass(file, part);
    printVector(file, "linear velocity", part.getLinearVelocity());
    printVector(file, "angular velocity", part.getAngularVelocity());
    printSleep(file, part);
}

void printCounts(std::FILE* file, const HyUniverse::Parts& parts) {
    int dynamic = 0, frozen = 0, asleep = 0;
    for (const HyPart* part : parts) {
        dynamic += isDynamic(*part);
        frozen += part->isFrozen();
        asleep += isDynamic(*part) && !part->isFrozen() && !part->isDynamicsAwake();
    }
    std::fprintf(file, "dynamic part count = %d\n", dynamic);
    std::fprintf(file, "frozen part count = %d\n", frozen);
    std::fprintf(file, "asleep part count = %d\n", asleep);
}

} // namespace

void HyUniverse::verifyUniverseContent() const {
    verifyInertias(mParts);
    verifyMasses(mParts);
}

void HyUniverse::printContent(const char* fileName) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        fileName ? std::fopen(fileName, "w") : nullptr,
        [](std::FILE* f) { return std::fclose(f); });
    if (!file) {
        HyWarning(0, "HyUniverse::printContent: the file must be one that can be written.\n");
        return;
    }
    for (const HyPart* part : mParts)
        printPart(file.get(), *part);
    printCounts(file.get(), mParts);
}

} // namespace Hy
