#pragma once
#include "ColOutline.h"

struct ColRequest;

/// Most points that a face clipped by a face has.
constexpr int kColMaxFlatPoints = 8;

/// Whether ColReduceFlatPoints() can serve a request.
[[nodiscard]] bool ColCanReduceFlatPoints(const ColRequest& request, int maxContacts) noexcept;

/// What ColContactSimplify() would choose of contacts that share normal, dims and surface, before
/// these contacts are made: without duplicates, an outline with the deepest.
/// @param points 1 to 8 in the frame of the plane, with index; reordered
/// @param chosen room for 8, takes the indices in order
/// @return the number chosen; 0 if a point is not finite
int ColReduceFlatPoints(ColOutlinePoint* points, int count, int maxContacts,
                        const ColRequest& request, int* chosen) noexcept;
