#pragma once
#include <Col/ColContact.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColInteractions.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include "../util/ColFlatContacts.h"
#include "PrimitiveGeometry.h"

#include <algorithm>
#include <cstdint>

/// Points are kept if they lie deeper than this share of the pair's depth.
constexpr KitReal kIxKeptShare = 0.01;
/// Room of a generator for candidates and contacts.
constexpr int kIxMaxContacts = 48;
/// Vectors with a smaller square are null, m^2.
constexpr KitReal kIxNullSquare = 1e-15;

/// What a generator reads of a pair.
struct IxPairFrame {
    explicit IxPairFrame(const ColModelPair& pair) noexcept
        : tm1(ColTransformOrIdentity(pair.model1->mGlobalTM)),
          tm2(ColTransformOrIdentity(pair.model2->mGlobalTM)),
          eps(pair.model1->mPadding + pair.model2->mPadding) {}

    const lsTransform& tm1;
    const lsTransform& tm2;
    KitReal eps; ///< separation up to which the models count as touching, m
};

/// Geometry of a model whose type the table of interactions has checked.
template <class Geometry>
const Geometry& IxGeometry(const ColModel* model) noexcept {
    return *static_cast<const Geometry*>(model->mGeometry);
}

/// Frame `inner` seen from frame `outer`: rows are the inner axes in outer coordinates.
inline lsTransform IxRelative(const lsTransform& inner, const lsTransform& outer) noexcept {
    lsTransform relative;
    relative.thisIsFirstToSecond(inner, outer);
    return relative;
}

inline int IxNoContact(ColIntersectResult* result) noexcept {
    result->contactCount = result->groupCount = 0;
    return 0;
}

inline int IxMaxContacts(const ColModelPair& pair, const ColIntersectResult& result) noexcept {
    const auto room = static_cast<std::uint32_t>(std::max(result.contactMaxCount, 0));
    return static_cast<int>(std::min(pair.request->contactMaxCount, room));
}

/// The models touch and no contact is wanted.
inline int IxTouchOnly(ColIntersectResult* result) noexcept {
    result->contactCount = result->groupCount = 0;
    return 1;
}

/// Contacts of one pair before they are reduced, on the stack and not set beforehand.
template <int kRoom = kIxMaxContacts>
class IxContacts {
public:
    IxContacts() noexcept {}

    /// World axes; beyond the room it is dropped.
    void add(const lsVec3& position, const lsVec3& normal, KitReal separation, int dims,
             int surfaceIndex) noexcept {
        if (mCount == kRoom)
            return;
        ColContact* contact = new (&mContacts[mCount++]) ColContact;
        contact->position = position;
        contact->normal = normal;
        contact->separation = separation;
        contact->dims = static_cast<std::int16_t>(dims);
        contact->surfaceIndex = static_cast<std::int16_t>(surfaceIndex);
    }
    [[nodiscard]] int count() const noexcept { return mCount; }

    /// Reduces the contacts into the result; the answer is whether one remains.
    int simplifyInto(ColIntersectResult* result, const lsVec3& normal) noexcept {
        result->contactCount = result->groupCount = 0;
        result->normal = normal;
        if (mCount > 0)
            result->contactCount = ColContactSimplify(&result->normal, mContacts, mCount, result);
        return result->contactCount > 0 ? 1 : 0;
    }

private:
    int mCount = 0;
    union {
        ColContact mContacts[kRoom];
    };
};

/// Points of one plane of contact, on one surface: those chosen become contacts, the others cost
/// nothing more.
class IxFlatPoints {
public:
    IxFlatPoints() noexcept {}

    /// @param x,y in the plane, counterclockwise about the normal from model2 to model1
    /// @param separation height over the plane, m
    void add(KitReal x, KitReal y, KitReal separation, int index) noexcept {
        mPoints[mCount++] = {
            .x = x, .y = y, .z = separation, .separation = separation, .index = index};
    }
    [[nodiscard]] int count() const noexcept { return mCount; }

    /// Writes the contacts that ColContactSimplify() would leave, and their group.
    /// @param position of the point with an index, world
    /// @return false, with nothing written, if the request needs more than an outline
    template <class Position>
    bool reduceInto(const ColModelPair& pair, ColIntersectResult* result, const lsVec3& normal,
                    int dims, int surface, Position position) noexcept {
        const int most = IxMaxContacts(pair, *result);
        if (mCount == 0 || !ColCanReduceFlatPoints(*pair.request, most))
            return false;
        int chosen[kColMaxFlatPoints + 1];
        KitReal separations[kColMaxFlatPoints];
        for (int i = 0; i < mCount; ++i)
            separations[mPoints[i].index] = mPoints[i].separation;
        const int written = ColReduceFlatPoints(mPoints, mCount, most, *pair.request, chosen);
        if (written == 0)
            return false;
        for (int i = 0; i < written; ++i) {
            ColContact& contact = result->contacts[i];
            contact = ColContact{};
            contact.position = position(chosen[i]);
            contact.normal = normal;
            contact.separation = separations[chosen[i]];
            contact.dims = static_cast<std::int16_t>(dims);
            contact.surfaceIndex = static_cast<std::int16_t>(surface);
        }
        result->normal = normal;
        result->contactCount = written;
        result->groupCount = pair.request->groupMaxCount >= 1 ? 1 : 0;
        if (result->groupCount == 1)
            result->groupResult[0] = {.contactCount = written, .surface = 1, .normal = normal};
        return true;
    }

private:
    int mCount = 0;
    union {
        ColOutlinePoint mPoints[kColMaxFlatPoints];
    };
};

/// Writes the one contact of a pair with a ball, and its group: a disc of contact as large as the
/// ball's section at the depth, or at the tolerance eps if that is more.
/// @param position on the surface of model1, world
/// @param radius the smaller radius of curvature, m
int IxWriteSingleContact(const ColModelPair& pair, ColIntersectResult* result,
                         const lsVec3& position, const lsVec3& normal, KitReal separation, int dims,
                         KitReal radius, KitReal eps) noexcept;

/// Answers a time before which a pair cannot touch: the gap along an axis, less the tolerance, over
/// the fastest that it can close while speeds of rotation and accelerations stay.
/// @param normal unit separating axis from model2 to model1, world
/// @param separation along the normal, m
/// @param reach1,reach2 bounding radii about the models' origins, m
void IxSafeTime(const ColModelPair& pair, const lsVec3& normal, KitReal separation, KitReal reach1,
                KitReal reach2, KitReal maxTime, ColSafeTimeResult* result) noexcept;
