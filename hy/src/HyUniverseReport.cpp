#include <Hy/HyUniverse.h>

#include <Hy/HyConstraint.h>
#include <Hy/HyConstraintSolverRegistry.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HySolverParameters.h>

#include <cstdio>
#include <memory>
#include <string>

// What a universe tells about its contents and settings, for people to read.

namespace Hy {
namespace {

bool isDynamic(const HyPart& part) {
    return part.getControl() == HyPart::kControlDynamic;
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

const char* nameOf(HyConstraint::CoordinateControlEnum control) {
    switch (control) {
    case HyConstraint::kControlFree:
        return "free";
    case HyConstraint::kControlMotorized:
        return "motorized";
    case HyConstraint::kControlLocked:
        return "locked";
    }
    return "?";
}

void printAttachment(std::FILE* file, const HyConstraint& constraint, int i) {
    const HyPart* part = constraint.getPart(i);
    HyVector3 primary, secondary;
    constraint.getPartAttachmentAxes(i, primary, secondary);
    std::fprintf(file, "  attachment %d to %s\n", i, part ? part->getName().c_str() : "the world");
    printVector(file, "position", constraint.getPartAttachmentPosition(i));
    printVector(file, "primary axis", primary);
    printVector(file, "secondary axis", secondary);
}

void printCoordinate(std::FILE* file, const HyConstraint& constraint, int i) {
    std::fprintf(file, "  coordinate %d = %.17g, velocity = %.17g, control = %s, force = %.17g\n",
                 i, constraint.getCoordinateCurrentPosition(i), constraint.getCoordinateVelocity(i),
                 nameOf(constraint.getControl(i)), constraint.getCoordinateForce(i));
    if (constraint.isMotorized(i))
        std::fprintf(file, "  motor velocity = %.17g, force from %.17g to %.17g\n",
                     constraint.getMotorDesiredVelocity(i), constraint.getMotorMinimumForce(i),
                     constraint.getMotorMaximumForce(i));
    if (constraint.isLocked(i))
        std::fprintf(file, "  lock position = %.17g, velocity = %.17g, force from %.17g to %.17g\n",
                     constraint.getLockPosition(i), constraint.getLockVelocity(i),
                     constraint.getLockMinimumForce(i), constraint.getLockMaximumForce(i));
    if (constraint.getLimitsActive(i))
        std::fprintf(file, "  limits from %.17g to %.17g\n",
                     constraint.getLimitPosition(i, HyConstraint::kLimitLower),
                     constraint.getLimitPosition(i, HyConstraint::kLimitUpper));
}

void printConstraint(std::FILE* file, const HyConstraint& constraint) {
    std::fprintf(file, "constraint %s (%s)\n", constraint.getName().c_str(),
                 constraint.getClassName());
    std::fprintf(file, "  enabled = %d, acting = %d\n", constraint.isEnabled(),
                 constraint.isEnabledInternal());
    for (int i = 0; i < constraint.getMaxPartCount(); ++i)
        printAttachment(file, constraint, i);
    for (int i = 0; i < constraint.getCoordinateCount(); ++i)
        printCoordinate(file, constraint, i);
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

void printCounts(std::FILE* file, const HyUniverse::Constraints& constraints) {
    int enabled = 0;
    for (const HyConstraint* constraint : constraints)
        enabled += constraint->isEnabledInternal();
    std::fprintf(file, "enabled constraint count = %d\n\n", enabled);
}

std::string nameOfSolver(unsigned id) {
    if (id < 2)
        return id == 0 ? "Std" : "Iterative, blocks by Keller";
    for (const HyConstraintSolverFactory* factory :
         HyConstraintSolverRegistry::instance().getFactories())
        if (HyConstraintSolverRegistry::instance().getId(factory->getName()) == id)
            return factory->getName();
    return "?";
}

void printSolver(std::FILE* file, const HyUniverse& universe) {
    const HyVector3 gravity = universe.getGravity();
    std::fprintf(file, "universe\n");
    printVector(file, "gravity", gravity);
    std::fprintf(file, "  auto sleep = %d, multithreaded = %d\n", universe.getAutoSleep(),
                 universe.getDynamicsMultithreaded());
    std::fprintf(file, "  coupling passes = %d, simultaneous solvers = %d, splitting = %d\n",
                 universe.getSolverMaxCouplingIteration(), universe.getMaxSimultaneousSolverCount(),
                 universe.getSolverPartitionSplitting());
    std::fprintf(file, "  coupling group = %d, secondary size = %d, cross grouping depth = %d\n",
                 universe.getGlobalCouplingSolverGroup(), universe.getPartitionerMaxSecondarySize(),
                 universe.getPartitionerCrossGroupingDepth());
}

void printChoices(std::FILE* file, const HySolverParameters& group) {
    std::fprintf(file, "solver group %d\n", group.getSolverGroup());
    std::fprintf(file, "  constraint solver = %s, iterative from %d rows\n",
                 nameOfSolver(group.getConstraintSolver()).c_str(),
                 group.getIterativeSolverRowThreshold());
    std::fprintf(file, "  stepper model = %d, linear solver = %d, geometric stiffness = %d\n",
                 group.getStepperModel(), group.getLinearSolver(), group.getGeometricStiffness());
    std::fprintf(file,
                 "  strength = %d, cross grouping depth = %d, part count = %d, "
                 "secondary group = %d\n",
                 group.getStrength(), group.getPartitionCrossGroupingDepth(),
                 group.getPartitionPartMaxCount(), group.getSecondarySolverGroup());
}

void printAccuracy(std::FILE* file, const HySolverParameters& group) {
    std::fprintf(file, "  coupling passes = %d\n", group.getConstraintSolverMaxCouplingIteration());
    std::fprintf(file, "  Std passes = %d, tolerance = %.17g\n",
                 group.getConstraintStdSolverMaxIteration(),
                 group.getConstraintStdSolverTolerance());
    std::fprintf(file, "  Iterative passes = %d, tolerance = %.17g\n",
                 group.getConstraintIterativeSolverMaxIteration(),
                 group.getConstraintIterativeSolverTolerance());
    std::fprintf(file, "  scaled box passes = %d, tolerance = %.17g\n",
                 group.getScaleBoxMaxIteration(), group.getScaleBoxTolerance());
    std::fprintf(file, "  linear compliance = %.17g, damping = %.17g, loss = %.17g\n",
                 group.getConstraintLinearCompliance(), group.getConstraintLinearDamping(),
                 group.getConstraintLinearKineticLoss());
    std::fprintf(file, "  angular compliance = %.17g, damping = %.17g, loss = %.17g\n",
                 group.getConstraintAngularCompliance(), group.getConstraintAngularDamping(),
                 group.getConstraintAngularKineticLoss());
}

} // namespace

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
    for (const HyConstraint* constraint : mConstraints)
        printConstraint(file.get(), *constraint);
    printCounts(file.get(), mParts);
    printCounts(file.get(), mConstraints);
    printSolver(file.get(), *this);
    for (int i = 0; i < getSolverParametersCount(); ++i) {
        const HySolverParameters& group = *getSolverParameters(i);
        printChoices(file.get(), group);
        printAccuracy(file.get(), group);
    }
}

} // namespace Hy
