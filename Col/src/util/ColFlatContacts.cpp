#include "ColFlatContacts.h"

#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include "ColContactGroup.h"
#include "ColDegeneracy.h"

#include <array>

namespace {
/// A unit normal's product with itself may fall below 1 by rounding, never below this.
constexpr KitReal kMaxCosine = 1 - 1e-9;

bool areFinite(const ColOutlinePoint* points, int count) noexcept {
    KitReal zero = 0;
    for (int i = 0; i < count; ++i)
        zero += 0 * points[i].x + 0 * points[i].y + 0 * points[i].separation;
    return zero == 0;
}

int removeDuplicates(ColOutlinePoint* points, int count) noexcept {
    const KitReal limit = gDegeneracyMinDistance2;
    const auto same = [limit](const ColOutlinePoint& a, const ColOutlinePoint& b) {
        const KitReal dx = a.x - b.x, dy = a.y - b.y;
        return dx * dx + dy * dy < limit;
    };
    return ColRemoveDuplicates(points, count, same,
                               [](const ColOutlinePoint& a, const ColOutlinePoint& b) {
                                   return a.separation > b.separation;
                               });
}
} // namespace

bool ColCanReduceFlatPoints(const ColRequest& request, int maxContacts) noexcept {
    return maxContacts >= 3 && request.contactMaxCount < kColNoOutline &&
           request.groupNormalMethod == 0 &&
           (request.groupMaxCount < 1 || request.computeGroupContactSurface == 0) &&
           (request.groupMaxCount < 2 || request.groupTolerance < kMaxCosine) &&
           gDegeneracyMinCosAngle < kMaxCosine && gColContactSimplifyDeepestFirst != 0;
}

int ColReduceFlatPoints(ColOutlinePoint* points, int count, int maxContacts,
                        const ColRequest& request, int* chosen) noexcept {
    if (!areFinite(points, count))
        return 0;
    count = removeDuplicates(points, count);
    int seed = 0;
    for (int i = 1; i < count; ++i)
        if (points[i].separation < points[seed].separation)
            seed = i;
    std::array<ColOutlinePoint, kColMaxFlatPoints + 1> room;
    ColOutline outline({room.data(), static_cast<std::size_t>(maxContacts) + 1});
    for (int i = 0; i < count; ++i)
        outline.add(points[i]);
    outline.removeCollinear(request.collinearThreshold);
    outline.prepend(points[seed]);
    int written = 0;
    for (const ColOutlinePoint& p : outline.points())
        chosen[written++] = p.index;
    return written;
}
