#include "ColContactGroup.h"
#include <Col/ColRequest.h>
#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>
#include "ColDegeneracy.h"
#include "ColOutline.h"

#include <algorithm>
#include <span>

namespace {
/// From here on a hash of cells costs less than all pairs.
constexpr int kManyContacts = 48;

bool isOfFace(const ColContact& c) {
    return c.dims == 2 || (c.dims & 0xFF00) != 0;
}

int removeDuplicates(ColContact* contacts, int count, const lsVec3& normal) {
    const bool hasPlane = normal.square_norm() > 0;
    return count < kManyContacts || !hasPlane ? ColRemoveDuplicatesByPairs(contacts, count, normal)
                                              : ColRemoveDuplicatesByCells(contacts, count, normal);
}

/// The deepest contact, of faces if these are preferred and there are any; null if the deepest is
/// not asked for.
const ColContact* findSeed(std::span<const ColContact> contacts, bool faceFirst) {
    const ColContact *deepest = nullptr, *deepestOfFace = nullptr;
    for (const ColContact& c : contacts) {
        if (!deepest || c.separation < deepest->separation)
            deepest = &c;
        if (faceFirst && isOfFace(c) &&
            (!deepestOfFace || c.separation < deepestOfFace->separation))
            deepestOfFace = &c;
    }
    if (deepestOfFace)
        return deepestOfFace;
    return gColContactSimplifyDeepestFirst != 0 ? deepest : nullptr;
}

const ColContact& findSingle(std::span<const ColContact> contacts, bool faceFirst) {
    if (faceFirst)
        for (const ColContact& c : contacts)
            if (isOfFace(c))
                return c;
    return contacts.front();
}

/// The contact that goes with the seed: the deepest other, or the best of distance times depth.
const ColContact& findPartner(std::span<const ColContact> contacts, const ColContact& seed,
                              int method) {
    const auto worth = [&](const ColContact& c) {
        return method == 1 ? -c.separation : (c.position - seed.position).norm() * -c.separation;
    };
    const ColContact* best = nullptr;
    for (const ColContact& c : contacts)
        if (&c != &seed && (!best || worth(c) > worth(*best)))
            best = &c;
    return *best;
}

/// Contacts as points of an outline about the unit normal, the first as the origin.
class PlaneFrame {
public:
    PlaneFrame(const lsVec3& normal, std::span<const ColContact> contacts)
        : mContacts(contacts), mNormal(normal) {
        ColPlaneBasis(normal, &mU, &mV);
    }
    [[nodiscard]] ColOutlinePoint point(const ColContact& c) const {
        const lsVec3 d = c.position - mContacts.front().position;
        return {.x = d.dot(mU),
                .y = d.dot(mV),
                .z = d.dot(mNormal),
                .separation = c.separation,
                .index = static_cast<int>(&c - mContacts.data())};
    }

private:
    std::span<const ColContact> mContacts;
    lsVec3 mNormal, mU, mV;
};

int writeOutline(const ColOutline& outline, const ColContact* contacts, ColContact* out,
                 bool facesFirst) {
    int written = 0;
    if (!facesFirst) {
        for (const ColOutlinePoint& p : outline.points())
            out[written++] = contacts[p.index];
        return written;
    }
    for (const bool ofFace : {true, false})
        for (const ColOutlinePoint& p : outline.points())
            if (isOfFace(contacts[p.index]) == ofFace)
                out[written++] = contacts[p.index];
    return written;
}

int reduceToOutline(const lsVec3& normal, std::span<const ColContact> contacts,
                    const ColContact* seed, ColContact* out, int maxContacts,
                    const ColRequest& request, KitReal* outSurface) {
    ColScratchScope scratch;
    const int corners = std::min(maxContacts, std::max(static_cast<int>(contacts.size()), 3));
    ColOutline outline(scratch.take<ColOutlinePoint>(static_cast<std::size_t>(corners) + 1));
    const PlaneFrame frame(normal, contacts);
    for (const ColContact& c : contacts)
        outline.add(frame.point(c));
    outline.removeCollinear(request.collinearThreshold);
    if (outSurface)
        *outSurface = outline.area();
    if (seed)
        outline.prepend(frame.point(*seed));
    return writeOutline(outline, contacts.data(), out,
                        request.faceNormalsFirst != 0 && !outSurface);
}
} // namespace

int ColSimplifyFiniteGroup(const lsVec3& normal, ColContact* contacts, int count,
                           ColContact* outContacts, int maxContacts, const ColRequest& request,
                           KitReal* outSurface) {
    if (count <= 0 || maxContacts <= 0)
        return 0;
    if (outSurface)
        *outSurface = 1;
    if (count == 1) {
        outContacts[0] = contacts[0];
        return 1;
    }
    lsVec3 unit = normal;
    unit.normalize();
    count = removeDuplicates(contacts, count, unit);
    const std::span<const ColContact> all(contacts, static_cast<std::size_t>(count));
    if (request.contactMaxCount >= kColNoOutline) {
        const auto wanted = std::min(request.contactMaxCount, static_cast<unsigned>(maxContacts));
        const int kept = static_cast<int>(std::min(wanted, static_cast<unsigned>(count)));
        std::copy_n(contacts, kept, outContacts);
        return kept;
    }
    const bool faceFirst = request.faceNormalsFirst != 0;
    const ColContact* seed = findSeed(all, faceFirst);
    if (count == 1 || maxContacts == 1) {
        outContacts[0] = seed ? *seed : findSingle(all, faceFirst);
        return 1;
    }
    if (maxContacts == 2) {
        const ColContact& first = seed ? *seed : all.front();
        outContacts[1] = findPartner(all, first, request.twoContactsSimplifyMethod);
        outContacts[0] = first;
        return 2;
    }
    return reduceToOutline(unit, all, seed, outContacts, maxContacts, request, outSurface);
}
