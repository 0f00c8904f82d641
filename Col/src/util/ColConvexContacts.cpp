#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace {
/// A contact less deep than this share of the depth of the whole.
constexpr KitReal kShallowShare = 0.999;
/// From here on the lost depth is spread evenly.
constexpr int kManyContacts = 128;

/// Depth and first moment of depth over the contacts that lie on a surface.
struct DepthSum {
    KitReal depth = 0; ///< m, negative
    lsVec3 moment;     ///< m^2

    void add(const ColContact& c) {
        depth += c.separation;
        moment.addMultiple(c.separation, c.position);
    }
};

bool isCrossing(const ColContact& c) {
    return c.surfaceIndex == kColSurfaceNone;
}

DepthSum sumDepths(std::span<const ColContact> contacts) {
    DepthSum sum;
    for (const ColContact& c : contacts)
        if (!isCrossing(c))
            sum.add(c);
    return sum;
}

KitReal distanceAcross(const ColContact& c, const lsVec3& point) {
    lsVec3 d = c.position - point;
    d.substractMultiple(d.dot(c.normal), c.normal);
    return d.norm();
}

/// Gives each crossing a share of the lost depth, inversely to its distance from the lost centre,
/// and no crossing more than the whole depth.
void shareDepth(std::span<ColContact*> crossings, KitReal lost, const lsVec3& centre,
                KitReal separation) {
    ColScratchScope scratch;
    const std::span<KitReal> weights = scratch.take<KitReal>(crossings.size());
    KitReal sum = 0;
    bool isApart = true;
    for (std::size_t i = 0; i < crossings.size(); ++i) {
        const KitReal r = distanceAcross(*crossings[i], centre);
        isApart = isApart && r > 0;
        weights[i] = 1 / r;
        sum += weights[i];
    }
    isApart = isApart && std::isfinite(sum);
    for (std::size_t i = 0; i < crossings.size(); ++i) {
        const KitReal share =
            isApart ? weights[i] / sum : 1 / static_cast<KitReal>(crossings.size());
        crossings[i]->separation = std::max(lost * share, separation);
    }
}
} // namespace

void ColSimplifyConvexContacts(ColContact* contacts, int count, ColIntersectResult* result,
                               KitReal separation) {
    const std::span<const ColContact> raw(contacts, static_cast<std::size_t>(std::max(count, 0)));
    const DepthSum before = sumDepths(raw);
    const bool hasShallow = std::any_of(raw.begin(), raw.end(), [&](const ColContact& c) {
        return !isCrossing(c) && c.separation > kShallowShare * separation;
    });
    lsVec3 normal = result ? result->normal : lsVec3();
    ColContactSimplifyBufferToResult(&normal, contacts, count, result, "SimplifyConvexContacts");
    if (!result || !result->contacts)
        return;

    const std::span<ColContact> kept(result->contacts,
                                     static_cast<std::size_t>(result->contactCount));
    ColScratchScope scratch;
    const std::span<ColContact*> room = scratch.take<ColContact*>(kept.size());
    std::size_t m = 0;
    for (ColContact& c : kept)
        if (isCrossing(c))
            room[m++] = &c;
    const std::span<ColContact*> crossings = room.first(m);
    if (m == 0)
        return;
    if (!hasShallow) {
        for (ColContact* c : crossings)
            c->separation = separation;
        return;
    }
    if (result->contactCount >= kManyContacts) {
        const std::size_t k = kept.size() - m;
        for (ColContact* c : crossings)
            c->separation = separation / static_cast<KitReal>(m) / static_cast<KitReal>(k + 1);
        return;
    }
    const DepthSum after = sumDepths(kept);
    const bool isLost = before.depth != after.depth;
    const KitReal lost = isLost ? before.depth - after.depth : 0.5 * before.depth;
    const lsVec3 centre =
        isLost ? (before.moment - after.moment) / lost : before.moment / before.depth;
    shareDepth(crossings, lost, centre, separation);
}
