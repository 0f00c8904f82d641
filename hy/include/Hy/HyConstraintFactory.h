#pragma once
#include <Hy/HyFactory.h>
#include <Kit/KitApi.h>

#include <typeinfo>

namespace Hy {
class HyConstraint;

/// Makes constraints of one class, which a host asks for by name, and owns them. Stands in
/// HyConstraintRegistry while it lives. A constraint does not know its factory, which yet hears of its
/// end.
class HY_API HyConstraintFactory : public HyFactory<HyConstraint> {
public:
    explicit HyConstraintFactory(const std::string& name);
    /// Leaves the registry and deletes the constraints that it made.
    ~HyConstraintFactory() override;

    /// The registered factory that made a constraint, or null.
    [[nodiscard]] static HyConstraintFactory* findFactoryCreatorOf(const HyConstraint* constraint);

    /// Class of the constraints.
    [[nodiscard]] virtual const std::type_info* getConstraintRTTI() const = 0;
    /// A new constraint, or null where none can be made.
    HyConstraint* createConstraint();
    /// Those that it made and that live, in the order of making.
    [[nodiscard]] const HyArray<HyConstraint*>& getConstraints() const { return getProducts(); }
    /// For the constraint, whose end it is. Whether it was made here.
    bool onConstraintDestroyed(HyConstraint* constraint) { return forget(constraint); }

protected:
    virtual HyConstraint* createConstraintImpl() = 0;
};

} // namespace Hy
