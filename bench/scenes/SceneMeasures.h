#pragma once
#include "Measures.h"

namespace bench {

/// What a scene measures besides overlap and joints.
void addSceneMeasures(const Scene& scene, const std::string& cache,
                      std::vector<std::unique_ptr<Measure>>& measures);

} // namespace bench
