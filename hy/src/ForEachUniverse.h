#pragma once
#include <Hy/HyFrame.h>

namespace Hy {

/// Calls with each universe of the present frame, in their order; not at all without a frame.
template <typename Call>
void forEachUniverse(Call call) {
    const HyFrame* frame = HyFrame::currentInstance();
    for (int i = 0; frame && i < frame->getUniverseCount(); ++i)
        call(*frame->getUniverse(i));
}

} // namespace Hy
