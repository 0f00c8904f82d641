#pragma once
#include <Hy/HyTransform.h>
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

namespace Hy {

/// An inertia tensor as a value of its own, with tests whether a body can have it, and repairs.
///
/// Moments are in kg m², about one point. A setter that is given something not finite warns and keeps
/// the old tensor; a constructor then gives the zero tensor.
class HY_API HyInertiaTensor {
public:
    /// The zero tensor.
    HyInertiaTensor() = default;
    explicit HyInertiaTensor(const HyReal tensor[3][3]);
    /// Row by row.
    HyInertiaTensor(HyReal m00, HyReal m01, HyReal m02, HyReal m10, HyReal m11, HyReal m12,
                    HyReal m20, HyReal m21, HyReal m22);
    /// Moments, then the off-diagonal entries of both halves.
    HyInertiaTensor(HyReal m00, HyReal m11, HyReal m22, HyReal m01, HyReal m02, HyReal m12);
    /// See set().
    HyInertiaTensor(const HyVector3& moments, const HyTransform& axes);
    HyInertiaTensor(const HyVector3& moments, const HyReal axes[3][3]);

    void set(const HyReal tensor[3][3]);
    void set(HyReal m00, HyReal m01, HyReal m02, HyReal m10, HyReal m11, HyReal m12, HyReal m20,
             HyReal m21, HyReal m22);
    void set(HyReal m00, HyReal m11, HyReal m22, HyReal m01, HyReal m02, HyReal m12);
    /// The tensor of three principal moments; row i of the rotation is the axis of moment i.
    void set(const HyVector3& moments, const HyTransform& axes);
    void set(const HyVector3& moments, const HyReal axes[3][3]);
    void setIdentity();

    void get(HyReal out[3][3]) const;
    /// Principal moments, and their axes as the rotation of a transform without translation. Among
    /// the orders and signs of the axes, and the axes that equal moments leave open, it stays near
    /// the axes of `reference`.
    void get(HyVector3& moments, HyTransform& axes, const HyTransform& reference) const;
    /// Entry in row i and column j, 0 to 2; 0 with a warning for an index out of range.
    [[nodiscard]] HyReal operator()(int i, int j) const;

    /// Expresses the tensor in the parent's axes, given the frame whose axes it is in now.
    void rotateBy(const HyTransform& frame);
    /// The same with the rotation alone: row i is the image of axis i.
    void rotateBy(const HyReal rotation[3][3]);

    /// Symmetric and physical.
    [[nodiscard]] bool isValid() const;
    /// Whether the off-diagonal pairs differ by the validation epsilon at most. As for the tests
    /// below, false if the trace is below 2.8e-17.
    [[nodiscard]] bool isSymmetric() const;
    [[nodiscard]] bool isPositiveDefinite() const;
    /// Whether some body has it: no principal moment is above the sum of the other two, by more than
    /// the trace times the validation epsilon or 1e-12, whichever is larger.
    [[nodiscard]] bool isPhysical() const;
    /// Stores max(epsilon, 0).
    void setValidationEpsilon(HyReal epsilon);

    /// makeSymmetric(), then makePhysical().
    bool makeValid();
    /// Replaces each off-diagonal pair by its mean.
    void makeSymmetric();
    /// Adds to all principal moments what the largest lacks to be the sum of the others, and scales
    /// so that the largest stays. True if the tensor was physical before. Without a positive moment:
    /// false, and no change.
    bool makePhysical();

    /// Principal moments of a solid box of 1 kg with the given sides, m.
    static void unitMassBoxDimensionsToMomentsOfInertia(const HyVector3& dims, HyVector3& moments);
    /// Sides in m of the solid box of 1 kg that has these moments. False, and no change, if a moment
    /// is above the sum of the others.
    static bool momentsOfInertiaToUnitMassBoxDimensions(const HyVector3& moments, HyVector3& dims);

private:
    KitMatrix3 m = {};
    HyReal mValidationEpsilon = 2.8e-17;
};

} // namespace Hy
