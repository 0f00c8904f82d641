#include <Col/ColPathIntersect.h>

#include <Col/ColInteractions.h>
#include <Col/ColIntersect.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColRequest.h>
#include "ColMovedPair.h"

#include <algorithm>
#include <cmath>

KitReal gColSubSteppingPenetrationFactor = 0.5;

namespace {

constexpr KitReal kMaxSubSteps = 1000;

/// The whole number below a share, between 1 and the most; 1 for NaN.
int wholeNumber(KitReal share, KitReal most) {
    return share >= 1 ? static_cast<int>(std::min(share, most)) : 1;
}

lsVec3 halfExtents(const ColModel& model) {
    const KitReal* b = model.mBounds;
    return 0.5 * lsVec3(b[1] - b[0], b[3] - b[2], b[5] - b[4]);
}

lsVec3 vectorOrZero(const KitReal* v) {
    return v ? lsVec3::constCast(v) : lsVec3();
}

/// Speed of the surface by the turn of a model, along each axis, m/s. The parts are added as
/// magnitudes: in a difference they may cancel while a corner still moves.
lsVec3 turningSpeeds(const ColModel& model) {
    const lsVec3 e = halfExtents(model), w = vectorOrZero(model.angularVelocity);
    lsVec3 speeds;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        speeds[i] = std::abs(e[j] * w[k]) + std::abs(e[k] * w[j]);
    }
    return speeds;
}

/// Sub-steps wanted by how far the boxes move along the axes, 1 or more and not rounded.
KitReal subStepsOfBoxes(const ColModel& m1, const ColModel& m2, KitReal time, KitReal factor) {
    const lsVec3 velocity = vectorOrZero(m1.linearVelocity) - vectorOrZero(m2.linearVelocity);
    const lsVec3 acceleration =
        vectorOrZero(m1.linearAcceleration) - vectorOrZero(m2.linearAcceleration);
    lsVec3 speeds = velocity + 0.5 * time * acceleration,
           size(kKitInfinity, kKitInfinity, kKitInfinity);
    for (int i = 0; i < 3; ++i)
        speeds[i] = std::abs(speeds[i]);
    const bool bothFast = m1.mFastMoving && m2.mFastMoving;
    for (const ColModel* model : {&m1, &m2}) {
        if (!model->mFastMoving)
            continue;
        const lsVec3 e = halfExtents(*model);
        speeds += turningSpeeds(*model);
        for (int i = 0; i < 3; ++i)
            size[i] = std::min(size[i], bothFast ? 0.5 * e[i] : e[i]);
    }
    KitReal steps = 1;
    for (int i = 0; i < 3; ++i) {
        const KitReal n = speeds[i] * time / (factor * size[i]);
        if (n > steps) // false for NaN
            steps = n;
    }
    return steps;
}

/// Sub-steps wanted by how far the farthest point of a turning model goes, against its thickness in
/// its own frame: the box of a rod that stands askew says nothing of how thin the rod is.
KitReal subStepsOfTurn(const ColModel& model, KitReal time, KitReal factor) {
    const KitReal spin = vectorOrZero(model.angularVelocity).norm();
    if (!model.mFastMoving || !(spin > 0))
        return 1;
    lsVec3 low, high, centre;
    KitReal radius = 0;
    ColGeometryGetAABB(model.mGeometry, nullptr, &low, &high, nullptr);
    ColGeometryGetBSphere(model.mGeometry, &centre, &radius);
    const lsVec3 e = 0.5 * (high - low);
    const KitReal reach = (centre + model.mCOMOffset).norm() + radius;
    const KitReal n = reach * spin * time / (factor * std::min({e[0], e[1], e[2]}));
    return reach < kKitInfinity && n > 1 ? n : 1;
}

KitReal subStepsWanted(const ColModel& m1, const ColModel& m2, KitReal time, KitReal factor) {
    return std::max({subStepsOfBoxes(m1, m2, time, factor), subStepsOfTurn(m1, time, factor),
                     subStepsOfTurn(m2, time, factor)});
}

/// The search for the first touch of a pair on its path: in strides that ask for no contacts while
/// nothing touches, then back and in single sub-steps. Where the sub-steps are longer than wanted,
/// those that may hold a touch between their ends are searched again in finer ones.
class PathSearch {
public:
    PathSearch(ColModelPair* pair, ColIntersectResult* result, KitReal time, KitReal wanted)
        : mMoved(pair), mResult(result), mOwnRequest(pair->request), mCoarseRequest(*pair->request),
          mSteps(ColGetPathIntersectSubStep(pair->model1, pair->model2, time,
                                            mOwnRequest->maxPenetrationFactor)),
          mStepTime(time / mSteps), mFiner(wholeNumber(wanted / mSteps, kMaxSubSteps)) {
        const KitReal coarse =
            gColSubSteppingPenetrationFactor / mOwnRequest->maxPenetrationFactor / mFiner;
        if (mSteps > 2 && mOwnRequest->maxPenetrationFactor > 0)
            mStride = std::min(mSteps / 2, wholeNumber(coarse, kMaxSubSteps));
        mMoved.pair()->request = mStride > 1 ? &mCoarseRequest : mOwnRequest;
    }

    int run(KitReal startTime) {
        int i =
            startTime > 0 ? static_cast<int>(std::min<KitReal>(startTime / mStepTime, mSteps)) : 0;
        const int found = i < mSteps ? search(i) : 0;
        mResult->safeTime = found != 0 ? mTime : 0;
        mMoved.nameOriginals(mResult);
        return found;
    }

private:
    int search(int i) {
        bool isFirst = true;
        while (i < mSteps) {
            if (touchesAt(i * mStepTime)) {
                if (mStride == 1 || isFirst)
                    return mResult->touch;
                i += 1 - mStride; // the stride went too far
                setStride(1);
                continue;
            }
            if (mStride == 1 && mFiner > 1 && touchesWithin(i))
                return mResult->touch;
            if (mStride > 1 && i < mSteps - 1 && i + mStride >= mSteps)
                setStride(mSteps - 1 - i); // the last sub-step is always looked at
            i += mStride;
            isFirst = false;
            mCoarseRequest.contactMaxCount = 0;
        }
        return 0;
    }

    void setStride(int stride) {
        mStride = stride;
        if (stride == 1)
            mMoved.pair()->request = mOwnRequest;
    }

    bool touchesAt(KitReal time) {
        ColIntersectResultClear(mResult);
        mTime = time;
        mMoved.moveTo(time);
        if (!boxesMeet(mMoved.model(0).mBounds, mMoved.model(1).mBounds, 0))
            return false;
        mResult->pair = mMoved.pair();
        mResult->touch = mMoved.pair()->m_intersectFn(mMoved.pair(), mResult);
        return mResult->touch != 0;
    }

    /// Whether a touch begins between a sub-step and the next.
    bool touchesWithin(int i) {
        if (!mayTouchWithin(i))
            return false;
        for (int k = 1; k < mFiner; ++k)
            if (touchesAt((i + static_cast<KitReal>(k) / mFiner) * mStepTime))
                return true;
        return false;
    }

    bool mayTouchWithin(int i) {
        KitReal swept[2][6], stray = 0;
        for (int m = 0; m < 2; ++m) {
            std::copy_n(mMoved.model(m).mBounds, 6, swept[m]);
            stray += ColModelStrayDistance(mMoved.model(m), mStepTime);
        }
        mMoved.moveTo((i + 1) * mStepTime);
        for (int m = 0; m < 2; ++m)
            for (int axis = 0; axis < 3; ++axis) {
                const KitReal* end = mMoved.model(m).mBounds + 2 * axis;
                swept[m][2 * axis] = std::min(swept[m][2 * axis], end[0]);
                swept[m][2 * axis + 1] = std::max(swept[m][2 * axis + 1], end[1]);
            }
        return boxesMeet(swept[0], swept[1], stray);
    }

    /// Contacts begin where the tolerances meet.
    [[nodiscard]] bool boxesMeet(const KitReal* a, const KitReal* b, KitReal slack) const {
        const KitReal reach = mMoved.model(0).mPadding + mMoved.model(1).mPadding + slack;
        for (int axis = 0; axis < 3; ++axis)
            if (!(a[2 * axis] - reach <= b[2 * axis + 1] && b[2 * axis] - reach <= a[2 * axis + 1]))
                return false;
        return true;
    }

    ColMovedPair mMoved;
    ColIntersectResult* mResult;
    ColRequest* mOwnRequest;
    ColRequest mCoarseRequest;
    int mSteps;
    KitReal mStepTime;
    int mFiner;        ///< parts of a sub-step
    KitReal mTime = 0; ///< where the models are, s
    int mStride = 1;
};

} // namespace

int ColGetPathIntersectSubStep(const ColModel* model1, const ColModel* model2, KitReal time,
                               KitReal maxPenetrationFactor) {
    return wholeNumber(subStepsOfBoxes(*model1, *model2, time, maxPenetrationFactor), kMaxSubSteps);
}

int ColGenericPathIntersectFn(ColModelPair* pair, ColIntersectResult* result, KitReal time,
                              KitReal startTime) {
    ColIntersectResultClear(result);
    const ColModel &m1 = *pair->model1, &m2 = *pair->model2;
    const bool isFast = m1.mFastMoving || m2.mFastMoving;
    const KitReal wanted =
        isFast ? subStepsWanted(m1, m2, time, pair->request->maxPenetrationFactor) : 1;
    if (!(wanted >= 2)) {
        ColIntersect(pair, result);
        return result->touch;
    }
    PathSearch search(pair, result, time, wanted);
    return search.run(startTime);
}

int ColGenericPathIntersect(ColModelPair* pair, ColIntersectResult* result, KitReal time) {
    return ColGenericPathIntersectFn(pair, result, time, 0);
}

int ColGenericPathIntersectWithSafeTime(ColModelPair* pair, ColIntersectResult* result,
                                        KitReal time) {
    ColIntersectResultClear(result);
    const ColModel &m1 = *pair->model1, &m2 = *pair->model2;
    const bool hasVelocities =
        m1.linearVelocity && m1.angularVelocity && m2.linearVelocity && m2.angularVelocity;
    ColSafeTimeResult safe;
    if (hasVelocities && time > 0) {
        ColSafeTime(pair, time, &safe);
        if (safe.time >= time)
            return 0;
    }
    return ColGenericPathIntersectFn(pair, result, time, safe.time);
}
