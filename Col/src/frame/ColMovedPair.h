#pragma once
#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Kit/lsTransform.h>

/// Farthest that a point of a model may lie outside the joined boxes of its two ends while it moves
/// for a time, m: the bend of its path and the arc of its turn.
[[nodiscard]] KitReal ColModelStrayDistance(const ColModel& model, KitReal duration);

/// A pair at another time, on the stack: models are shared by threads, so it is copies that move. The
/// memory and flags that its generator leaves go back to the pair at the end.
class ColMovedPair {
public:
    explicit ColMovedPair(ColModelPair* original);
    ~ColMovedPair();
    ColMovedPair(const ColMovedPair&) = delete;
    ColMovedPair& operator=(const ColMovedPair&) = delete;

    /// Puts both models, their boxes too, where they are after a time, s.
    void moveTo(KitReal time);
    [[nodiscard]] ColModelPair* pair() noexcept { return &mPair; }
    [[nodiscard]] const ColModel& model(int i) const noexcept { return mModels[i]; }
    /// Makes the result one of the original pair: contacts name its models.
    void nameOriginals(ColIntersectResult* result) const;

private:
    ColModelPair* mOriginal;
    ColModelPair mPair;
    ColModel mModels[2];
    lsTransform mTransforms[2];
    bool mIsPlaced[2] = {false, false}; ///< stands where it stays
};
