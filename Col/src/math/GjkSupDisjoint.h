#pragma once
#include <Col/ColModel.h>

/// Whether two convex geometries are apart, by their farthest points alone
/// (Gilbert, Johnson and Keerthi, "A Fast Procedure for Computing the Distance
/// Between Complex Objects", 1988): the point of their difference nearest to
/// the origin is sought over growing simplices until a direction parts them or
/// a simplex holds the origin. Shapes that just touch count as touching.
[[nodiscard]] bool GjkSupDisjoint(const ColModel& model1, const ColModel& model2);
