#include <Hy/HyUniverse.h>

#include <Hy/ConstraintAccessors.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyPart.h>

#include <Kit/KitMatrix4.h>

#include <cstdio>

// What looks implausible in parts and constraints, on the error stream.

namespace Hy {
namespace {

constexpr HyReal kTransformTolerance = 0.001F;
constexpr HyReal kLeastMass = 1e-6, kGreatestMass = 100000; ///< kg

/// Where a message says that it comes from.
struct Report {
    const char* tag;
    int level; ///< above 1 also tells what is in order
};

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

} // namespace

void HyUniverse::verifyDynamics(const char* tag, int level) const {
    const Report report{tag ? tag : "", level};
    std::fprintf(stderr, "Verifying parts and constraints dynamics:\n");
    int problems = 0;
    for (const HyPart* part : mParts)
        if (part->getControl() == HyPart::kControlDynamic)
            problems += verifyPart(report, *part);
    for (const HyConstraint* constraint : mConstraints)
        problems += verifyConstraint(report, *constraint);
    std::fprintf(stderr, problems == 0 ? "No problem found.\n\n\n" : "\n\n\n");
}

} // namespace Hy
