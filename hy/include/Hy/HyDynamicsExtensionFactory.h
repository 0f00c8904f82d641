#pragma once
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyFactory.h>

#include <typeinfo>

namespace Hy {

/// Makes extensions of one class, which a host asks for by name, and owns them. Stands in
/// HyDynamicsExtensionRegistry while it lives.
class HY_API HyDynamicsExtensionFactory : public HyFactory<HyDynamicsExtension> {
public:
    explicit HyDynamicsExtensionFactory(const std::string& name);
    /// Leaves the registry and deletes the extensions that it made.
    ~HyDynamicsExtensionFactory() override;

    /// Class of the extensions.
    [[nodiscard]] virtual const std::type_info* getExtensionRTTI() const = 0;
    /// A new extension, or null where none can be made.
    HyDynamicsExtension* createExtension();
    /// Those that it made and that live, in the order of making.
    [[nodiscard]] const HyArray<HyDynamicsExtension*>& getExtensions() const {
        return getProducts();
    }
    /// For the extension, whose end it is; nothing for one of others.
    void onExtensionDestroyed(HyDynamicsExtension* extension) { forget(extension); }

protected:
    virtual HyDynamicsExtension* createExtensionImpl() = 0;
};

/// The factory of a class with a default constructor.
template <class T>
class HyDynamicsExtensionFactoryImpl : public HyDynamicsExtensionFactory {
public:
    using HyDynamicsExtensionFactory::HyDynamicsExtensionFactory;
    [[nodiscard]] const std::type_info* getExtensionRTTI() const override { return &typeid(T); }

protected:
    HyDynamicsExtension* createExtensionImpl() override { return new T; }
};

} // namespace Hy
