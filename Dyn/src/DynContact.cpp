#include <Dyn/DynContact.h>

#include "DynConstraintInternal.h"

#include <Dync/DyncContact.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMessage.h>
#include <Kit/lsVec3.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// Squared lengths nearer to 1 than this need no normalising: rounding of a few operations.
constexpr KitReal kUnitTolerance = 1e-14;
/// Least squared sine between axis and normal, or cosine in the parallel form, for a direction.
constexpr KitReal kMinDirection2 = 0.1;

bool refuse(const char* function, const char* what) {
    KitWarning(12, "%s: %s.\n", function, what);
    return false;
}

bool isFinite(const KitReal* v, const char* function) {
    return KitVector3IsFinite(v) || refuse(function, "the vector must be finite");
}

bool isFinite(KitReal value, const char* function) {
    return std::isfinite(value) || refuse(function, "the value must be finite");
}

bool isDirection(const KitReal* v, const char* function) {
    const KitReal squared = KitVector3Dot(v, v);
    return (squared > 0 && std::isfinite(squared)) ||
           refuse(function, "the vector must be finite and not zero");
}

void bindSlot(DynBaseConstraint* constraint, int slot, DynBody* body) {
    DynConstraintBindSlot(constraint, slot, body);
    auto* contact = static_cast<DynContact*>(constraint);
    const KitMatrix4*& frame = slot == 0 ? contact->tm0 : contact->tm1;
    frame = body ? &body->bodyTM : nullptr;
}

// A contact's one axis is its normal.
void setAxis(DynBaseConstraint* constraint, int, const KitVector3 primary, const KitVector3) {
    DynContactSetNormal(static_cast<DynContact*>(constraint), primary);
}

void takeContactFunctions(DynContact* contact) {
    contact->set1BodyFunc = bindSlot;
    contact->setAxisFunc = setAxis;
}

// Neither attachments nor coordinates depend on the bodies of a contact, and nothing is linked yet.
void replaceBodies(DynContact* contact, DynBody* const bodies[2]) {
    contact->edge_data = {};
    contact->bclH.bodySeenAsKinematic = contact->bclH.strongestBody = nullptr;
    contact->bclH.strongestSolverBody = nullptr;
    for (int slot = 0; slot < 2; ++slot) {
        DynConstraintLetBodyGo(contact, slot);
        contact->body[slot] = bodies[slot];
        DynConstraintHoldBody(contact, slot);
        bindSlot(contact, slot, bodies[slot]);
    }
}

template <class Direction>
void aimContacts(DynBaseConstraint* first, const DynBody* body, const void* data,
                 Direction direction) {
    if (!first || first->bclH.tag != kDynTagContact || !data)
        return;
    const auto* axis = static_cast<const KitReal*>(data);
    lsVec3 a;
    for (int k = 0; k < 3; ++k)
        a.addMultiple(axis[k], lsVec3::constCast(body->bodyTM[k]));
    for (auto* contact = static_cast<DynContact*>(first); contact; contact = contact->nextContact) {
        lsVec3 d = direction(lsVec3::constCast(contact->normal), a);
        if (!(d.square_norm() > kMinDirection2))
            continue;
        d.normalize();
        DynContactSetDirection(contact, d.v);
    }
}

} // namespace

// Life.

DynContact* DynContactCreate(DynWorld* world) {
    if (!world) {
        refuse("DynContactCreate", "the world must not be null");
        return nullptr;
    }
    auto* contact =
        static_cast<DynContact*>(DynConstraintCreateInPool(world->constraintPool, kDynTagContact));
    if (!contact)
        return nullptr;
    takeContactFunctions(contact);
    DynWorldInsertConstraint(world, contact);
    return contact;
}

bool DynContactDestroy(DynContact* contact) {
    return DynConstraintDestroy(contact);
}

void DynContactReset(DynContact* contact) {
    DynConstraintReset(contact);
    if (!DynConstraintIsEnabled(contact))
        takeContactFunctions(contact);
}

// State.

void DynContactSetBodies(DynContact* contact, DynBody* body0, DynBody* body1) {
    DynBody* const bodies[2] = {body0, body1};
    if (!DynConstraintIsEnabled(contact)) {
        replaceBodies(contact, bodies);
        return;
    }
    for (int slot = 0; slot < 2; ++slot)
        contact->setBodyFunc(contact, slot, bodies[slot]);
}

void DynContactSetPosition(DynContact* contact, const KitVector3 position) {
    if (isFinite(position, "DynContactSetPosition"))
        KitVector3Copy(contact->cpos, position);
}

void DynContactSetNormal(DynContact* contact, const KitVector3 normal) {
    if (!isDirection(normal, "DynContactSetNormal"))
        return;
    KitVector3Copy(contact->normal, normal);
    if (std::abs(KitVector3Dot(normal, normal) - 1) > kUnitTolerance)
        KitVector3Normalize(contact->normal);
}

void DynContactSetDirection(DynContact* contact, const KitVector3 direction) {
    if (!isDirection(direction, "DynContactSetDirection"))
        return;
    KitVector3Copy(contact->direction, direction);
    contact->params.options |= DyncContactMaterial::kOptionDirection;
}

void DynContactSetPenetration(DynContact* contact, KitReal penetration) {
    if (isFinite(penetration, "DynContactSetPenetration"))
        contact->penetration = penetration;
}

void DynContactSetSurface(DynContact* contact, KitReal surface) {
    if (isFinite(surface, "DynContactSetSurface"))
        contact->surface = surface;
}

void DynContactSetParams(DynContact* contact, const DyncContactMaterial* material,
                         const char* name) {
    if (!material) {
        refuse("DynContactSetParams", "the material must not be null");
        return;
    }
    contact->params = *material;
    contact->contactMaterialName = name;
}

void DynContactSetWeakContact(DynContact* contact, int weak) {
    if (weak < kDynWeakNever || weak > kDynWeakAlways) {
        refuse("DynContactSetWeakContact", "the value must be 0, 1 or 2");
        return;
    }
    contact->weak = weak;
}

void DynContactSetGroupIndex(DynContact* contact, int group) {
    contact->groupIndex = group;
}

void DynContactGetBodies(const DynContact* contact, DynBody** body0, DynBody** body1) {
    *body0 = contact->body[0];
    *body1 = contact->body[1];
}

void DynContactGetPosition(const DynContact* contact, KitVector3 position) {
    KitVector3Copy(position, contact->cpos);
}

void DynContactGetNormal(const DynContact* contact, KitVector3 normal) {
    KitVector3Copy(normal, contact->normal);
}

void DynContactGetDirection(const DynContact* contact, KitVector3 direction) {
    KitVector3Copy(direction, contact->direction);
}

KitReal DynContactGetPenetration(const DynContact* contact) {
    return contact->penetration;
}

KitReal DynContactGetSurface(const DynContact* contact) {
    return contact->surface;
}

const DyncContactMaterial* DynContactGetParams(const DynContact* contact) {
    return &contact->params;
}

int DynContactGetWeakContact(const DynContact* contact) {
    return contact->weak;
}

int DynContactGetGroupIndex(const DynContact* contact) {
    return contact->groupIndex;
}

void DynContactGetSlipVelocity(const DynContact* contact, KitVector3 v) {
    DyncContactGetSlipVelocity(contact, v);
}

// The list of a pair's contacts.

void DynContactSetNext(DynContact* contact, DynContact* next) {
    contact->nextContact = next;
}

DynContact* DynContactGetNext(const DynContact* contact) {
    return contact->nextContact;
}

void DynContactInsertAfter(DynContact* contact, DynContact* inserted) {
    inserted->nextContact = contact->nextContact;
    contact->nextContact = inserted;
}

// Friction.

void DynContactGetPairMasses(const DynBody* body0, const DynBody* body1, KitReal* low,
                             KitReal* high) {
    *low = kKitInfinity;
    *high = 0;
    for (const DynBody* body : {body0, body1}) {
        if (!body || body->stateFlags != 0)
            continue;
        *low = std::min(*low, body->mass);
        *high = std::max(*high, body->mass);
    }
}

void DynContactResolveFriction(DynContact* contact, KitReal low, KitReal high) {
    using Material = DyncContactMaterial;
    Material& m = contact->params;
    const bool matched = (contact->flags & kDynContactMatched) != 0;
    for (int a = 0; a < Material::kFrictionAxisCount; ++a) {
        switch (m.model[a]) {
        case Material::kFrictionModelScaledBoxFast:
            m.model[a] = matched ? Material::kFrictionModelBox : Material::kFrictionModelScaledBox;
            if (matched)
                m.boxMaxForce[a] =
                    std::abs(DynConstraintGetRowForce(contact, 0)) * m.sbCoefficient[a];
            break;
        case Material::kFrictionModelBoxProportionalLow:
        case Material::kFrictionModelBoxProportionalHigh:
            m.boxMaxForce[a] *=
                m.model[a] == Material::kFrictionModelBoxProportionalLow ? low : high;
            m.boxMaxForce[a] = std::min(m.boxMaxForce[a], kKitInfinity);
            m.model[a] = Material::kFrictionModelBox;
            break;
        case Material::kFrictionModelNeutral:
            m.model[a] = Material::kFrictionModelNone;
            break;
        default:
            break;
        }
    }
}

KitReal DynContactComputeSlidingVelocityThreshold(const DynBody* body0, const DynBody* body1,
                                                  KitReal scale) {
    KitReal threshold = 0;
    for (const DynBody* body : {body0, body1})
        if (body)
            threshold = std::max(threshold, body->autoDisableParams.vel_thresh);
    return std::sqrt(threshold) * scale;
}

void DynBodyFrictionDirectionPerpendicularToAxisCB(DynBaseConstraint* contact, DynBody* body,
                                                   void* data) {
    aimContacts(contact, body, data,
                [](const lsVec3& n, const lsVec3& axis) { return n.cross(axis); });
}

void DynBodyFrictionDirectionParallelToAxisCB(DynBaseConstraint* contact, DynBody* body,
                                              void* data) {
    aimContacts(contact, body, data,
                [](const lsVec3& n, const lsVec3& axis) { return n.cross(n.cross(axis)); });
}
