#include <Hy/HyDynamicsExtensionFactory.h>

#include <Hy/HyDynamicsExtensionRegistry.h>

namespace Hy {

HyDynamicsExtensionFactory::HyDynamicsExtensionFactory(const std::string& name) : HyFactory(name) {
    HyDynamicsExtensionRegistry::instance().registerFactory(this);
}

HyDynamicsExtensionFactory::~HyDynamicsExtensionFactory() {
    HyDynamicsExtensionRegistry::instance().unregisterFactory(this);
    destroyAll();
}

HyDynamicsExtension* HyDynamicsExtensionFactory::createExtension() {
    HyDynamicsExtension* extension = createExtensionImpl();
    if (!extension)
        return nullptr;
    add(extension);
    extension->mFactory = this;
    return extension;
}

HyDynamicsExtensionRegistry& HyDynamicsExtensionRegistry::instance() {
    static HyDynamicsExtensionRegistry registry;
    return registry;
}

} // namespace Hy
