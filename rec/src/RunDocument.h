#pragma once
#include "RunShape.h"
#include "RunTrack.h"

#include <Hy/HyVector3.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Hy {

/// One thing that was recorded, from its first sample to its last.
struct RunActor {
    static constexpr std::uint32_t kStillThere = ~std::uint32_t{0};

    std::string name;
    bool isStatic = false;
    std::vector<RunShape> shapes;
    RunTrack track;
    std::uint32_t gone = kStillThere; ///< sample from which on it is not there
};

/// What a file is made of.
struct RunContents {
    const std::vector<RunActor>& actors;
    const RunTrack& forces; ///< any number of them a sample
    bool withForces;
    const RunChunks& chunks;
    const std::vector<double>& times; ///< of the samples, s
    HyVector3 origin;
};

/// A binary glTF file of a run; empty if it would be larger than the format allows.
[[nodiscard]] std::string makeRunDocument(const RunContents& run);

} // namespace Hy
