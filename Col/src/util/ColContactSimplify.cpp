#include <Col/ColMessage.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColModelPair.h>
#include <Col/ColRequest.h>
#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>
#include "ColContactGroup.h"

#include <algorithm>
#include <atomic>
#include <array>
#include <cmath>
#include <numbers>
#include <span>

namespace {
constexpr KitReal kMinNormal2 = 0.9, kMaxNormal2 = 1.1;

bool isFinite(const ColContact& c) {
    // A product with zero is zero, unless the factor is not finite.
    const KitReal zero = 0 * c.position[0] + 0 * c.position[1] + 0 * c.position[2] +
                         0 * c.normal[0] + 0 * c.normal[1] + 0 * c.normal[2] + 0 * c.separation;
    return zero == 0;
}

int dropNotFinite(ColContact* contacts, int count) {
    return static_cast<int>(std::remove_if(contacts, contacts + count,
                                           [](const ColContact& c) { return !isFinite(c); }) -
                            contacts);
}

lsVec3 sumToNormal(lsVec3 sum) {
    return sum.normalize() > 0 ? sum : lsVec3(1, 0, 0);
}

std::atomic<bool> sToldOfMethod2 = false;

/// Normal of a group by groupNormalMethod.
lsVec3 groupNormal(std::span<const ColContact> contacts, int method) {
    lsVec3 sum;
    switch (method) {
    case 1:
        for (const ColContact& c : contacts)
            sum += c.normal;
        return sumToNormal(sum);
    case 3:
        for (const ColContact& c : contacts)
            if (c.separation < 0)
                sum.addMultiple(-c.separation, c.normal);
        return sumToNormal(sum);
    case 2:
        if (!sToldOfMethod2.exchange(true, std::memory_order_relaxed)) // each group would repeat it
            KitWarning(0, "Not implemented\n");
        break;
    default:
        break;
    }
    return contacts.front().normal;
}

/// Area of a group that is too small for an outline, or a least area, m^2.
void computeGroupSurface(std::span<const ColContact> contacts, ColIntersectGroupResult& group,
                         KitReal surface, KitReal tolerance) {
    if (contacts.size() == 1) {
        const KitReal radius = std::max(std::abs(contacts[0].separation), tolerance);
        group.normal = contacts[0].normal;
        group.surface = std::numbers::pi * radius * radius;
        return;
    }
    if (contacts.size() == 2) {
        const ColContact &a = contacts[0], &b = contacts[1];
        group.normal = a.normal + b.normal;
        if (!(group.normal.normalize() > 0))
            group.normal = lsVec3(0, 0, 1);
        const KitReal length = (a.position - b.position).norm();
        group.surface = std::max(tolerance, length) * 2 *
                        std::max({tolerance, std::abs(a.separation), std::abs(b.separation)});
    } else {
        group.surface = std::max(surface, tolerance);
    }
    KitReal least = contacts[0].separation, sum = 0;
    for (const ColContact& c : contacts) {
        least = std::min(least, c.separation);
        sum += c.separation;
    }
    // A share of the depth: contacts that are apart must not make it more than all.
    if (least / sum > 0)
        group.surface *= std::min(least / sum, 1.0);
}

/// One simplification on its way.
struct Simplification {
    ColIntersectResult& result;
    const ColRequest& request;
    int maxContacts;   ///< of a group
    KitReal tolerance; ///< of both models, m
    bool wantsSurface;

    /// Simplifies one group behind the contacts written so far, and fills its record.
    int writeGroup(std::span<ColContact> contacts, const lsVec3& normal, int written,
                   ColIntersectGroupResult& group) const {
        KitReal surface = 1;
        ColContact* out = result.contacts + written;
        group.normal = normal;
        group.contactCount =
            ColSimplifyFiniteGroup(normal, contacts.data(), static_cast<int>(contacts.size()), out,
                                   std::min(maxContacts, result.contactMaxCount - written), request,
                                   wantsSurface ? &surface : nullptr);
        group.surface = 1;
        if (wantsSurface && group.contactCount > 0)
            computeGroupSurface({out, static_cast<std::size_t>(group.contactCount)}, group, surface,
                                tolerance);
        return group.contactCount;
    }
};

/// Groups of contacts by normal: the group of each contact, and how many each group has.
struct Grouping {
    std::span<int> groupOf;
    std::array<int, kColMaxGroups> sizes = {};
    int count = 0;
};

/// The first group within the cosine takes a contact, else a new one, and with no group left the
/// last. A group's normal is that of its first contact throughout.
Grouping groupByNormal(ColScratchScope& scratch, std::span<const ColContact> contacts,
                       int maxGroups, KitReal cosine) {
    Grouping grouping;
    grouping.groupOf = scratch.take<int>(contacts.size());
    std::array<const lsVec3*, kColMaxGroups> normals = {};
    for (std::size_t i = 0; i < contacts.size(); ++i) {
        int g = 0;
        while (g < grouping.count &&
               !(normals[static_cast<std::size_t>(g)]->dot(contacts[i].normal) > cosine))
            ++g;
        if (g == grouping.count && g < maxGroups)
            normals[static_cast<std::size_t>(grouping.count++)] = &contacts[i].normal;
        g = std::min(g, maxGroups - 1);
        grouping.groupOf[i] = g;
        ++grouping.sizes[static_cast<std::size_t>(g)];
    }
    return grouping;
}

int simplifyGroups(const Simplification& s, std::span<ColContact> contacts) {
    ColScratchScope scratch;
    const int maxGroups = std::min(s.request.groupMaxCount, kColMaxGroups);
    const Grouping grouping = groupByNormal(scratch, contacts, maxGroups, s.request.groupTolerance);
    s.result.groupCount = grouping.count;
    if (grouping.count == 1)
        return s.writeGroup(contacts, groupNormal(contacts, s.request.groupNormalMethod), 0,
                            s.result.groupResult[0]);

    const std::span<ColContact> sorted = scratch.take<ColContact>(contacts.size());
    std::array<std::size_t, kColMaxGroups> end = {};
    for (std::size_t g = 1; g < kColMaxGroups; ++g)
        end[g] = end[g - 1] + static_cast<std::size_t>(grouping.sizes[g - 1]);
    for (std::size_t i = 0; i < contacts.size(); ++i)
        sorted[end[static_cast<std::size_t>(grouping.groupOf[i])]++] = contacts[i];

    int written = 0;
    for (int g = 0; g < grouping.count; ++g) {
        const auto size = static_cast<std::size_t>(grouping.sizes[static_cast<std::size_t>(g)]);
        const std::span<ColContact> group =
            sorted.subspan(end[static_cast<std::size_t>(g)] - size, size);
        written += s.writeGroup(group, groupNormal(group, s.request.groupNormalMethod), written,
                                s.result.groupResult[g]);
    }
    return written;
}

int simplifyUngrouped(const Simplification& s, std::span<ColContact> contacts,
                      const lsVec3& normal) {
    ColIntersectGroupResult whole;
    const int written = s.writeGroup(contacts, normal, 0, whole);
    if (s.request.groupMaxCount >= 1 && written > 0) {
        s.result.groupCount = 1;
        s.result.groupResult[0] = whole;
    }
    return written;
}
} // namespace

int ColContactSimplify(lsVec3* normal, ColContact* contacts, int count,
                       ColIntersectResult* result) {
    if (!normal || !result || !result->pair) {
        KitFatalError(0, "ColContactSimplify: result with a valid pair required.\n");
        return 0;
    }
    result->groupCount = 0;
    if (count <= 0 || !contacts)
        return 0;
    count = dropNotFinite(contacts, count);
    if (count == 0)
        return 0;
    if (!(normal->square_norm() >= kMinNormal2 && normal->square_norm() <= kMaxNormal2))
        *normal = contacts[0].normal;
    const ColModelPair& pair = *result->pair;
    const ColRequest& request = pair.request ? *pair.request : *ColGetDefaultRequestPtr();
    const int room = std::max(result->contactMaxCount, 0);
    const Simplification s = {
        .result = *result,
        .request = request,
        .maxContacts =
            static_cast<int>(std::min(request.contactMaxCount, static_cast<std::uint32_t>(room))),
        .tolerance =
            ColModelGetContactTolerance(pair.model1) + ColModelGetContactTolerance(pair.model2),
        .wantsSurface = request.groupMaxCount > 0 && request.computeGroupContactSurface != 0};
    if (s.maxContacts == 0)
        return 0;
    const std::span<ColContact> all(contacts, static_cast<std::size_t>(count));
    return request.groupMaxCount < 2 ? simplifyUngrouped(s, all, *normal) : simplifyGroups(s, all);
}

int ColContactSimplifyGroup(const lsVec3& normal, ColContact* contacts, int count,
                            ColContact* outContacts, int maxContacts, const ColRequest& request,
                            KitReal* outSurface) {
    if (count <= 0 || maxContacts <= 0)
        return 0;
    if (!contacts || !outContacts) {
        ColMistake(kColErrorContactArray, " in ColContactSimplifyGroup.");
        return 0;
    }
    return ColSimplifyFiniteGroup(normal, contacts, dropNotFinite(contacts, count), outContacts,
                                  maxContacts, request, outSurface);
}

void ColContactSimplifyBufferToResult(lsVec3* normal, ColContact* contacts, int count,
                                      ColIntersectResult* result, const char* /*callerName*/) {
    const int written = ColContactSimplify(normal, contacts, count, result);
    if (!normal || !result)
        return;
    result->contactCount = written;
    result->normal = *normal;
}

void ColContactSimplifyResult(ColIntersectResult* result) {
    if (!result || !result->pair) {
        KitFatalError(0, "ColContactSimplify: result with a valid pair required.\n");
        return;
    }
    ColScratchScope scratch;
    KitPool* pool = result->contactPool;
    auto* pooled = pool ? static_cast<ColContact*>(KitPoolGetStruct(pool)) : nullptr;
    int count = result->contactCount;
    ColContact* buffer = pooled;
    if (pooled) {
        const int room = KitPoolGetStructSize(pool) / static_cast<int>(sizeof(ColContact));
        if (count > room)
            KitWarning(0, "ColContactSimplifyResult: pool contact count too small. Some contacts "
                          "may be lost.\n");
        count = std::min(count, room);
    } else {
        buffer = scratch.take<ColContact>(static_cast<std::size_t>(std::max(count, 0))).data();
    }
    std::copy_n(result->contacts, std::max(count, 0), buffer);
    ColContactSimplifyBufferToResult(&result->normal, buffer, count, result,
                                     "ColContactSimplifyResult");
    if (pooled)
        KitPoolPutStruct(pool, pooled);
}
