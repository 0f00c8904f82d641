#pragma once
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>

/// Calls fn(DynBody*) on each enabled body, in an order that is not told: what is done to one must not
/// depend on another. fn enables and disables none.
template <class Fn>
void DynForEachEnabledBody(DynWorld* world, Fn fn) {
    /// Far enough ahead for the memory to answer in time.
    constexpr int kAhead = 4;
    const DynBuffer<DynBody*>& bodies = world->scratch->enabledBodies;
    for (int i = 0; i < bodies.size(); ++i) {
        if (i + kAhead < bodies.size()) {
            const DynsBody& next = bodies[i + kAhead]->kiroBody;
            __builtin_prefetch(next.force);
            __builtin_prefetch(next.torque + 3);
        }
        fn(bodies[i]);
    }
}
