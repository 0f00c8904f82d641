#include <Col/ColLineSeg.h>

#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Kit/KitMessage.h>

#include <algorithm>

namespace {

constexpr int kMaxHits = 100;
/// The search goes on this far behind a hit, m.
constexpr KitReal kStepBehindHit = 1e-7;
constexpr std::size_t kMinGrowth = 1;

bool isReady(const ColModel* model, const lsVec3& start, const lsVec3& end, bool hasResult,
             const char* function) {
    if (!model || !model->mGeometry || !hasResult) {
        ColMistake(!model             ? kColErrorModel
                   : model->mGeometry ? kColErrorResult
                                      : kColErrorGeometry,
                   function);
        return false;
    }
    if (KitVector3IsFinite(start.v) && KitVector3IsFinite(end.v))
        return true;
    KitWarning(0, "ColLineSegIntersect: start and end must be finite.\n");
    return false;
}

int intersect(ColModel* model, const lsVec3& start, const lsVec3& end,
              ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub* subscriber) {
    result->model = model;
    result->subModel = nullptr;
    result->index = -1;
    const auto fn = ColLineSegGetIntersectFnPtr(model->mGeometry->mID);
    const int hit = fn ? fn(model, start, end, result, subscriber) : 0;
    if (hit == 0)
        result->index = -1;
    return hit;
}

/// Hits one after another, each search beginning behind the last hit.
void collectHits(ColModel* model, const lsVec3& start, const lsVec3& end,
                 ColLineSegIntersectResultList* list, Hy::HyLineSegIntersectSub* subscriber) {
    lsVec3 step = end - start;
    if (!(step.normalize() > 0))
        step = lsVec3(1, 0, 0);
    step *= kStepBehindHit;
    lsVec3 from = start;
    KitReal offset = 0;
    for (int hits = 1; (end - from).dot(step) >= 0; ++hits) {
        ColLineSegIntersectResult result;
        result.userTriangleList = list->userTriangleList;
        if (intersect(model, from, end, &result, subscriber) == 0)
            return;
        result.distance += offset;
        offset = result.distance + kStepBehindHit;
        list->push_back(result);
        if (hits == kMaxHits) {
            KitWarning(0,
                       "ColLineSegIntersectList: maximum number of hits reached (%d). Ray is "
                       "probably coplanar with a side of the geometry.\n",
                       kMaxHits);
            return;
        }
        from = result.position + step;
    }
}

} // namespace

int ColLineSegIntersect(ColModel* model, const lsVec3& start, const lsVec3& end,
                        ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub* subscriber) {
    if (result) {
        result->model = model;
        result->subModel = nullptr;
        result->index = -1;
    }
    return isReady(model, start, end, result != nullptr, " in ColLineSegIntersect.")
               ? intersect(model, start, end, result, subscriber)
               : 0;
}

int ColLineSegIntersectList(ColModel* model, const lsVec3& start, const lsVec3& end,
                            ColLineSegIntersectResultList* list,
                            Hy::HyLineSegIntersectSub* subscriber) {
    if (!isReady(model, start, end, list != nullptr, " in ColLineSegIntersectList."))
        return 0;
    if (const auto fn = ColLineSegGetIntersectListFnPtr(model->mGeometry->mID)) {
        if (fn(model, start, end, list, subscriber) != 0)
            list->sort();
    } else {
        collectHits(model, start, end, list, subscriber);
        list->sort();
    }
    return list->size();
}

const ColLineSegIntersectResult& ColLineSegIntersectResultList::operator[](int i) const {
    static const ColLineSegIntersectResult kNone;
    if (i >= 0 && i < size())
        return mList[static_cast<std::size_t>(i)];
    KitFatalError(0, "HyArray::isValidIndex : range error\n");
    return kNone;
}

void ColLineSegIntersectResultList::push_back(const ColLineSegIntersectResult& result) {
    if (mList.size() == mList.capacity())
        mList.reserve(mList.size() + mList.size() / 2 + kMinGrowth);
    mList.push_back(result);
    mSorted = false;
}

void ColLineSegIntersectResultList::sort() {
    if (mSorted)
        return;
    std::stable_sort(mList.begin(), mList.end(),
                     [](const auto& a, const auto& b) { return a.distance < b.distance; });
    mSorted = true;
}
