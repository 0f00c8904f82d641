#include <Hy/HyInertiaTensor.h>
#include <Kit/KitMatrix3.h>
#include <Kit/KitMessage.h>

#include "HyTensor.h"

#include <algorithm>
#include <cmath>

namespace Hy {

namespace {

/// Below this trace a tensor is no body's, kg m².
constexpr HyReal kLeastTrace = 2.8e-17;
/// Turning a tensor errs by some 1e-16 of its trace, and a lamina lies on the border.
constexpr HyReal kPhysicalSlack = 1e-12;
constexpr int kJacobiSweeps = 35;

bool refuse(bool finite, const char* operation) {
    if (!finite)
        KitWarning(0, "HyInertiaTensor::%s: the numbers must be finite.\n", operation);
    return !finite;
}

/// What the largest principal moment has above the sum of the others, or 0.
HyReal excess(const HyReal moments[3]) {
    const HyReal largest = std::max({moments[0], moments[1], moments[2]});
    return std::max<HyReal>(0, 2 * largest - (moments[0] + moments[1] + moments[2]));
}

} // namespace

HyInertiaTensor::HyInertiaTensor(const HyReal tensor[3][3]) {
    set(tensor);
}

HyInertiaTensor::HyInertiaTensor(HyReal m00, HyReal m01, HyReal m02, HyReal m10, HyReal m11,
                                 HyReal m12, HyReal m20, HyReal m21, HyReal m22) {
    set(m00, m01, m02, m10, m11, m12, m20, m21, m22);
}

HyInertiaTensor::HyInertiaTensor(HyReal m00, HyReal m11, HyReal m22, HyReal m01, HyReal m02,
                                 HyReal m12) {
    set(m00, m11, m22, m01, m02, m12);
}

HyInertiaTensor::HyInertiaTensor(const HyVector3& moments, const HyTransform& axes) {
    set(moments, axes);
}

HyInertiaTensor::HyInertiaTensor(const HyVector3& moments, const HyReal axes[3][3]) {
    set(moments, axes);
}

void HyInertiaTensor::set(const HyReal tensor[3][3]) {
    const HyTensor given(tensor);
    if (!refuse(given.isFinite(), "set"))
        given.copyTo(m);
}

void HyInertiaTensor::set(HyReal m00, HyReal m01, HyReal m02, HyReal m10, HyReal m11, HyReal m12,
                          HyReal m20, HyReal m21, HyReal m22) {
    const KitMatrix3 tensor = {{m00, m01, m02}, {m10, m11, m12}, {m20, m21, m22}};
    set(tensor);
}

void HyInertiaTensor::set(HyReal m00, HyReal m11, HyReal m22, HyReal m01, HyReal m02, HyReal m12) {
    set(m00, m01, m02, m01, m11, m12, m02, m12, m22);
}

void HyInertiaTensor::set(const HyVector3& moments, const HyTransform& axes) {
    set(moments, HyTensor::rowsOf(axes).m);
}

void HyInertiaTensor::set(const HyVector3& moments, const HyReal axes[3][3]) {
    HyTensor tensor;
    for (int i = 0; i < 3; ++i)
        tensor.m[i][i] = moments[i];
    tensor = tensor.rotatedBy(HyTensor(axes));
    tensor.symmetrise();
    set(tensor.m);
}

void HyInertiaTensor::setIdentity() {
    set(1, 1, 1, 0, 0, 0);
}

void HyInertiaTensor::get(HyReal out[3][3]) const {
    HyTensor(m).copyTo(out);
}

// Seen from the reference's axes, Jacobi's method turns each pair of axes by no more than it must.
void HyInertiaTensor::get(HyVector3& moments, HyTransform& axes,
                          const HyTransform& reference) const {
    if (refuse(reference.isFinite(), "get"))
        return;
    const HyTensor rows = HyTensor::rowsOf(reference);
    HyTensor seen = HyTensor(m).rotatedBy(rows.transposed());
    seen.dropVanishingProducts();
    const HyPrincipalMoments principal(seen, kJacobiSweeps);
    HyTransform frame;
    for (int i = 0; i < 3; ++i)
        frame.axis(i) = reference.rotate(HyVector3::constCast(principal.axes.m[i]));
    moments = HyVector3(principal.moments[0], principal.moments[1], principal.moments[2]);
    axes = frame;
}

HyReal HyInertiaTensor::operator()(int i, int j) const {
    if (i < 0 || i > 2 || j < 0 || j > 2) {
        KitWarning(0, "HyInertiaTensor::operator(): the indices must be 0, 1 or 2.\n");
        return 0;
    }
    return m[i][j];
}

void HyInertiaTensor::rotateBy(const HyTransform& frame) {
    rotateBy(HyTensor::rowsOf(frame).m);
}

void HyInertiaTensor::rotateBy(const HyReal rotation[3][3]) {
    const HyTensor rotated = HyTensor(m).rotatedBy(HyTensor(rotation));
    if (!refuse(rotated.isFinite(), "rotateBy"))
        rotated.copyTo(m);
}

// Tests. A comparison that holds for sound values alone also fails for what is not a number.

bool HyInertiaTensor::isValid() const {
    return isSymmetric() && isPhysical();
}

bool HyInertiaTensor::isSymmetric() const {
    const auto equal = [this](int i, int j) {
        return std::abs(m[i][j] - m[j][i]) <= mValidationEpsilon;
    };
    return HyTensor(m).trace() >= kLeastTrace && equal(0, 1) && equal(0, 2) && equal(1, 2);
}

bool HyInertiaTensor::isPositiveDefinite() const {
    const HyReal trace = HyTensor(m).trace();
    if (!(trace >= kLeastTrace))
        return false;
    HyTensor n(m); // leading minors: Sylvester's criterion
    for (auto& row : n.m) {
        for (HyReal& entry : row)
            entry /= trace;
    }
    return n.m[0][0] > 0 && n.m[0][0] * n.m[1][1] - n.m[0][1] * n.m[1][0] > 0 &&
           KitMatrix3Determinant(n.m) > 0;
}

bool HyInertiaTensor::isPhysical() const {
    const HyTensor tensor(m);
    const HyReal trace = tensor.trace();
    if (!(trace >= kLeastTrace))
        return false;
    const HyPrincipalMoments principal(tensor, kJacobiSweeps);
    return excess(principal.moments) <= std::max(mValidationEpsilon, kPhysicalSlack) * trace;
}

void HyInertiaTensor::setValidationEpsilon(HyReal epsilon) {
    mValidationEpsilon = epsilon > 0 ? epsilon : 0;
}

// Repairs

bool HyInertiaTensor::makeValid() {
    makeSymmetric();
    return makePhysical();
}

void HyInertiaTensor::makeSymmetric() {
    HyTensor tensor(m);
    tensor.symmetrise();
    tensor.copyTo(m);
}

bool HyInertiaTensor::makePhysical() {
    const HyPrincipalMoments principal(HyTensor(m), kJacobiSweeps);
    const HyReal* moments = principal.moments;
    const HyReal largest = std::max({moments[0], moments[1], moments[2]});
    if (!(largest > 0))
        return false;
    const HyReal lacking = excess(moments);
    if (lacking <= std::max(mValidationEpsilon, kPhysicalSlack) * HyTensor(m).trace())
        return true;
    const HyReal scale = largest / (largest + lacking);
    for (int i = 0; i < 3; ++i) {
        m[i][i] += lacking;
        for (HyReal& entry : m[i])
            entry *= scale;
    }
    return false;
}

// Boxes

void HyInertiaTensor::unitMassBoxDimensionsToMomentsOfInertia(const HyVector3& dims,
                                                              HyVector3& moments) {
    const HyVector3 squares(dims[0] * dims[0], dims[1] * dims[1], dims[2] * dims[2]);
    moments = HyVector3(squares[1] + squares[2], squares[2] + squares[0], squares[0] + squares[1]);
    moments /= 12;
}

bool HyInertiaTensor::momentsOfInertiaToUnitMassBoxDimensions(const HyVector3& moments,
                                                              HyVector3& dims) {
    const HyReal half = (moments[0] + moments[1] + moments[2]) / 2;
    HyVector3 sides;
    for (int i = 0; i < 3; ++i) {
        if (!(half - moments[i] >= 0))
            return false;
        sides[i] = std::sqrt(12 * (half - moments[i]));
    }
    dims = sides;
    return true;
}

} // namespace Hy
