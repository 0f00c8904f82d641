#pragma once

namespace Hy {

/// Starts the collision layer for its first user: types, interactions, tolerances and the default
/// request. Each call is matched by one of HyCollisionDetection_DECREF().
void HyCollisionDetection_INCREF();
/// Takes the collision layer down with its last user.
void HyCollisionDetection_DECREF();

} // namespace Hy
