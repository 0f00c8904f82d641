#pragma once
#include <Col/ColCompositeGeometry.h>
#include <Col/ColModel.h>

#include <optional>

[[nodiscard]] inline const ColCompositeGeometry& ColCompositeOf(const ColGeometry* g) noexcept {
    return *static_cast<const ColCompositeGeometry*>(g);
}

[[nodiscard]] inline bool ColIsEnabled(const ColModel* model) noexcept {
    return model->mTemporaryDisabledStatus == kNotTemporaryDisabled;
}

/// World transform of a child of a composite at a transform, null for the identity.
[[nodiscard]] inline lsTransform ColChildTransform(const ColModel& child,
                                                   const lsTransform* parent) noexcept {
    lsTransform tm = child.mRelTM ? *child.mRelTM : lsTransform();
    if (parent)
        tm.thisIsFirstThenSecond(tm, *parent);
    return tm;
}

/// A child where its composite stands, which may be elsewhere than the child itself is at present:
/// then this is a copy of the model, on the stack of the caller, since other threads read the
/// child.
class ColPlacedChild {
public:
    ColPlacedChild(ColModel* child, const lsTransform& parent);
    ColPlacedChild(const ColPlacedChild&) = delete;
    ColPlacedChild& operator=(const ColPlacedChild&) = delete;

    [[nodiscard]] ColModel* model() { return mCopy ? &*mCopy : mChild; }
    /// The child itself for its copy; any other model for itself.
    [[nodiscard]] ColModel* original(ColModel* model) {
        return mCopy && model == &*mCopy ? mChild : model;
    }

private:
    ColModel* mChild;
    lsTransform mTransform;
    std::optional<ColModel> mCopy;
};
