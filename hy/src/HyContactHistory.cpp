#include "HyContactHistory.h"

#include "HyContactChain.h"

#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/CxSpace.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynContact.h>
#include <Hy/HyBridge.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Hy {
namespace {

template <class Call>
void forEachModel(const CxSpace& space, Call call) {
    for (int id = 0; id < space.GetEndID(); ++id)
        if (space.ValidID(id))
            call(id, *space.GetRepData(id));
}

// Each living pair once, by the first of its models.
template <class Call>
void forEachPair(CxSpace& space, Call call) {
    forEachModel(space, [&](int id, const ColModel& model) {
        for (CxPairLink* link = space.GetNextPairOf(id, nullptr); link;
             link = space.GetNextPairOf(id, link))
            if (link->mSerial1 == model.serial)
                call(*link);
    });
}

DynContact* contactsOf(const ColModelPair& pair, const HyBridge& bridge) {
    return bridge.makesContacts(pair.mResponseID1, pair.mResponseID2)
               ? static_cast<DynContact*>(pair.responseData)
               : nullptr;
}

HyContactHistory::Contact captured(const DynContact& contact) {
    HyContactHistory::Contact record{.point = contact,
                                     .serial = contact.serial,
                                     .lambda = {},
                                     .phi = {},
                                     .flags = {},
                                     .dynamicFlags = {},
                                     .force = {},
                                     .torque = {},
                                     .weak = contact.weak,
                                     .enabled = DynConstraintIsEnabled(&contact) != 0};
    const DyncConstraintHeader& head = contact.bclH;
    std::copy_n(head.lambda, kDyncMaxContactRows, record.lambda);
    std::copy_n(head.phi, kDyncMaxContactRows, record.phi);
    std::copy_n(head.flags, kDyncMaxContactRows, record.flags);
    std::copy_n(head.dynamic_flags, kDyncMaxContactRows, record.dynamicFlags);
    for (int slot = 0; slot < 2; ++slot) {
        std::copy_n(contact.resultForce[slot], 4, record.force[slot]);
        std::copy_n(contact.resultTorque[slot], 4, record.torque[slot]);
    }
    return record;
}

// The serial comes first: lists are sorted by it.
DynContact* remake(const HyContactHistory::Contact& record, const ColModelPair& pair,
                   DynWorld& world) {
    DynContact* contact = DynContactCreate(&world);
    if (!contact)
        return nullptr;
    DynConstraintSetSerial(contact, record.serial);
    DynBody* const bodies[2] = {pair.model1->mBody, pair.model2->mBody};
    const auto rootOf = [](DynBody* body) { return body ? body->rootParent : nullptr; };
    DynBody* const roots[2] = {rootOf(bodies[0]), rootOf(bodies[1])};
    DynContactSetBodies(contact, roots[0], roots[1]);
    static_cast<bclContact&>(*contact) = record.point;
    std::copy_n(bodies, 2, contact->originalBodies);
    contact->tm0 = roots[0] ? &roots[0]->bodyTM : nullptr;
    contact->tm1 = roots[1] ? &roots[1]->bodyTM : nullptr;
    contact->weak = record.weak;
    DyncConstraintHeader& head = contact->bclH;
    std::copy_n(record.lambda, kDyncMaxContactRows, head.lambda);
    std::copy_n(record.phi, kDyncMaxContactRows, head.phi);
    std::copy_n(record.flags, kDyncMaxContactRows, head.flags);
    std::copy_n(record.dynamicFlags, kDyncMaxContactRows, head.dynamic_flags);
    for (int slot = 0; slot < 2; ++slot) {
        std::copy_n(record.force[slot], 4, contact->resultForce[slot]);
        std::copy_n(record.torque[slot], 4, contact->resultTorque[slot]);
    }
    if (record.enabled)
        DynConstraintEnable(contact);
    return contact;
}

} // namespace

void HyContactHistory::capture(CxSpace& space, const HyBridge& bridge) {
    forEachModel(space, [&](int id, const ColModel& model) {
        Box box{.serial = model.serial, .min = {}, .max = {}};
        if (space.GetBox(id, &box.min, &box.max))
            boxes.push_back(box);
    });
    forEachPair(space, [&](const CxPairLink& link) {
        Pair& pair = pairs.emplace_back(Pair{.serial1 = link.mSerial1,
                                             .serial2 = link.mSerial2,
                                             .touched = ColModelPairGetWasIntersecting(&link.mPair),
                                             .contactCount = 0});
        for (const DynContact* each = contactsOf(link.mPair, bridge); each;
             each = each->nextContact, ++pair.contactCount)
            contacts.push_back(captured(*each));
    });
}

// The boxes bring back the pairs, those included that would end in the next step.
void HyContactHistory::restore(CxSpace& space, HyBridge& bridge, DynWorld& world) const {
    std::unordered_map<std::uint64_t, int> ids;
    forEachModel(space, [&](int id, const ColModel& model) { ids.emplace(model.serial, id); });
    for (const Box& box : boxes)
        if (const auto model = ids.find(box.serial); model != ids.end())
            space.SetBox(model->second, box.min, box.max);
    bridge.updateTransitions();

    forEachPair(space, [&](CxPairLink& link) {
        ColModelPairSetWasIntersecting(&link.mPair, false);
        if (!bridge.makesContacts(link.mPair.mResponseID1, link.mPair.mResponseID2))
            return;
        HyDestroyContacts(static_cast<DynContact*>(link.mPair.responseData), false);
        link.mPair.responseData = DynContactInvalidID;
    });
    const Contact* next = contacts.data();
    for (const Pair& saved : pairs) {
        const Contact* first = std::exchange(next, next + saved.contactCount);
        const auto model1 = ids.find(saved.serial1), model2 = ids.find(saved.serial2);
        if (model1 == ids.end() || model2 == ids.end())
            continue;
        ColModelPair* pair = space.GetPair(model1->second, model2->second);
        if (!pair)
            continue;
        ColModelPairSetWasIntersecting(pair, saved.touched);
        if (!bridge.makesContacts(pair->mResponseID1, pair->mResponseID2))
            continue;
        DynContact* last = nullptr;
        for (const Contact* record = first; record != next; ++record) {
            DynContact* contact = remake(*record, *pair, world);
            if (!contact)
                break;
            if (last)
                DynContactSetNext(last, contact);
            else
                pair->responseData = contact;
            last = contact;
        }
    }
}

} // namespace Hy
