#pragma once
#include <Hy/HyArray.h>

namespace Hy {
class HyPluginStepper;

/// All that exist, in the order of making.
[[nodiscard]] HyArray<HyPluginStepper*>& HyLivePluginSteppers();

namespace HyPluginSystem {
class PluginImage;

/// Takes factories of a library out of their registry and its steppers out of the frame, each with a
/// warning. False if code of the library may still be called: the frame is in a step, or a stepper
/// lives that does not go with the library.
[[nodiscard]] bool dropSteppers(const PluginImage& image);

} // namespace HyPluginSystem
} // namespace Hy
