#include "JointBuilder.h"

#include <Dync/DyncJoints.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <atomic>

namespace {

void warnOnce() {
    static std::atomic<bool> warned{false};
    if (!warned.exchange(true))
        KitWarning(12, "DyncAddGenericConstraint: more rows than the constraint's maximum.\n");
}

} // namespace

int DyncAddGenericConstraint(DynsConstraints* clist, DynBaseConstraint* constraint,
                             const DyncConstraintParameters* params) {
    auto& joint = static_cast<DynGenericConstraint&>(*constraint);
    JointBuilder b(clist, constraint, params);
    if (joint.rowsFunction != nullptr) {
        DyncGenericRows rows{constraint, params, &b.frames, &b.factors, &b.G};
        const int added = joint.rowsFunction(&rows, joint.data);
        if (added > constraint->bclH.max_rows)
            warnOnce();
        b.rows = std::clamp(added, 0, constraint->bclH.max_rows);
    }
    return b.end();
}
