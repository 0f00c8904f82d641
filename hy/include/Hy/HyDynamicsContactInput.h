#pragma once
#include <Hy/HyClass.h>
#include <Hy/HyDynamicsResponseInput.h>

#include <cstddef>
#include <iterator>

struct ColIntersectResult;
struct ColRequest;
struct DynBaseConstraint;

namespace Hy {
class HyDynamicsContact;

/// A walk over the contacts of one pair, for intersect subscribers: they may move a contact, change
/// its friction direction, duplicate it, or regroup them all. Valid during the notification.
class HY_API HyDynamicsContactInput
    : public HyClass<kHyDynamicsContactInputClassId, HyDynamicsResponseInput> {
public:
    /// Goes from contact to contact; ends at null.
    class HY_API DynamicsContactIterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = HyDynamicsContact*;
        using difference_type = std::ptrdiff_t;
        using pointer = HyDynamicsContact* const*;
        using reference = HyDynamicsContact*;

        DynamicsContactIterator() = default;
        explicit DynamicsContactIterator(HyDynamicsContact* contact) : m_pContact(contact) {}
        /// Null at the end.
        [[nodiscard]] HyDynamicsContact* operator*() const { return m_pContact; }
        /// Stays at the end.
        DynamicsContactIterator& operator++();
        DynamicsContactIterator operator++(int);
        bool operator==(const DynamicsContactIterator&) const = default;

    private:
        HyDynamicsContact* m_pContact = nullptr;
    };

    /// @param firstContact head of the list, not owned; null for an empty one
    explicit HyDynamicsContactInput(DynBaseConstraint* firstContact);

    [[nodiscard]] DynamicsContactIterator dynamicsContactBegin() const {
        return DynamicsContactIterator(mContactFirst);
    }
    [[nodiscard]] DynamicsContactIterator dynamicsContactEnd() const { return {}; }

    /// Appends an enabled copy of a contact: its parts, point, normal, direction, penetration and
    /// material, in a group of its own. The end if there is no contact to copy, or no room.
    DynamicsContactIterator addDuplicateContact(DynamicsContactIterator contact);
    /// Simplifies the enabled contacts anew: groups them by their normals, writes back what the
    /// groups say, and disables those that are left out.
    /// @param result of the pair; its contacts are overwritten
    /// @param request takes the place of the pair's while this runs; null keeps the pair's
    void recomputeContactGroups(ColIntersectResult* result, ColRequest* request);

private:
    HyDynamicsContact* mContactFirst;
};

} // namespace Hy
