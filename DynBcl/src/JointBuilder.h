#pragma once
#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncCoordinate.h>
#include <Dync/DyncEndConstraint.h>
#include <Dync/DyncFrames.h>
#include <Dync/DyncRows.h>

/// What every builder begins with, the rows that it has so far, and how it ends.
struct JointBuilder {
    JointBuilder(DynsConstraints* list, DynBaseConstraint* joint,
                 const DyncConstraintParameters* parameters)
        : clist(list), constraint(joint), params(parameters), frames(DyncGetWorldFrames(*joint)),
          factors(DyncFactorsAtNextRow(*list, G)) {}

    DynsConstraints* clist;
    DynBaseConstraint* constraint;
    const DyncConstraintParameters* params;
    DyncWorldFrames frames;
    DyncRowBlock G{};
    DynsInputRowFactors factors;
    int rows = 0;

    [[nodiscard]] const lsVec3& axis(int frame, int k) const { return frames.w[frame].axis(k); }

    void addPosition(const lsVec3& n, int refBody) {
        rows += DyncSetDot2Constraint(&factors, G, rows, frames.d01, n, frames.p, refBody, 1);
    }
    void addRightAngle(const lsVec3& r1, const lsVec3& r2) {
        rows += DyncSetDot1Constraint(&factors, G, rows, r1, r2, 1);
    }
    void addSpherical(int referenceBody) {
        rows += DyncSetSphericalConstraint(&factors, G, rows, frames.w, frames.p, referenceBody, 1);
    }
    void addAxisAlignment() {
        rows += DyncAdd2AxesOrientationRows(*constraint, &factors, G, rows, frames.w);
    }
    void addOrientationLock() {
        rows +=
            DyncSetSphericalLock(&factors, G, rows, DyncGetOrientationLock(*constraint), nullptr);
    }
    void addCoordinate(DyncLimit* limit, int rowLimit = kDynsMaxConstraintRows) {
        rows += DyncAddCoordinate(&factors, G, rows, *constraint, params, frames, limit, rowLimit);
    }
    [[nodiscard]] int end() {
        rows += DyncAddFriction(&factors, G, rows, constraint, params, frames);
        return DyncEndConstraint(clist, constraint, &factors, rows, params);
    }
};
