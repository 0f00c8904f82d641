#include <Hy/HyDynamicsContact.h>

#include <Dyn/DynContact.h>
#include <Hy/HyContactProperties.h>

#include <memory>
#include <mutex>
#include <unordered_map>

namespace Hy {

// One view a record that was ever asked for; records are reused, and so are their views. The order of
// addresses decides nothing here.
HyContactProperties* HyDynamicsContact::getContactProperties() {
    using Proxies = std::unordered_map<DyncContactMaterial*, std::unique_ptr<HyContactProperties>>;
    static std::mutex mutex;
    static auto* const proxies = new Proxies; // outlives every contact
    const std::lock_guard lock(mutex);
    std::unique_ptr<HyContactProperties>& proxy = (*proxies)[&getContactMaterial()];
    if (!proxy)
        proxy = std::make_unique<HyContactProperties>(&getContactMaterial());
    return proxy.get();
}

} // namespace Hy
