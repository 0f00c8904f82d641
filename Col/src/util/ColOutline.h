#pragma once
#include <Col/ColContact.h>
#include <Col/ColScratch.h>

#include <span>

/// A contact in the plane of the outline.
struct ColOutlinePoint {
    KitReal x = 0, y = 0; ///< m
    const ColContact* contact = nullptr;
    KitReal area = 0; ///< twice the triangle of the point and its neighbours, m^2
};

/// Convex outline of contacts, counterclockwise about the normal and built contact by contact. It
/// never holds more than maxPoints: the corner that spans the least goes.
class ColOutline {
public:
    /// @param normal unit  @param maxPoints at least 3
    ColOutline(ColScratchScope& scratch, const lsVec3& normal, const lsVec3& origin, int maxPoints);

    void add(const ColContact& contact);
    /// Drops corners that lie near the line of their neighbours, as seen from the nearer of them.
    void removeCollinear(KitReal threshold);
    /// Area inside, m^2.
    [[nodiscard]] KitReal area() const;
    [[nodiscard]] bool holds(const ColContact* contact) const;
    /// Puts a contact first that need not be a corner; in a full outline the nearest one gives way.
    void prepend(const ColContact& contact);
    [[nodiscard]] std::span<const ColOutlinePoint> points() const {
        return mPoints.first(static_cast<std::size_t>(mSize));
    }

private:
    [[nodiscard]] ColOutlinePoint& at(int i) { return mPoints[static_cast<std::size_t>(i)]; }
    [[nodiscard]] const ColOutlinePoint& at(int i) const {
        return mPoints[static_cast<std::size_t>(i)];
    }
    [[nodiscard]] int next(int i) const { return i + 1 < mSize ? i + 1 : 0; }
    [[nodiscard]] int previous(int i) const { return i > 0 ? i - 1 : mSize - 1; }
    void insert(int i, const ColOutlinePoint& point);
    void remove(int i);
    void measure(int i);
    void addToSegment(const ColOutlinePoint& point);
    void updateHull(const ColOutlinePoint& point);
    void replaceVisible(int first, int last, const ColOutlinePoint& point);
    void removeMinArea();
    [[nodiscard]] bool isCollinear(int i, KitReal threshold) const;

    lsVec3 mOrigin, mU, mV;
    int mMaxPoints;
    int mSize = 0;
    std::span<ColOutlinePoint> mPoints;
};
