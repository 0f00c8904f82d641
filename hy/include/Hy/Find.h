#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy {
class HyCollisionGeometry;
class HyConstraint;
class HyDynamicsExtension;
class HyPart;
class HyUniverse;

/// Finds objects by their exact name: the first in the order of creation, or null. An object
/// without a name gets its default one.
namespace Find {

/// Searches the universes of the frame in their order; null without a frame.
[[nodiscard]] HY_API HyPart* part(const std::string& name);
/// Searches one universe; for null, a warning.
[[nodiscard]] HY_API HyPart* part(const std::string& name, const HyUniverse* universe);
[[nodiscard]] HY_API HyConstraint* constraint(const std::string& name);
[[nodiscard]] HY_API HyConstraint* constraint(const std::string& name, const HyUniverse* universe);
[[nodiscard]] HY_API HyCollisionGeometry* collisionGeometry(const std::string& name);
[[nodiscard]] HY_API HyCollisionGeometry* collisionGeometry(const std::string& name,
                                                            const HyUniverse* universe);
[[nodiscard]] HY_API HyDynamicsExtension* extension(const std::string& name);
[[nodiscard]] HY_API HyDynamicsExtension* extension(const std::string& name,
                                                    const HyUniverse* universe);

} // namespace Find
} // namespace Hy
