#include <Dync/DyncContact.h>

#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncEndConstraint.h>
#include <Dync/DyncSoftness.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

// A contact at x with normal n towards body 0: one row along n, one for each friction axis in use.
//   r_i = x - centre of mass i, sigma = +1 for body 0, -1 for body 1
//   along an axis a:  J = [sigma a, sigma r_i x a]      about it:  J = [0, sigma a]
//   normal: phi = -penetration, -adhesion <= lambda (N, pushes body 0 along n)
//   friction: J v = slide within bounds, so that a surface with a slide is a conveyor
// While the contact sticks, its slip may be integrated and drawn back like a position error
// (a spring that is let go when the contact slides: Cundall and Strack, "A discrete numerical model
// for granular assemblies", 1979).

namespace {

using Material = DyncContactMaterial;

constexpr int kAxes = Material::kFrictionAxisCount;
constexpr int kLinearAxes = 2;
/// Sine, squared, of the angle to the normal below which a direction has no tangent of its own:
/// rounding would turn it by 1e-6 rad.
constexpr KitReal kParallel2 = 1e-20;

struct FrictionFrame {
    lsVec3 n, t1, t2;
    bool isDefault = false; ///< chosen by the normal alone

    [[nodiscard]] const lsVec3& ofAxis(int axis) const {
        if (axis == Material::kFrictionAxisAngularNormal)
            return n;
        return axis == Material::kFrictionAxisLinearPrimary ||
                       axis == Material::kFrictionAxisAngularPrimary
                   ? t1
                   : t2;
    }
};

void setDefaultTangents(FrictionFrame& f) {
    const lsVec3& n = f.n;
    if (std::abs(n[0]) + std::abs(n[2]) > std::abs(n[1]))
        f.t1 = lsVec3(n[2], 0, -n[0]) / std::sqrt(n[0] * n[0] + n[2] * n[2]);
    else
        f.t1 = lsVec3(0, -n[2], n[1]) / std::sqrt(n[1] * n[1] + n[2] * n[2]);
    f.t2 = n.cross(f.t1);
    f.isDefault = true;
}

/// The direction's part in the tangent plane; a direction along the normal gives the default frame.
void setTangentsByDirection(FrictionFrame& f, const lsVec3& d) {
    f.t2 = d.cross(f.n);
    if (!(f.t2.square_norm() > kParallel2 * d.square_norm())) {
        setDefaultTangents(f);
        return;
    }
    f.t2.normalize();
    f.t1 = f.n.cross(f.t2);
    f.t1.normalize();
}

FrictionFrame frictionFrame(const bclContact& contact) {
    FrictionFrame f;
    f.n = lsVec3::constCast(contact.normal);
    const Material& m = contact.params;
    const bool primary = DyncContactHasAxis(m, Material::kFrictionAxisLinearPrimary) ||
                         DyncContactHasAxis(m, Material::kFrictionAxisAngularPrimary);
    const bool secondary = DyncContactHasAxis(m, Material::kFrictionAxisLinearSecondary) ||
                           DyncContactHasAxis(m, Material::kFrictionAxisAngularSecondary);
    if (secondary && (m.options & Material::kOptionDirection) == 0)
        setDefaultTangents(f);
    else if (primary || secondary)
        setTangentsByDirection(f, lsVec3::constCast(contact.direction));
    return f;
}

void setRow(DynsGRow& row, const lsVec3& linear, const lsVec3& angular) {
    for (int k = 0; k < 3; ++k) {
        row[k] = linear[k];
        row[3 + k] = angular[k];
    }
}

/// Rows of the axes in use: axis[row] for row > 0; row[axis], -1 for an axis without row.
struct RowsOfAxes {
    int count = 1;
    int axis[kDyncMaxContactRows] = {-1};
    int row[kAxes] = {-1, -1, -1, -1, -1};

    explicit RowsOfAxes(const Material& material) {
        for (int a = 0; a < kAxes; ++a)
            if (DyncContactHasAxis(material, a)) {
                row[a] = count;
                axis[count++] = a;
            }
    }
};

void setJacobian(const DynContact& contact, const RowsOfAxes& rows, const FrictionFrame& frame,
                 DyncRowBlock& G) {
    for (int slot = 0; slot < 2; ++slot) {
        if (contact.bclH.r[slot] == nullptr)
            continue;
        const KitReal sign = slot == 0 ? 1 : -1;
        const lsVec3 arm =
            lsVec3::constCast(contact.cpos) - lsVec3::constCast((*contact.bclH.r[slot])[3]);
        DynsGRow* const g = G[slot];
        setRow(g[0], sign * frame.n, sign * arm.cross(frame.n));
        for (int row = 1; row < rows.count; ++row) {
            const lsVec3 axis = sign * frame.ofAxis(rows.axis[row]);
            if (rows.axis[row] < kLinearAxes)
                setRow(g[row], axis, arm.cross(axis));
            else
                setRow(g[row], {}, axis);
        }
    }
}

/// J v of a row; a slot without body, or with a frozen one, rests.
KitReal rateOfRow(const DyncConstraintHeader& head, const DyncRowBlock& G, int row) {
    KitReal rate = 0;
    for (int slot = 0; slot < 2; ++slot) {
        const KitVector4* velocity = head.velocity[slot];
        if (velocity == nullptr)
            continue;
        const KitReal* g = G[slot][row];
        for (int k = 0; k < 3; ++k)
            rate += g[k] * velocity[0][k] + g[3 + k] * velocity[1][k];
    }
    return rate;
}

void toFrame(KitVector3 local, const KitVector3 point, const KitMatrix4* tm) {
    const lsVec3& p = lsVec3::constCast(point);
    lsVec3& out = lsVec3::cast(local);
    if (tm == nullptr) {
        out = p;
        return;
    }
    const lsVec3 d = p - lsVec3::constCast((*tm)[3]);
    for (int k = 0; k < 3; ++k)
        out[k] = d.dot(lsVec3::constCast((*tm)[k]));
}

struct ContactRows {
    ContactRows(DynsConstraints* list, DynContact& c, const DyncConstraintParameters& parameters)
        : clist(*list), contact(c), head(c.bclH), material(c.params), params(parameters),
          rows(c.params), factors(DyncFactorsAtNextRow(*list, G)) {}

    DynsConstraints& clist;
    DynContact& contact;
    DyncConstraintHeader& head;
    const Material& material;
    const DyncConstraintParameters& params;
    RowsOfAxes rows;
    DyncRowBlock G; // written where a body is; nothing else is read
    DynsInputRowFactors factors;
    KitReal scale[kAxes] = {1, 1, 1, 1, 1}; ///< of static friction

    void addNormal();
    void addFriction();
    void addRestitution();
    void addSliding();
    void setBounds();

private:
    [[nodiscard]] bool isMatched() const { return (contact.flags & kDynContactMatched) != 0; }
    /// Speed that the row's axis slips by, the slide not counted, m/s.
    [[nodiscard]] KitReal slipOfRow(int row) const {
        return rateOfRow(head, G, row) - factors.v0[row];
    }
    void beginToStickHere();
    void clearSlip() { contact.slip_displacement[0] = contact.slip_displacement[1] = 0; }
    bool setOwnSoftness(int row);
    void fadeSlip(int row, KitReal speed);
    void slide(const KitReal speed[2]);
    void stick(const KitReal speed[2]);
    void integrateSlip(const KitReal speed[2]);
    void raiseToStaticFriction();
};

void ContactRows::beginToStickHere() {
    toFrame(contact.posRel0, contact.cpos, contact.tm0);
    toFrame(contact.posRel1, contact.cpos, contact.tm1);
}

/// Answers false for a row that must bear no force.
bool ContactRows::setOwnSoftness(int row) {
    KitReal surface = contact.surface;
    if (!(surface > 0)) {
        if (row == 0)
            KitWarning(0, "DynBclAddContact: invalid contact surface, the contact surface is reset "
                          "to 1.\n");
        surface = 1;
    }
    const KitReal compliance = std::min(material.compliance / surface, kKitInfinity);
    const KitReal damping = std::min(material.damping * surface, kKitInfinity);
    const DyncSoftness softness = DyncSoftnessFromCompliance(compliance, damping, params.stepsize);
    factors.xepsilon[row] = softness.epsilon;
    factors.xgamma[row] = softness.gamma;
    factors.flags[row] |= kDynsRowOwnSoftness;
    return softness.acts;
}

void ContactRows::addNormal() {
    factors.phi[0] = -contact.penetration;
    factors.v0[0] = 0;
    factors.lower[0] = -material.max_adhesive_force;
    factors.upper[0] = kKitInfinity;
    factors.flags[0] = kDynsRowLinear | kDynsRowPosition;
    if ((material.options & Material::kOptionCompliance) != 0 && !setOwnSoftness(0))
        factors.lower[0] = factors.upper[0] = 0;
}

void ContactRows::addFriction() {
    for (int row = 1; row < rows.count; ++row) {
        const int a = rows.axis[row];
        factors.phi[row] = 0;
        factors.v0[row] = material.slide[a];
        factors.flags[row] =
            (a < kLinearAxes ? kDynsRowLinear : kDynsRowAngular) | kDynsRowVelocity;
        if (material.slip[a] > 0) {
            factors.xepsilon[row] = material.slip[a] * params.h_inv;
            factors.flags[row] |= kDynsRowOwnSoftness;
        }
    }
}

void ContactRows::addRestitution() {
    if (!(material.restitution > 0))
        return;
    const KitReal speed = rateOfRow(head, G, 0);
    if (speed < -material.velThreshold)
        factors.v0[0] = -material.restitution * speed;
}

/// A row that slips faster than the threshold loses its softness with the square of the speed.
void ContactRows::fadeSlip(int row, KitReal speed) {
    const KitReal threshold = contact.slidingVelocityThreshold;
    if (std::abs(speed) > threshold)
        factors.xepsilon[row] *= (threshold / speed) * (threshold / speed);
}

void ContactRows::addSliding() {
    contact.flags &= ~kDynContactTwoAxes;
    const bool primary = rows.row[0] > 0, secondary = rows.row[1] > 0;
    if (primary && secondary) {
        contact.flags |= kDynContactTwoAxes;
        const KitReal speed[2] = {slipOfRow(1), slipOfRow(2)};
        const KitReal threshold = contact.slidingVelocityThreshold;
        if (std::abs(speed[0]) > threshold || std::abs(speed[1]) > threshold)
            slide(speed);
        else
            stick(speed);
        return;
    }
    if (primary || secondary)
        fadeSlip(1, slipOfRow(1));
    if (!isMatched())
        beginToStickHere();
}

void ContactRows::slide(const KitReal speed[2]) {
    clearSlip();
    beginToStickHere();
    fadeSlip(1, speed[0]);
    fadeSlip(2, speed[1]);
}

void ContactRows::stick(const KitReal speed[2]) {
    if (material.mIntegratedSlipDisplacementActivated) {
        integrateSlip(speed);
    } else {
        clearSlip();
        beginToStickHere();
    }
    raiseToStaticFriction();
}

void ContactRows::integrateSlip(const KitReal speed[2]) {
    if (factors.phi[0] > 0 || !isMatched())
        clearSlip();
    if (!isMatched())
        beginToStickHere();
    const bool own = (material.options & Material::kOptionCompliance) != 0;
    for (int k = 0; k < 2; ++k) {
        const int row = 1 + k;
        contact.slip_displacement[k] += params.stepsize * speed[k];
        factors.phi[row] = contact.slip_displacement[k];
        factors.flags[row] =
            (factors.flags[row] & ~(kDynsRowPosition | kDynsRowVelocity | kDynsRowOwnSoftness)) |
            kDynsRowPosition;
        if (own)
            setOwnSoftness(row);
    }
}

// The rows' marks are still those of the last step, which stand for the same axes as long as the
// contact has the same ones.
void ContactRows::raiseToStaticFriction() {
    for (int a = 0; a < kLinearAxes; ++a)
        scale[a] = material.staticFrictionScale[a];
    if (!isMatched())
        return;
    for (int a = kLinearAxes; a < kAxes; ++a)
        if (rows.row[a] > 0 && (head.dynamic_flags[rows.row[a]] & kDyncRowAtBound) == 0)
            scale[a] = material.staticFrictionScale[a];
}

void ContactRows::setBounds() {
    const int first = clist.n_constraint_rows;
    for (int row = 1; row < rows.count; ++row) {
        const int a = rows.axis[row];
        KitReal bound = 0;
        switch (material.model[a]) {
        case Material::kFrictionModelScaledBox:
        case Material::kFrictionModelScaledBoxFast:
            ++clist.use_scaled_box_friction;
            clist.friction_coefficient[first + row] =
                std::max(material.sbCoefficient[a], 0.0) * scale[a];
            clist.reference_normal[first + row] = static_cast<unsigned>(row);
            break;
        default: // the bound is a force by now
            bound = std::min(std::max(0.0, material.boxMaxForce[a] * scale[a]), kKitInfinity);
            break;
        }
        factors.lower[row] = -bound;
        factors.upper[row] = bound;
    }
}

} // namespace

int DyncGetContactJacobian(DynContact* contact, DyncRowBlock& G, lsVec3* v) {
    const FrictionFrame frame = frictionFrame(*contact);
    // A direction that was chosen waits until the normal lets it act again.
    if (frame.isDefault && (contact->params.options & Material::kOptionDirection) == 0)
        lsVec3::cast(contact->direction) = frame.t1;
    const RowsOfAxes rows(contact->params);
    setJacobian(*contact, rows, frame, G);
    if (v != nullptr) {
        v[0] = frame.n;
        v[1] = frame.t1;
        v[2] = frame.t2;
    }
    return rows.count;
}

void DyncContactGetSlipVelocity(const DynBaseConstraint* constraint, KitVector3 v) {
    std::fill(v, v + 3, 0.0);
    if (constraint->bclH.tag != kDynTagContact)
        return;
    const auto& contact = static_cast<const DynContact&>(*constraint);
    const RowsOfAxes rows(contact.params);
    DyncRowBlock G;
    setJacobian(contact, rows, frictionFrame(contact), G);
    v[0] = rateOfRow(contact.bclH, G, 0);
    for (int a = 0; a < kLinearAxes; ++a)
        if (rows.row[a] > 0)
            v[1 + a] = rateOfRow(contact.bclH, G, rows.row[a]);
}

int DyncAddContact(DynsConstraints* clist, DynBaseConstraint* constraint,
                   const DyncConstraintParameters* params) {
    // The last partition that holds the contact builds it: its slip is integrated once a step.
    if (constraint->bclH.gflag != 0)
        return 0;
    auto& contact = static_cast<DynContact&>(*constraint);
    ContactRows b(clist, contact, *params);
    DyncGetContactJacobian(&contact, b.G, nullptr);
    b.addNormal();
    b.addFriction();
    b.addRestitution();
    b.addSliding();
    b.setBounds();
    return DyncEndConstraint(clist, constraint, &b.factors, b.rows.count, params);
}
