#include "ColOutline.h"
#include <Col/ColSimplify.h>
#include "ColDegeneracy.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
/// Contacts less deep than this carry nothing, m; they leave the outline first.
constexpr KitReal kShallow = 1e-7;
constexpr KitReal kMinAlong = 1e-14; ///< m
constexpr KitReal kNever = std::numeric_limits<KitReal>::infinity();

/// Twice the area of a triangle, positive if counterclockwise.
KitReal twiceArea(const ColOutlinePoint& a, const ColOutlinePoint& b, const ColOutlinePoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// (c - a) . (b - a)
KitReal along(const ColOutlinePoint& a, const ColOutlinePoint& b, const ColOutlinePoint& c) {
    return (c.x - a.x) * (b.x - a.x) + (c.y - a.y) * (b.y - a.y);
}
} // namespace

ColOutline::ColOutline(ColScratchScope& scratch, const lsVec3& normal, const lsVec3& origin,
                       int maxPoints)
    : mOrigin(origin), mMaxPoints(maxPoints),
      mPoints(scratch.take<ColOutlinePoint>(static_cast<std::size_t>(maxPoints) + 1)) {
    ColPlaneBasis(normal, &mU, &mV);
}

void ColOutline::add(const ColContact& contact) {
    const lsVec3 d = contact.position - mOrigin;
    const ColOutlinePoint point = {.x = d.dot(mU), .y = d.dot(mV), .contact = &contact};
    if (mSize < 2)
        insert(mSize, point);
    else if (mSize == 2)
        addToSegment(point);
    else
        updateHull(point);
    if (mSize > mMaxPoints)
        removeMinArea();
}

void ColOutline::insert(int i, const ColOutlinePoint& point) {
    const auto begin = mPoints.begin();
    std::move_backward(begin + i, begin + mSize, begin + mSize + 1);
    at(i) = point;
    ++mSize;
}

void ColOutline::remove(int i) {
    const auto begin = mPoints.begin();
    std::move(begin + i + 1, begin + mSize, begin + i);
    --mSize;
}

void ColOutline::measure(int i) {
    at(i).area = twiceArea(at(previous(i)), at(i), at(next(i)));
}

void ColOutline::addToSegment(const ColOutlinePoint& point) {
    const ColOutlinePoint &a = at(0), &b = at(1);
    const KitReal turn = twiceArea(a, b, point);
    if (std::abs(turn) > gColContactSimplifyGroupEpsilon) {
        insert(turn > 0 ? 2 : 1, point);
        for (int i = 0; i < 3; ++i)
            measure(i);
    } else if (along(a, b, point) < 0) {
        at(0) = point;
    } else if (along(b, a, point) < 0) {
        at(1) = point;
    }
}

void ColOutline::updateHull(const ColOutlinePoint& point) {
    const auto sees = [&](int i) { return twiceArea(at(i), at(next(i)), point) < 0; };
    // The visible edges are one run around the ring; it begins where the edge before is hidden.
    int first = 0;
    while (first < mSize && !(sees(first) && !sees(previous(first))))
        ++first;
    if (first == mSize)
        return; // inside, or nothing but rounding
    int last = first;
    while (sees(next(last)))
        last = next(last);
    replaceVisible(first, last, point);
}

/// Puts the point in the place of the corners between the edges first and last.
void ColOutline::replaceVisible(int first, int last, const ColOutlinePoint& point) {
    const auto begin = mPoints.begin();
    int place = first + 1;
    if (last >= first) {
        std::move(begin + last + 1, begin + mSize, begin + first + 1);
        mSize -= last - first;
    } else { // the run passes the end of the array
        std::move(begin + last + 1, begin + first + 1, begin);
        mSize = place = first - last;
    }
    insert(place, point);
    measure(place);
    measure(previous(place));
    measure(next(place));
}

void ColOutline::removeMinArea() {
    const auto leastOf = [&](auto value) {
        int least = -1;
        for (int i = 0; i < mSize; ++i)
            if (least < 0 ? value(at(i)) < kNever : value(at(i)) < value(at(least)))
                least = i;
        return least;
    };
    // Shallow corners by their area; with none, deep ones by the volume that they span.
    int least = leastOf([](const ColOutlinePoint& p) {
        return p.contact->separation > -kShallow ? p.area : kNever;
    });
    if (least < 0)
        least = leastOf([](const ColOutlinePoint& p) { return p.area * -p.contact->separation; });
    const int gone = std::max(least, 0);
    remove(gone);
    const int gap = gone < mSize ? gone : 0;
    measure(gap);
    measure(previous(gap));
}

bool ColOutline::isCollinear(int i, KitReal threshold) const {
    const ColContact& b = *at(i).contact;
    const lsVec3& a = at(previous(i)).contact->position;
    lsVec3 u = at(next(i)).contact->position - a;
    const KitReal length = u.normalize();
    const lsVec3 ab = b.position - a;
    const KitReal t = u.dot(ab);
    if (!(t > kMinAlong) || t > length)
        return false;
    const KitReal allowed = std::min(t, length - t) * threshold;
    return allowed * allowed > (ab - t * u).square_norm();
}

void ColOutline::removeCollinear(KitReal threshold) {
    if (!(threshold > 0))
        return;
    for (bool changed = true; changed;) {
        changed = false;
        for (int i = 0; i < mSize && mSize >= 3;) {
            if (!isCollinear(i, threshold)) {
                ++i;
                continue;
            }
            remove(i);
            changed = true;
        }
    }
    for (int i = 0; i < mSize; ++i)
        measure(i);
}

KitReal ColOutline::area() const {
    KitReal sum = 0;
    for (int i = 1; i + 1 < mSize; ++i)
        sum += twiceArea(at(0), at(i), at(i + 1));
    return 0.5 * sum;
}

bool ColOutline::holds(const ColContact* contact) const {
    return std::any_of(points().begin(), points().end(),
                       [&](const ColOutlinePoint& p) { return p.contact == contact; });
}

void ColOutline::prepend(const ColContact& contact) {
    if (mSize == mMaxPoints) {
        const auto distance = [&](const ColOutlinePoint& p) {
            return (p.contact->position - contact.position).square_norm();
        };
        const auto nearest =
            std::min_element(points().begin(), points().end(), [&](const auto& a, const auto& b) {
                return distance(a) < distance(b);
            });
        remove(static_cast<int>(nearest - points().begin()));
    }
    insert(0, {.contact = &contact});
}
