#include "PluginExtensions.h"

#include "PluginImage.h"

#include "../ForEachUniverse.h"

#include <Hy/HyConstraint.h>
#include <Hy/HyConstraintRegistry.h>
#include <Hy/HyDynamicsExtensionRegistry.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

#include <vector>

namespace Hy::HyPluginSystem {
namespace {

template <class Objects>
auto objectsOf(const PluginImage& image, const Objects& objects) {
    std::vector<typename Objects::value_type> found;
    for (const auto object : objects)
        if (image.isClassOf(object))
            found.push_back(object);
    return found;
}

void warn(const PluginImage& image, const char* what) {
    HyWarning(0, "HyPluginManager::unload: %s has left %s behind, which is dropped.\n",
              image.getPath().c_str(), what);
}

template <class Registry>
void dropFactories(const PluginImage& image, Registry& registry, const char* what) {
    for (auto* factory : objectsOf(image, registry.getFactories())) {
        warn(image, what);
        registry.unregisterFactory(factory);
        factory->destroyAll();
    }
}

/// The end of one may be that of others.
template <class Objects>
void dropMembers(const PluginImage& image, const Objects& members, const char* what) {
    for (HySafeWalk walk(members); auto* object = walk.next();)
        if (image.isClassOf(object)) {
            warn(image, what);
            delete object;
        }
}

bool hasLeftAny(const PluginImage& image) {
    bool any = !objectsOf(image, HyDynamicsExtensionRegistry::instance().getFactories()).empty() ||
               !objectsOf(image, HyConstraintRegistry::instance().getFactories()).empty();
    forEachUniverse([&](const HyUniverse& universe) {
        any = any || !objectsOf(image, universe.getExtensions()).empty() ||
              !objectsOf(image, universe.getConstraints()).empty();
    });
    return any;
}

} // namespace

bool dropExtensions(const PluginImage& image) {
    const HyFrame* frame = HyFrame::currentInstance();
    if (frame && frame->isStepping() && hasLeftAny(image))
        return false; // perhaps this is a call out of one of them
    dropFactories(image, HyDynamicsExtensionRegistry::instance(), "an extension factory");
    dropFactories(image, HyConstraintRegistry::instance(), "a constraint factory");
    forEachUniverse([&image](const HyUniverse& universe) {
        dropMembers(image, universe.getExtensions(), "an extension");
        dropMembers(image, universe.getConstraints(), "a constraint");
    });
    return true;
}

} // namespace Hy::HyPluginSystem
