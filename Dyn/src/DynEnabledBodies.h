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
            const DynBody* next = bodies[i + kAhead];
            __builtin_prefetch(next->kiroBody.force); // and the torque beside it
            __builtin_prefetch(&next->enabledNext);
        }
        fn(bodies[i]);
    }
}
