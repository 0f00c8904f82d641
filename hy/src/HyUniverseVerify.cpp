#include <Hy/HyUniverse.h>

#include <Hy/ConstraintAccessors.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyPart.h>

#include <Kit/KitMatrix4.h>

#include <algorithm>
#include <cstdio>
#include <limits>

// What looks implausible in parts and constraints, and what may make their simulation unstable, on
// the error stream.

namespace Hy {
namespace {

constexpr HyReal kTransformTolerance = 0.001F;
constexpr HyReal kLeastMass = 1e-6, kGreatestMass = 100000; ///< kg

/// Ratios beyond which a system is badly conditioned for the solver.
constexpr HyReal kMaxInertiaRatio = 10000, kMaxMassRatio = 1000;

/// Where a message says that it comes from.
struct Report {
    const char* tag;
    int level; ///< above 1 also tells what is in order
};

bool isDynamic(const HyPart& part) {
    return part.getControl() == HyPart::kControlDynamic;
}

int verifyPart(const Report& report, const HyPart& part) {
    int problems = 0;
    if (!KitMatrix4IsTM(part.getTransform().m, kTransformTolerance)) {
        std::fprintf(stderr, "%s: entity %s has invalid transformation matrix\n", report.tag,
                     part.getName().c_str());
        ++problems;
    }
    if (part.getMass() < kLeastMass || part.getMass() > kGreatestMass) {
        std::fprintf(stderr, "%s: entity %s has extreme mass\n", report.tag,
                     part.getName().c_str());
        ++problems;
    }
    return problems;
}

int verifyEquations(const Report& report, const HyConstraint& constraint) {
    int problems = 0;
    for (const ConstraintEquation* equation : constraint.getConstraintEquations()) {
        HyReal stiffness, damping, loss;
        bool isRelaxed;
        equation->getRelaxationParameters(stiffness, damping, loss, isRelaxed);
        if (!isRelaxed || stiffness != 0)
            continue;
        std::fprintf(stderr, "%s: constraint %s has relax coord %d with bad stiffness\n",
                     report.tag, constraint.getName().c_str(), equation->getIndex());
        ++problems;
    }
    return problems;
}

int verifyMotor(const Report& report, const HyConstraint& constraint, int i) {
    const char* name = constraint.getName().c_str();
    const HyReal force = constraint.getMotorMaximumForce(i);
    if (report.level > 1)
        std::fprintf(stderr,
                     "%s: constraint %s has motorized coord %d with desired vel %g and maxForce "
                     "%g\n",
                     report.tag, name, i, constraint.getMotorDesiredVelocity(i), force);
    if (force > 0)
        return 0;
    std::fprintf(stderr, "%s: constraint %s has motorized coord %d with bad max force\n",
                 report.tag, name, i);
    return 1;
}

int verifyLock(const Report& report, const HyConstraint& constraint, int i) {
    const char* name = constraint.getName().c_str();
    const HyReal force = constraint.getLockMaximumForce(i);
    if (report.level > 1)
        std::fprintf(stderr,
                     "%s: constraint %s has locked coord %d at pos %g and maxForce %g, curr pos "
                     "is %g\n",
                     report.tag, name, i, constraint.getLockPosition(i), force,
                     constraint.getCoordinateCurrentPosition(i));
    if (force > 0)
        return 0;
    std::fprintf(stderr, "%s: constraint %s has locked coord %d with bad max force\n", report.tag,
                 name, i);
    return 1;
}

int verifyStops(const Report& report, const HyConstraint& constraint, int i) {
    const char* name = constraint.getName().c_str();
    if (!constraint.getLimitsActive(i)) {
        if (report.level >= 2)
            std::fprintf(stderr, "%s: constraint %s has no limit on coord %d \n", report.tag, name,
                         i);
        return 0;
    }
    if (constraint.getLimitPosition(i, HyConstraint::kLimitLower) <
        constraint.getLimitPosition(i, HyConstraint::kLimitUpper))
        return 0;
    std::fprintf(stderr, "%s: constraint %s coord %d has low limit >= upper limit\n", report.tag,
                 name, i);
    return 1;
}

int verifyConstraint(const Report& report, const HyConstraint& constraint) {
    if (!constraint.isEnabled()) {
        std::fprintf(stderr, "%s: constraint %s is disabled\n", report.tag,
                     constraint.getName().c_str());
        return 0;
    }
    int problems = verifyEquations(report, constraint);
    for (int i = 0; i < constraint.getCoordinateCount(); ++i) {
        if (constraint.isMotorized(i))
            problems += verifyMotor(report, constraint, i);
        if (constraint.isLocked(i))
            problems += verifyLock(report, constraint, i);
        problems += verifyStops(report, constraint, i);
    }
    return problems;
}

HyReal inertiaRatio(const HyPart& part) {
    HyVector3 moments;
    HyTransform axes;
    part.getOrthogonalInertia(moments, axes);
    const auto [least, greatest] = std::minmax_element(moments.v, moments.v + 3);
    return *greatest / *least;
}

void verifyInertias(const HyUniverse::Parts& parts) {
    for (const HyPart* part : parts) {
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

void verifyMassesOf(const HyConstraint& constraint, const HyPart& a, const HyPart& b) {
    const auto [light, heavy] = std::minmax({a.getMass(), b.getMass()});
    if (!(heavy / light > kMaxMassRatio))
        return;
    std::fprintf(stderr,
                 "HyUniverse::verifyUniverseContent: constraint %s (between parts %s and %s) has "
                 "high ratio \n",
                 constraint.getName().c_str(), a.getName().c_str(), b.getName().c_str());
    std::fprintf(stderr,
                 "   between its parts' masses which might cause unstability. Suggested max ratio "
                 "is %f.\n",
                 kMaxMassRatio);
}

void verifyMassesOf(const HyConstraint& constraint) {
    for (int j = 1; j < constraint.getMaxPartCount(); ++j)
        for (int i = 0; i < j; ++i) {
            const HyPart *a = constraint.getPart(i), *b = constraint.getPart(j);
            if (a && b && isDynamic(*a) && isDynamic(*b))
                verifyMassesOf(constraint, *a, *b);
        }
}

} // namespace

void HyUniverse::verifyDynamics(const char* tag, int level) const {
    const Report report{tag ? tag : "", level};
    std::fprintf(stderr, "Verifying parts and constraints dynamics:\n");
    int problems = 0;
    for (const HyPart* part : mParts)
        if (isDynamic(*part))
            problems += verifyPart(report, *part);
    for (const HyConstraint* constraint : mConstraints)
        problems += verifyConstraint(report, *constraint);
    std::fprintf(stderr, problems == 0 ? "No problem found.\n\n\n" : "\n\n\n");
}

void HyUniverse::verifyUniverseContent() const {
    verifyInertias(mParts);
    verifyMasses(mParts);
    for (const HyConstraint* constraint : mConstraints)
        verifyMassesOf(*constraint);
}

} // namespace Hy
