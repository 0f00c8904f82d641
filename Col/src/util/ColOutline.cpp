#include "ColOutline.h"
#include <Col/ColSimplify.h>
#include <Kit/lsVec3.h>

#include <algorithm>
#include <cmath>

namespace {
/// Contacts less deep than this carry nothing, m; they leave the outline first.
constexpr KitReal kShallow = 1e-7;
constexpr KitReal kMinAlong = 1e-14; ///< m

/// Twice the area of a triangle, positive if counterclockwise.
KitReal twiceArea(const ColOutlinePoint& a, const ColOutlinePoint& b, const ColOutlinePoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// (c - a) . (b - a)
KitReal along(const ColOutlinePoint& a, const ColOutlinePoint& b, const ColOutlinePoint& c) {
    return (c.x - a.x) * (b.x - a.x) + (c.y - a.y) * (b.y - a.y);
}
} // namespace

void ColOutline::add(const ColOutlinePoint& point) noexcept {
    if (mSize < 2)
        insert(mSize, point);
    else if (mSize == 2)
        addToSegment(point);
    else
        updateHull(point);
    if (mSize > mMaxPoints)
        removeMinArea();
}

// Rings are short: loops cost less than a call.
void ColOutline::insert(int i, const ColOutlinePoint& point) noexcept {
    for (int k = mSize++; k > i; --k)
        mPoints[k] = mPoints[k - 1];
    mPoints[i] = point;
}

void ColOutline::remove(int i) noexcept {
    --mSize;
    for (int k = i; k < mSize; ++k)
        mPoints[k] = mPoints[k + 1];
}

void ColOutline::measure(int i) noexcept {
    mPoints[i].area = twiceArea(mPoints[previous(i)], mPoints[i], mPoints[next(i)]);
}

void ColOutline::addToSegment(const ColOutlinePoint& point) noexcept {
    const ColOutlinePoint &a = mPoints[0], &b = mPoints[1];
    const KitReal turn = twiceArea(a, b, point);
    if (std::abs(turn) > gColContactSimplifyGroupEpsilon) {
        insert(turn > 0 ? 2 : 1, point);
        for (int i = 0; i < 3; ++i)
            measure(i);
    } else if (along(a, b, point) < 0) {
        mPoints[0] = point;
    } else if (along(b, a, point) < 0) {
        mPoints[1] = point;
    }
}

void ColOutline::updateHull(const ColOutlinePoint& point) noexcept {
    const auto sees = [&](int i) { return twiceArea(mPoints[i], mPoints[next(i)], point) < 0; };
    // The visible edges are one run around the ring; it begins where the edge before is hidden.
    int first = 0;
    for (bool seenBefore = sees(mSize - 1); first < mSize; ++first) {
        const bool seen = sees(first);
        if (seen && !seenBefore)
            break;
        seenBefore = seen;
    }
    if (first == mSize)
        return; // inside, or nothing but rounding
    int last = first;
    while (sees(next(last)))
        last = next(last);
    replaceVisible(first, last, point);
}

/// Puts the point in the place of the corners between the edges first and last.
void ColOutline::replaceVisible(int first, int last, const ColOutlinePoint& point) noexcept {
    int place = first + 1;
    if (last >= first) {
        const int gone = last - first;
        mSize -= gone;
        if (gone > 0)
            for (int k = place; k < mSize; ++k)
                mPoints[k] = mPoints[k + gone];
    } else { // the run passes the end of the array
        mSize = place = first - last;
        for (int k = 0; k < place; ++k)
            mPoints[k] = mPoints[k + last + 1];
    }
    insert(place, point);
    measure(place);
    measure(previous(place));
    measure(next(place));
}

void ColOutline::removeMinArea() noexcept {
    // Shallow corners by their area; with none, deep ones by the volume that they span.
    int shallow = -1, deep = 0;
    KitReal leastArea = kKitInfinity, leastVolume = kKitInfinity;
    for (int i = 0; i < mSize; ++i) {
        const ColOutlinePoint& p = mPoints[i];
        const KitReal volume = p.area * -p.separation;
        if (p.separation > -kShallow && p.area < leastArea) {
            leastArea = p.area;
            shallow = i;
        }
        if (volume < leastVolume) {
            leastVolume = volume;
            deep = i;
        }
    }
    const int gone = shallow < 0 ? deep : shallow;
    remove(gone);
    const int gap = gone < mSize ? gone : 0;
    measure(gap);
    measure(previous(gap));
}

// With b between a and c, L = |c - a| and t = s / L the way of b's foot from a, all is compared as
// squares times L^2: |(b - a) x (c - a)|^2 is that of b's distance from the line.
bool ColOutline::isCollinear(int i, KitReal threshold) const noexcept {
    const ColOutlinePoint &p = mPoints[previous(i)], &b = mPoints[i], &c = mPoints[next(i)];
    const lsVec3 ab(b.x - p.x, b.y - p.y, b.z - p.z), ac(c.x - p.x, c.y - p.y, c.z - p.z);
    const KitReal s = ac.dot(ab), length2 = ac.square_norm();
    if (!(s > 0 && s * s > kMinAlong * kMinAlong * length2) || s > length2)
        return false;
    const KitReal allowed = std::min(s, length2 - s) * threshold;
    return allowed * allowed > ab.cross(ac).square_norm();
}

void ColOutline::removeCollinear(KitReal threshold) noexcept {
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
}

KitReal ColOutline::area() const noexcept {
    KitReal sum = 0;
    for (int i = 1; i + 1 < mSize; ++i)
        sum += twiceArea(mPoints[0], mPoints[i], mPoints[i + 1]);
    return 0.5 * sum;
}

void ColOutline::prepend(const ColOutlinePoint& point) noexcept {
    int nearest = 0;
    KitReal least = kKitInfinity;
    for (int i = 0; i < mSize; ++i) {
        if (mPoints[i].index == point.index)
            return;
        const lsVec3 d(mPoints[i].x - point.x, mPoints[i].y - point.y, mPoints[i].z - point.z);
        if (d.square_norm() < least) {
            least = d.square_norm();
            nearest = i;
        }
    }
    if (mSize == mMaxPoints)
        remove(nearest);
    insert(0, point);
}
