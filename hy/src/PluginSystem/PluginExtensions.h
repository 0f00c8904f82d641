#pragma once

namespace Hy::HyPluginSystem {
class PluginImage;

/// Takes factories of extensions and of constraints of a library out of their registries, deletes what
/// they made, and deletes the extensions and constraints of its classes that universes of the frame
/// hold, each with a warning. False, and nothing happens, if there are any and the frame is in a step.
[[nodiscard]] bool dropExtensions(const PluginImage& image);

} // namespace Hy::HyPluginSystem
