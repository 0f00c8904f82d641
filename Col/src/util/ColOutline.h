#pragma once
#include <Kit/KitTypes.h>

#include <span>

/// A contact in the frame of the outline: its plane is z = 0, counterclockwise about the normal.
struct ColOutlinePoint {
    KitReal x, y, z;    ///< m
    KitReal separation; ///< m
    int index;          ///< of the contact
    KitReal area = 0;   ///< twice the triangle of the point and its neighbours, m^2
};

/// Convex outline of contacts, counterclockwise about the normal and built contact by contact. It
/// never holds more than maxPoints: the corner that spans the least goes.
class ColOutline {
public:
    /// @param room for maxPoints and one more, maxPoints at least 3; not owned
    explicit ColOutline(std::span<ColOutlinePoint> room) noexcept
        : mMaxPoints(static_cast<int>(room.size()) - 1), mPoints(room.data()) {}

    void add(const ColOutlinePoint& point) noexcept;
    /// Drops corners that lie near the line of their neighbours, as seen from the nearer of them.
    void removeCollinear(KitReal threshold) noexcept;
    /// Area inside, m^2.
    [[nodiscard]] KitReal area() const noexcept;
    /// Puts a contact first that need not be a corner; in a full outline the nearest one gives way. A
    /// corner stays where it is.
    void prepend(const ColOutlinePoint& point) noexcept;
    [[nodiscard]] std::span<const ColOutlinePoint> points() const noexcept {
        return {mPoints, static_cast<std::size_t>(mSize)};
    }

private:
    [[nodiscard]] int next(int i) const noexcept { return i + 1 < mSize ? i + 1 : 0; }
    [[nodiscard]] int previous(int i) const noexcept { return i > 0 ? i - 1 : mSize - 1; }
    void insert(int i, const ColOutlinePoint& point) noexcept;
    void remove(int i) noexcept;
    void measure(int i) noexcept;
    void addToSegment(const ColOutlinePoint& point) noexcept;
    void updateHull(const ColOutlinePoint& point) noexcept;
    void replaceVisible(int first, int last, const ColOutlinePoint& point) noexcept;
    void removeMinArea() noexcept;
    [[nodiscard]] bool isCollinear(int i, KitReal threshold) const noexcept;

    int mMaxPoints;
    int mSize = 0;
    ColOutlinePoint* mPoints;
};
