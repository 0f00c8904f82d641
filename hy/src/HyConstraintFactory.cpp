#include <Hy/HyConstraintFactory.h>

#include <Hy/HyConstraint.h>
#include <Hy/HyConstraintRegistry.h>

namespace Hy {

HyConstraintFactory::HyConstraintFactory(const std::string& name) : HyFactory(name) {
    HyConstraintRegistry::instance().registerFactory(this);
}

HyConstraintFactory::~HyConstraintFactory() {
    HyConstraintRegistry::instance().unregisterFactory(this);
    destroyAll();
}

HyConstraintFactory* HyConstraintFactory::findFactoryCreatorOf(const HyConstraint* constraint) {
    for (HyConstraintFactory* factory : HyConstraintRegistry::instance().getFactories())
        if (factory->contains(constraint))
            return factory;
    return nullptr;
}

HyConstraint* HyConstraintFactory::createConstraint() {
    HyConstraint* constraint = createConstraintImpl();
    if (constraint)
        add(constraint);
    return constraint;
}

HyConstraintRegistry& HyConstraintRegistry::instance() {
    static HyConstraintRegistry registry;
    return registry;
}

} // namespace Hy
