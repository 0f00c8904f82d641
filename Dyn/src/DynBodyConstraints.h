#pragma once
#include <Kit/KitTypes.h>

struct DynBody;

// What a body does to its enabled constraints when its own state changes. All walk constraintList.

/// Lets each constraint bind the body anew in each slot that holds it, after its state flags changed.
void DynBodyRefreshConstraints(DynBody* body);
/// Clears the partitioner's notes on the body and its constraints.
void DynBodyResetGraphData(DynBody* body);
/// Follows a change of the centre-of-mass frame: an attachment keeps its place in the body.
/// @param change old centre-of-mass frame, seen from the new one
void DynBodyAdaptAttachments(DynBody* body, const KitMatrix4 change);
/// Keeps each attachment, but those of contacts, where it stands in the world.
/// @param oldTM centre-of-mass transform before the body moved
void DynBodyHoldAttachments(DynBody* body, const KitMatrix4 oldTM);
/// Takes the body out of all slots that hold it, those of disabled constraints too.
void DynBodyLeaveConstraints(DynBody* body);
