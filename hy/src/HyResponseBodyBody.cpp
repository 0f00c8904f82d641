#include <Hy/HyResponse.h>

#include "HyContactChain.h"

#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynContact.h>
#include <Dyn/DynWorld.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMaterial.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitVector.h>

#include <algorithm>
#include <cmath>
#include <iterator>

// Contacts persist from step to step by their records: those of a pair are refilled in the order of
// the new contacts, and what a contact remembers is found by its place, since the order may change.

namespace Hy {
namespace {

constexpr int kMaxMatchRecords = 99;
constexpr int kContactRows = 6;

/// What a contact of the last step remembers, copied before its record is refilled.
struct MatchRecord {
    KitVector3 cpos, posRel0, posRel1, direction;
    KitReal slip_displacement[2];
    KitReal normalForce;
    int dynamic_flags[kContactRows];
    int flags;
    const DynContact* contact;
    const DynBody* body[2];
    bool matched;
};

void remember(MatchRecord& record, const DynContact& contact) {
    KitVector3Copy(record.cpos, contact.cpos);
    KitVector3Copy(record.posRel0, contact.posRel0);
    KitVector3Copy(record.posRel1, contact.posRel1);
    KitVector3Copy(record.direction, contact.direction);
    std::copy_n(contact.slip_displacement, 2, record.slip_displacement);
    record.normalForce = contact.bclH.lambda[0];
    std::copy_n(contact.bclH.dynamic_flags, kContactRows, record.dynamic_flags);
    record.flags = contact.flags;
    record.contact = &contact;
    std::copy_n(contact.body, 2, record.body);
    record.matched = false;
}

DynBody* rootOf(DynBody* body) {
    return body ? body->rootParent : nullptr;
}

bool isDynamic(const DynBody* body) {
    return body && body->stateFlags == 0;
}

bool isNear(const KitReal* a, const KitReal* b, KitReal epsilon) {
    return std::abs(a[0] - b[0]) < epsilon && std::abs(a[1] - b[1]) < epsilon &&
           std::abs(a[2] - b[2]) < epsilon;
}

bool wantsMatching(const DyncContactMaterial& material) {
    return HyDynamicsContact::getForceContactMatching() ||
           material.mIntegratedSlipDisplacementActivated ||
           std::find(std::begin(material.model), std::end(material.model),
                     DyncContactMaterial::kFrictionModelScaledBoxFast) != std::end(material.model);
}

/// One update of the contacts of a pair.
class Update {
public:
    Update(HyBridge& bridge, ColModelPair& pair, const ColIntersectResult& result, DynWorld& world)
        : mBridge(bridge), mPair(pair), mResult(result),
          mWorld(world), mBody{pair.model1->mBody, pair.model2->mBody}, mRoot{rootOf(mBody[0]),
                                                                              rootOf(mBody[1])} {}

    void run();

private:
    const HyContactMaterial& materialOf(const ColContact& contact) const;
    bool someContactWantsMatching() const;
    void rememberChain();
    MatchRecord* findMatch(const lsVec3& position);
    DynContact* takeRecord();
    void fill(DynContact& target, const ColContact& contact, const HyContactMaterial& material);
    void continueFrom(DynContact& target, const MatchRecord* match, bool applies) const;
    void aimFriction();

    HyBridge& mBridge;
    ColModelPair& mPair;
    const ColIntersectResult& mResult;
    DynWorld& mWorld;
    DynBody* mBody[2];
    DynBody* mRoot[2];
    DynContact* mTarget = nullptr; ///< next record to refill
    DynContact* mLast = nullptr;   ///< last record that was filled
    MatchRecord mRecords[kMaxMatchRecords];
    int mRecordCount = 0;
    KitReal mSlidingThreshold = 0, mLowMass = 0, mHighMass = 0;
    int mGroup = -1;
    KitReal mSurface = 1;
};

const HyContactMaterial& Update::materialOf(const ColContact& contact) const {
    return *mBridge.getContactMaterial(
        contact.model1->mCollisionGeometry->getMaterial(contact.indexElement1),
        contact.model2->mCollisionGeometry->getMaterial(contact.indexElement2));
}

bool Update::someContactWantsMatching() const {
    return std::any_of(mResult.contacts, mResult.contacts + mResult.contactCount,
                       [this](const ColContact& contact) {
                           return wantsMatching(materialOf(contact).getValue());
                       });
}

void Update::rememberChain() {
    for (const DynContact* contact = mTarget; contact && mRecordCount < kMaxMatchRecords;
         contact = contact->nextContact)
        remember(mRecords[mRecordCount++], *contact);
}

// A contact is where it was in the frame of either body, or where a body has carried it since.
MatchRecord* Update::findMatch(const lsVec3& position) {
    const KitReal epsilon = mPair.request->contactMatchingEpsilon;
    KitVector3 local[2];
    for (int side = 0; side < 2; ++side) {
        if (mRoot[side])
            KitMatrix4TMInverseTransform(local[side], position.v, mRoot[side]->bodyTM);
        else
            KitVector3Copy(local[side], position.v);
    }
    const auto isCarried = [&](const MatchRecord& record, const DynBody* body) {
        KitVector3 moved;
        KitVector3AddScaled(moved, record.cpos, mWorld.params.timeStep, body->kiroBody.vel);
        return isNear(moved, position.v, epsilon);
    };
    for (int i = 0; i < mRecordCount; ++i) {
        MatchRecord& record = mRecords[i];
        if (record.matched)
            continue;
        const DynBody* const* bodies = record.body;
        if (isNear(record.posRel0, local[0], epsilon) ||
            isNear(record.posRel1, local[1], epsilon) ||
            (bodies[0] && isCarried(record, bodies[0])) ||
            (bodies[1] && isCarried(record, bodies[1]))) {
            record.matched = true;
            return &record;
        }
    }
    return nullptr;
}

// The next record of the pair, or a new one behind the last; null if the pool gives none.
DynContact* Update::takeRecord() {
    DynContact* contact = mTarget;
    if (!contact) {
        contact = DynContactCreate(&mWorld);
        if (!contact)
            return nullptr;
        if (mLast)
            DynContactSetNext(mLast, contact);
        else
            mPair.responseData = contact;
        DynContactSetBodies(contact, mRoot[0], mRoot[1]);
        DynConstraintEnableBodiesIfMoving(contact);
        contact->flags = kDynContactCreated;
        return contact;
    }
    if (contact->body[0] != mRoot[0] || contact->body[1] != mRoot[1]) {
        DynConstraintDisable(contact);
        DynContactSetBodies(contact, mRoot[0], mRoot[1]);
        DynConstraintEnableBodiesIfMoving(contact);
    }
    contact->flags &= ~kDynContactCreated;
    return contact;
}

void Update::fill(DynContact& target, const ColContact& contact,
                  const HyContactMaterial& material) {
    lsVec3 position;
    ColContactGetPosition(&contact, 0, &position);
    DynConstraintEnable(&target);
    DynContactSetNormal(&target, contact.normal.v);
    DynContactSetPosition(&target, position.v);
    DynContactSetPenetration(&target, -contact.separation);
    DynContactSetSurface(&target, mSurface);
    DynContactSetWeakContact(&target, 0);
    DynContactSetGroupIndex(&target, mGroup);
    DynContactSetParams(&target, &material.getValue(), mBridge.getInternedName(material));
    target.bclH.bodySeenAsKinematic = nullptr;
    target.tm0 = mRoot[0] ? &mRoot[0]->bodyTM : nullptr;
    target.tm1 = mRoot[1] ? &mRoot[1]->bodyTM : nullptr;
    target.slidingVelocityThreshold = mSlidingThreshold;
}

void Update::continueFrom(DynContact& target, const MatchRecord* match, bool applies) const {
    target.flags &= ~(kDynContactMatched | kDynContactMatching);
    if (applies)
        target.flags |= kDynContactMatching;
    KitVector3Set(target.direction, 1, 0, 0); // what the record's last contact chose is not ours
    if (!match) {
        target.slip_displacement[0] = target.slip_displacement[1] = 0;
        return;
    }
    target.flags |= kDynContactMatched;
    if (match->contact != &target) {
        KitVector3Copy(target.posRel0, match->posRel0);
        KitVector3Copy(target.posRel1, match->posRel1);
        std::copy_n(match->dynamic_flags, kContactRows, target.bclH.dynamic_flags);
        target.bclH.lambda[0] = match->normalForce;
    }
    // Slip and direction go on alike, whether in the same record or another one.
    if ((match->flags & kDynContactMatched) == 0) {
        target.slip_displacement[0] = target.slip_displacement[1] = 0;
        return;
    }
    std::copy_n(match->slip_displacement, 2, target.slip_displacement);
    KitVector3 across;
    KitVector3Cross(across, match->direction, target.normal);
    KitVector3Cross(target.direction, target.normal, across);
    target.params.options |= DyncContactMaterial::kOptionDirection;
}

// Of the bodies that want to choose a friction direction the first one does.
void Update::aimFriction() {
    auto* first = static_cast<DynContact*>(mPair.responseData);
    if (!first)
        return;
    for (DynBody* body : mBody)
        if (body && body->frictionDirectionCB) {
            body->frictionDirectionCB(first, body, body->frictionDirectionCBData);
            return;
        }
}

void Update::run() {
    mTarget = static_cast<DynContact*>(mPair.responseData);
    if (mResult.contactCount == 0) {
        HyDestroyContacts(mTarget, false);
        mPair.responseData = DynContactInvalidID;
        return;
    }
    if (!isDynamic(mRoot[0]) && !isDynamic(mRoot[1]))
        return;
    mSlidingThreshold = DynContactComputeSlidingVelocityThreshold(
        mRoot[0], mRoot[1], HyDynamicsContact::getSlidingVelocityThresholdScale());
    DynContactGetPairMasses(mRoot[0], mRoot[1], &mLowMass, &mHighMass);
    if (someContactWantsMatching())
        rememberChain();
    int groupSize = 0, indexInGroup = 0;
    for (int i = 0; i < mResult.contactCount; ++i, ++indexInGroup) {
        while (mGroup + 1 < mResult.groupCount && indexInGroup == groupSize) {
            const ColIntersectGroupResult& group = mResult.groupResult[++mGroup];
            indexInGroup = 0;
            groupSize = group.contactCount;
            mSurface = group.surface;
        }
        const ColContact& contact = mResult.contacts[i];
        const HyContactMaterial& material = materialOf(contact);
        const bool applies = wantsMatching(material.getValue());
        MatchRecord* match = nullptr;
        if (applies) {
            lsVec3 position;
            ColContactGetPosition(&contact, 0, &position);
            match = findMatch(position);
        }
        DynContact* target = takeRecord();
        if (!target)
            break;
        fill(*target, contact, material);
        continueFrom(*target, match, applies);
        DynContactResolveFriction(target, mLowMass, mHighMass);
        target->originalBodies[0] = mBody[0];
        target->originalBodies[1] = mBody[1];
        mLast = target;
        mTarget = target->nextContact;
    }
    if (mLast) {
        mLast->nextContact = nullptr;
        HyDestroyContacts(mTarget, true);
    }
    aimFriction();
}

} // namespace

void HyResponseBody_Body::operator()(HyBridge* bridge, ColModelPair* pair,
                                     ColIntersectResult* result, CxSpace*, DynWorld* world,
                                     const HyResponsePair*) {
    Update(*bridge, *pair, *result, *world).run();
}

} // namespace Hy
