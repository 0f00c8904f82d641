#pragma once
#include <Hy/HyArray.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Hy {

/// What a host or a plug-in makes of one class by its name: the products that still live, and their
/// end. Belongs to who made it, and takes its products along.
template <class Product>
class HyFactory {
public:
    explicit HyFactory(std::string name) : mName(std::move(name)) {}
    HyFactory(const HyFactory&) = delete;
    HyFactory& operator=(const HyFactory&) = delete;
    virtual ~HyFactory() = default;

    [[nodiscard]] const std::string& getName() const { return mName; }

    /// Deletes all products, the oldest first. A product that is in the course of a step must not go.
    void destroyAll() {
        HyArray<Product*> products;
        products.swap(mProducts); // so that their ends find nothing
        for (Product* product : products)
            delete product;
    }

protected:
    /// In the order of making.
    [[nodiscard]] const HyArray<Product*>& getProducts() const { return mProducts; }
    [[nodiscard]] bool contains(const Product* product) const {
        return std::find(mProducts.begin(), mProducts.end(), product) != mProducts.end();
    }
    void add(Product* product) {
        if (!contains(product))
            mProducts.push_back(product);
    }
    /// False if it is not among them.
    bool forget(Product* product) { return mProducts.eraseOnce(product); }

private:
    std::string mName;
    HyArray<Product*> mProducts;
};

/// The factories of one kind, not owned, in the order of registering.
template <class Factory>
class HyFactoryRegistry {
public:
    HyFactoryRegistry(const HyFactoryRegistry&) = delete;
    HyFactoryRegistry& operator=(const HyFactoryRegistry&) = delete;

    /// Null, or one that is here: nothing.
    void registerFactory(Factory* factory) {
        if (factory && std::find(mFactories.begin(), mFactories.end(), factory) == mFactories.end())
            mFactories.push_back(factory);
    }
    /// Whether it was here.
    bool unregisterFactory(Factory* factory) { return mFactories.eraseOnce(factory); }
    /// The first whose name is exactly this, or null.
    [[nodiscard]] Factory* getFactory(const std::string& name) const {
        for (Factory* factory : mFactories)
            if (factory->getName() == name)
                return factory;
        return nullptr;
    }
    [[nodiscard]] const HyArray<Factory*>& getFactories() const { return mFactories; }

protected:
    HyFactoryRegistry() = default;
    ~HyFactoryRegistry() = default;

private:
    HyArray<Factory*> mFactories;
};

} // namespace Hy
