#pragma once
#include <Hy/HyVector3.h>

#include <cstddef>
#include <iterator>
#include <memory>

struct ColContact;
struct ColIntersectResult;
struct ColModelPair;

namespace Hy {
class HyCollisionContact;
class HyCollisionGeometry;
class HyPart;

/// What an intersection of two geometries gave. One handed to a subscriber is valid during the call;
/// one made with a capacity owns its contacts.
class HY_API HyIntersectResult {
public:
    /// Goes from contact to contact.
    class HY_API CollisionContactIterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = HyCollisionContact;
        using difference_type = std::ptrdiff_t;
        using pointer = const HyCollisionContact*;
        using reference = HyCollisionContact;

        CollisionContactIterator() = default;
        CollisionContactIterator(ColContact* contact, const HyIntersectResult* result)
            : m_pColContact(contact), mResult(result) {}
        /// A view of the contact with the pair's two geometries; not at the end.
        [[nodiscard]] HyCollisionContact operator*() const;
        CollisionContactIterator& operator++();
        CollisionContactIterator operator++(int);
        bool operator==(const CollisionContactIterator& other) const {
            return m_pColContact == other.m_pColContact;
        }

    private:
        ColContact* m_pColContact = nullptr;
        const HyIntersectResult* mResult = nullptr;
    };

    /// Room for contacts of its own; 0 asks for touch alone.
    explicit HyIntersectResult(std::size_t contactCapacity);
    /// A view; null gives an empty result.
    explicit HyIntersectResult(ColIntersectResult* result);
    HyIntersectResult(const HyIntersectResult&) = delete;
    HyIntersectResult& operator=(const HyIntersectResult&) = delete;
    virtual ~HyIntersectResult();
    [[nodiscard]] virtual const char* getClassName() const { return "HyIntersectResult"; }

    /// No contacts, no touch, no pair.
    void reset();
    [[nodiscard]] bool isPairTouching() const;
    /// Whether the pair has ended since, as when a subscriber removed one of its geometries.
    [[nodiscard]] bool hasPairEnded() const;
    [[nodiscard]] int getContactMaxCount() const;
    [[nodiscard]] int getContactCount() const;
    /// Time of the first touch within the step, s.
    [[nodiscard]] HyReal getSafeTime() const;
    /// Representative normal, from the second geometry towards the first.
    void getContactsNormal(HyVector3& normal) const;

    // Groups of contacts of about one normal; an index out of range gives zeros.

    [[nodiscard]] int getGroupCount() const;
    void getGroupNormal(int group, HyVector3& normal) const;
    /// Area of contact, m^2, or 1 where the request did not ask for it.
    [[nodiscard]] HyReal getGroupSurface(int group) const;
    [[nodiscard]] int getGroupContactCount(int group) const;
    [[nodiscard]] int getGroupFirstContactIndex(int group) const;

    [[nodiscard]] CollisionContactIterator collisionContactBegin() const;
    [[nodiscard]] CollisionContactIterator collisionContactEnd() const;
    /// The end for an index out of range.
    [[nodiscard]] CollisionContactIterator getContact(int index) const;

    // Who met. Without a pair the arguments stay.

    void getCollisionGeometryPair(HyCollisionGeometry*& g1, HyCollisionGeometry*& g2) const;
    /// Null where a geometry is in no part.
    void getEntityPair(HyPart*& p1, HyPart*& p2) const;
    void getResponseIDPair(int& id1, int& id2) const;

    [[nodiscard]] ColIntersectResult* getColIntersectResult() const { return mIntersectResult; }
    /// Keeps a copy of a pair that is about to go, as the pair of a result that owns its contacts.
    void keepPair(const ColModelPair& pair);

private:
    struct Owned;
    std::unique_ptr<Owned> mOwned; ///< null for a view
    ColIntersectResult* mIntersectResult = nullptr;
};

} // namespace Hy
