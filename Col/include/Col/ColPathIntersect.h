#pragma once
#include <Col/ColIntersectResult.h>
#include <Col/ColModelPair.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct ColModel;

// Contacts of fast models along their paths: both models are moved by their velocities in sub-steps so
// short that neither jumps through the other, up to the first at which they touch. It is copies that
// move; the models stay.

/// Share of a model's size that a search which only looks for a touch may skip at a time; see
/// ColRequest::maxPenetrationFactor for the share of the sub-steps themselves.
extern HY_API KitReal gColSubSteppingPenetrationFactor;

/// Number of sub-steps, 1 to 1000, in which no fast model moves or turns by more than a share of its
/// own size along an axis of the world. Its size is that of its box, mBounds.
/// @param time s
/// @param maxPenetrationFactor the share, positive
[[nodiscard]] HY_API int ColGetPathIntersectSubStep(const ColModel* model1, const ColModel* model2,
                                                    KitReal time, KitReal maxPenetrationFactor);

/// Contacts of a pair at the first sub-step within the path at which it touches; safeTime of the
/// result is the time of that sub-step, s. Without a fast model, or with a path of one sub-step, the
/// contacts at present.
/// @param time length of the path, s
/// @param startTime no touch happens earlier, s
/// @return whether the pair touches
HY_API int ColGenericPathIntersectFn(ColModelPair* pair, ColIntersectResult* result, KitReal time,
                                     KitReal startTime);
/// The whole path: the path function of pairs that have no safe time.
HY_API int ColGenericPathIntersect(ColModelPair* pair, ColIntersectResult* result, KitReal time);
/// The path from the pair's safe time on: the path function of pairs that have one.
HY_API int ColGenericPathIntersectWithSafeTime(ColModelPair* pair, ColIntersectResult* result,
                                               KitReal time);
