#include <Hy/HyLinearAxisReference.h>

#include <Dyn/DynConstraint.h>
#include <Dyn/DynPositionAxes.h>

namespace Hy {

void HyLinearAxisReference::setLinearAxisReferencePartIndex(LinearAxisReferencePartIndex index) {
    DynPositionAxesSetReferenceBody(mAxes, index);
    DynConstraintEnableBodies(mRecord);
}

HyLinearAxisReference::LinearAxisReferencePartIndex
HyLinearAxisReference::getLinearAxisReferencePartIndex() const {
    return static_cast<LinearAxisReferencePartIndex>(mAxes->linearAxisReferenceBody);
}

} // namespace Hy
