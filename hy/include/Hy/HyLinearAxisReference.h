#pragma once
#include <Kit/KitApi.h>

struct DynBaseConstraint;
struct DynPositionAxes;

namespace Hy {

/// For joints that hold two points together: along whose axes the three position equations act. It
/// matters once they are relaxed.
class HY_API HyLinearAxisReference {
public:
    enum LinearAxisReferencePartIndex {
        kLinearAxisReferencePartIndex0 = 0,
        kLinearAxisReferencePartIndex1 = 1,
        kLinearAxisReferencePartIndexNone = -1 ///< the world's axes
    };

    /// Another value: a warning, no change.
    void setLinearAxisReferencePartIndex(LinearAxisReferencePartIndex index);
    [[nodiscard]] LinearAxisReferencePartIndex getLinearAxisReferencePartIndex() const;

protected:
    HyLinearAxisReference(DynBaseConstraint* record, DynPositionAxes* axes)
        : mRecord(record), mAxes(axes) {}
    ~HyLinearAxisReference() = default;

private:
    DynBaseConstraint* mRecord; ///< not owned, as its part that holds the reference
    DynPositionAxes* mAxes;
};

} // namespace Hy
