#include "CxTreeSpace.h"

#include <Col/ColModel.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

/// A box wider than this, m, stands in the flat list: it would meet every node of a tree.
constexpr KitReal kHugeExtent = 1e4;
/// Slack of a fat box on each side, as a share of the widest extent.
constexpr KitReal kFatMargin = 0.05;
/// A fat box reaches as many steps ahead, at the present speed of the box.
constexpr KitReal kFatSteps = 8;
/// A fat box wider than this many tight ones is shrunk.
constexpr KitReal kFatLimit = 4;
/// From as many models on, boxes are computed on the workers.
constexpr std::size_t kParallelModels = 129;
/// Models of one unit of work.
constexpr std::size_t kModelsPerUnit = 64;

constexpr float kMaxFloat = std::numeric_limits<float>::max();

float roundedDown(KitReal x) noexcept {
    if (x <= -static_cast<KitReal>(kMaxFloat))
        return -kMaxFloat;
    if (x >= static_cast<KitReal>(kMaxFloat))
        return kMaxFloat;
    const auto f = static_cast<float>(x);
    return static_cast<KitReal>(f) > x ? std::nextafter(f, -kMaxFloat) : f;
}
float roundedUp(KitReal x) noexcept {
    return -roundedDown(-x);
}

bool inOrder(const CxPairLink* a, const CxPairLink* b) noexcept {
    return a->mSerial1 != b->mSerial1 ? a->mSerial1 < b->mSerial1 : a->mSerial2 < b->mSerial2;
}

} // namespace

/// The boxes of a run of models.
class CxTreeSpace::BoxUnit final : public KitThreadPool::WorkUnit {
public:
    void set(CxTreeSpace* space, const int* first, const int* last, KitReal duration) {
        mSpace = space;
        mFirst = first;
        mLast = last;
        mDuration = duration;
    }
    void process() override { mSpace->computeBoxes(mFirst, mLast, mDuration); }

private:
    CxTreeSpace* mSpace = nullptr;
    const int* mFirst = nullptr;
    const int* mLast = nullptr;
    KitReal mDuration = 0;
};

CxTreeSpace::CxTreeSpace(unsigned axes, int modelCount, std::size_t pairCount,
                         bool initPairDisabled)
    : mAxes(axes), mInitPairDisabled(initPairDisabled) {
    growModels(idx(modelCount));
    mTable.Reserve(pairCount);
}

CxTreeSpace::~CxTreeSpace() = default;

void CxTreeSpace::growModels(std::size_t size) {
    const std::size_t old = mReps.size();
    mReps.resize(size);
    mBoxes.resize(size);
    mDynamicBits.resize((size + 63) / 64);
    mFreeIDs.reserve(size);
    for (std::size_t id = size; id-- > old;)
        mFreeIDs.push_back(static_cast<int>(id));
}

// Models

bool CxTreeSpace::ValidID(int id) const {
    return id >= 0 && idx(id) < mReps.size() && mReps[idx(id)].model != nullptr;
}

ColModel* CxTreeSpace::GetRepData(int id) const {
    return ValidID(id) ? mReps[idx(id)].model : nullptr;
}

int CxTreeSpace::Insert(ColModel* model, bool parked) {
    if (model == nullptr)
        return -1;
    if (mFreeIDs.empty()) {
        const std::size_t size = std::max<std::size_t>(2, 2 * mReps.size());
        KitInfo(0, "Resizing geometry table size to %d geometries\n", static_cast<int>(size));
        growModels(size);
    }
    const int id = mFreeIDs.back();
    mFreeIDs.pop_back();
    mEndID = std::max(mEndID, id + 1);
    mReps[idx(id)] = Rep{};
    mReps[idx(id)].model = model;
    mReps[idx(id)].parked = true;
    SetDynamic(id, true);
    if (!parked)
        Park(id, false);
    return id;
}

void CxTreeSpace::Remove(int id) {
    if (!ValidID(id))
        return;
    takePairsOf(id, false);
    unplace(id);
    mDynamicBits[idx(id) / 64] &= ~(std::uint64_t{1} << (id % 64));
    mReps[idx(id)] = Rep{};
    mFreeIDs.push_back(id);
    while (mEndID > 0 && mReps[idx(mEndID - 1)].model == nullptr)
        --mEndID;
}

void CxTreeSpace::Park(int id, bool parked) {
    if (!ValidID(id) || mReps[idx(id)].parked == parked)
        return;
    Rep& rep = mReps[idx(id)];
    rep.parked = parked;
    if (parked) {
        takePairsOf(id, true);
        unplace(id);
        rep.placed = rep.left = false;
        return;
    }
    rep.fresh = ++mInsertions;
    mFresh.push_back(id);
    computeBoxes(&id, &id + 1, 0);
    touch(id);
}

void CxTreeSpace::SetDynamic(int id, bool dynamic) {
    if (!ValidID(id) || mReps[idx(id)].dynamic == dynamic)
        return;
    mReps[idx(id)].dynamic = dynamic;
    const std::uint64_t bit = std::uint64_t{1} << (id % 64);
    if (dynamic)
        mDynamicBits[idx(id) / 64] |= bit;
    else
        mDynamicBits[idx(id) / 64] &= ~bit;
    StatusChanged(id);
}

bool CxTreeSpace::GetDynamic(int id) const {
    return ValidID(id) && mReps[idx(id)].dynamic;
}

void CxTreeSpace::StatusChanged(int id) {
    if (!ValidID(id) || mReps[idx(id)].reclassify)
        return;
    mReps[idx(id)].reclassify = true;
    mReclassify.push_back(id);
}

// Boxes

void CxTreeSpace::computeBoxes(const int* first, const int* last, KitReal duration) {
    if (mAABBUpdateFn == nullptr)
        return;
    for (const int* id = first; id != last; ++id) {
        lsVec3 min, max;
        ColModel* model = mReps[idx(*id)].model;
        mAABBUpdateFn(model, &min, &max, duration);
        // Contacts begin where the tolerances of two models meet.
        const lsVec3 padding(model->mPadding, model->mPadding, model->mPadding);
        takeBox(*id, min - padding, max + padding);
    }
}

// Runs on workers, each with models of its own.
void CxTreeSpace::takeBox(int id, const lsVec3& min, const lsVec3& max) {
    Rep& rep = mReps[idx(id)];
    TightBox& box = mBoxes[idx(id)];
    if (!(min[0] <= max[0] && min[1] <= max[1] && min[2] <= max[2])) { // NaN included
        rep.bad = !rep.warned;                                         // a worker tells nobody
        return;
    }
    KitReal ahead[3] = {0, 0, 0}, widest = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const bool counts = (mAxes >> axis & 1U) != 0;
        const KitReal low = counts ? min[axis] : -std::numeric_limits<KitReal>::max();
        const KitReal high = counts ? max[axis] : std::numeric_limits<KitReal>::max();
        if (counts) {
            if (rep.placed)
                ahead[axis] = kFatSteps / 2 * (low - box.min[axis] + (high - box.max[axis]));
            widest = std::max(widest, high - low);
        }
        box.min[axis] = low;
        box.max[axis] = high;
    }
    const auto inside = [&] {
        for (int axis = 0; axis < 3; ++axis) {
            const auto low = static_cast<KitReal>(rep.fat.min[axis]);
            const auto high = static_cast<KitReal>(rep.fat.max[axis]);
            if (!(low <= box.min[axis] || low <= -static_cast<KitReal>(kMaxFloat)) ||
                !(high >= box.max[axis] || high >= static_cast<KitReal>(kMaxFloat)))
                return false;
            if (high - low > kFatLimit * (widest + (box.max[axis] - box.min[axis])))
                return false;
        }
        return true;
    };
    if (rep.placed && inside())
        return;
    const KitReal margin = kFatMargin * std::min(widest, kHugeExtent);
    for (int axis = 0; axis < 3; ++axis) {
        const KitReal reach = std::clamp(ahead[axis], -widest, widest);
        rep.fat.min[axis] = roundedDown(box.min[axis] - margin + std::min(reach, KitReal{0}));
        rep.fat.max[axis] = roundedUp(box.max[axis] + margin + std::max(reach, KitReal{0}));
    }
    rep.placed = rep.left = true;
}

void CxTreeSpace::touch(int id) {
    Rep& rep = mReps[idx(id)];
    if (!rep.touched) {
        rep.touched = true;
        mTouched.push_back(id);
    }
    markLeft(id);
}

void CxTreeSpace::markLeft(int id) {
    if (std::exchange(mReps[idx(id)].bad, false)) {
        mReps[idx(id)].warned = true;
        KitWarning(0, "CxSpace::Update: a box that is not a number keeps its last extents.\n");
    }
    if (mReps[idx(id)].left && !std::exchange(mReps[idx(id)].listed, true))
        mLeft.push_back(id);
}

bool CxTreeSpace::UpdateAll(KitReal duration) {
    if (mAABBUpdateFn == nullptr)
        return false;
    mAllUpdated = true;
    mDynamicIDs.clear();
    for (std::size_t word = 0; word < mDynamicBits.size(); ++word)
        for (std::uint64_t bits = mDynamicBits[word]; bits != 0; bits &= bits - 1) {
            const int id = static_cast<int>(64 * word) + __builtin_ctzll(bits);
            if (!mReps[idx(id)].parked)
                mDynamicIDs.push_back(id);
        }
    const int* ids = mDynamicIDs.data();
    const std::size_t count = mDynamicIDs.size();
    if (mPool == nullptr || count < kParallelModels) {
        computeBoxes(ids, ids + count, duration);
    } else {
        const std::size_t units = (count + kModelsPerUnit - 1) / kModelsPerUnit;
        if (mUnits.size() < units)
            mUnits.resize(units);
        for (std::size_t unit = 0; unit < units; ++unit)
            mUnits[unit].set(this, ids + unit * kModelsPerUnit,
                             ids + std::min(count, (unit + 1) * kModelsPerUnit), duration);
        KitThreadPoolExecute(mPool, mUnits.data(), units);
    }
    for (const int id : mDynamicIDs)
        markLeft(id);
    return true;
}

void CxTreeSpace::UpdateSingle(int id, KitReal duration, bool forceUpdate) {
    if (!ValidID(id))
        return;
    UpdateBegin();
    Rep& rep = mReps[idx(id)];
    if ((!rep.dynamic && !forceUpdate) || rep.parked)
        return;
    computeBoxes(&id, &id + 1, duration);
    touch(id);
}

bool CxTreeSpace::Update(int id, KitReal duration) {
    if (mAABBUpdateFn == nullptr || !ValidID(id))
        return false;
    const bool opened = UpdateBegin();
    UpdateSingle(id, duration, true);
    if (opened)
        UpdateEnd();
    return true;
}

bool CxTreeSpace::GetBox(int id, lsVec3* min, lsVec3* max) const {
    if (!ValidID(id) || !mReps[idx(id)].placed)
        return false;
    std::copy_n(mBoxes[idx(id)].min, 3, min->v);
    std::copy_n(mBoxes[idx(id)].max, 3, max->v);
    return true;
}

void CxTreeSpace::SetBox(int id, const lsVec3& min, const lsVec3& max) {
    if (!ValidID(id) || mReps[idx(id)].parked)
        return;
    UpdateBegin();
    takeBox(id, min, max);
    touch(id);
}

// Trees

void CxTreeSpace::place(int id) {
    Rep& rep = mReps[idx(id)];
    const TightBox& box = mBoxes[idx(id)];
    bool huge = false;
    for (int axis = 0; axis < 3; ++axis)
        huge |= !(box.max[axis] - box.min[axis] <= kHugeExtent);
    if (huge) {
        if (rep.home != kInHugeList) {
            unplace(id);
            mHuge.push_back(id);
        }
        rep.home = kInHugeList;
        return;
    }
    const Home home = rep.dynamic ? kInMovingTree : kInRestingTree;
    if (rep.home != home)
        unplace(id);
    (home == kInMovingTree ? mMovingTree : mRestingTree).Insert(id, rep.fat);
    rep.home = home;
}

void CxTreeSpace::unplace(int id) {
    Rep& rep = mReps[idx(id)];
    if (rep.home == kInMovingTree)
        mMovingTree.Remove(id);
    else if (rep.home == kInRestingTree)
        mRestingTree.Remove(id);
    else if (rep.home == kInHugeList)
        mHuge.erase(std::find(mHuge.begin(), mHuge.end(), id));
    rep.home = kNowhere;
}

void CxTreeSpace::placeThoseThatLeft() {
    for (const int id : mLeft)
        mReps[idx(id)].listed = false;
    std::sort(mLeft.begin(), mLeft.end());
    mLeft.erase(std::unique(mLeft.begin(), mLeft.end()), mLeft.end());
    std::erase_if(mLeft, [this](int id) { return !mReps[idx(id)].left; }); // removed meanwhile
    for (const int id : mLeft)
        place(id);
    for (const int id : mLeft) {
        for (Entry *entry = mReps[idx(id)].pairs, *next = nullptr; entry != nullptr; entry = next) {
            next = entry->next[entry->id[1] == id];
            if (!entry->candidate ||
                CxOverlap(mReps[idx(entry->id[0])].fat, mReps[idx(entry->id[1])].fat))
                continue;
            evaluate(entry);
            entry->candidate = false;
            setAwake(entry, false);
            freeIfIdle(entry);
        }
        findNeighbours(id);
    }
    for (const int id : mLeft)
        mReps[idx(id)].left = false;
    mLeft.clear();
    mMovingTree.Tidy();
    mRestingTree.Tidy();
}

void CxTreeSpace::findNeighbours(int id) {
    const Rep& rep = mReps[idx(id)];
    const auto meet = [&](int other) {
        if (other == id || (mReps[idx(other)].left && other < id)) // the other one found us
            return;
        Entry* entry = findEntry(id, other);
        if (entry == nullptr)
            entry = addEntry(id, other);
        if (entry->candidate)
            return;
        entry->candidate = true;
        setAwake(entry, isAwake(entry));
        if (entry->awake == kNotAwake)
            evaluate(entry);
    };
    mMovingTree.Query(rep.fat, meet);
    mRestingTree.Query(rep.fat, meet);
    for (const int other : mHuge)
        if (CxOverlap(rep.fat, mReps[idx(other)].fat))
            meet(other);
}

// Pairs

CxTreeSpace::Entry* CxTreeSpace::findEntry(int id1, int id2) const {
    return mTable.Find(std::min(id1, id2), std::max(id1, id2));
}

CxTreeSpace::Entry* CxTreeSpace::addEntry(int id1, int id2) {
    Entry* entry = mEntries.Get();
    entry->id[0] = std::min(id1, id2);
    entry->id[1] = std::max(id1, id2);
    for (int side = 0; side < 2; ++side) {
        Rep& rep = mReps[idx(entry->id[side])];
        entry->next[side] = rep.pairs;
        if (rep.pairs != nullptr)
            rep.pairs->previous[rep.pairs->id[1] == entry->id[side]] = entry;
        rep.pairs = entry;
    }
    const std::size_t room = mTable.GetRoom();
    mTable.Add(entry->id[0], entry->id[1], entry);
    if (mTable.GetRoom() != room)
        KitInfo(0, "Resizing geometry pair table size to %d pairs.\n",
                static_cast<int>(mTable.GetRoom()));
    return entry;
}

void CxTreeSpace::freeEntry(Entry* entry) {
    setAwake(entry, false);
    for (int side = 0; side < 2; ++side) {
        const int id = entry->id[side];
        Entry *next = entry->next[side], *previous = entry->previous[side];
        if (next != nullptr)
            next->previous[next->id[1] == id] = previous;
        if (previous != nullptr)
            previous->next[previous->id[1] == id] = next;
        else
            mReps[idx(id)].pairs = next;
    }
    if (entry->link != nullptr)
        detach(entry->link);
    mTable.Erase(entry->id[0], entry->id[1]);
    mEntries.Put(entry);
}

void CxTreeSpace::freeIfIdle(Entry* entry) {
    const bool pending = entry->link != nullptr && entry->link->mList != kEnded;
    if (!entry->candidate && !entry->exception && !pending)
        freeEntry(entry);
}

bool CxTreeSpace::isEnabledByDefault(int id1, int id2) const {
    if (!ValidID(id1) || !ValidID(id2))
        return !mInitPairDisabled;
    const PairRule rule1 = mReps[idx(id1)].rule, rule2 = mReps[idx(id2)].rule;
    if (rule1 != kNoRule && rule1 == rule2)
        return rule1 == kAllEnabled;
    return !mInitPairDisabled;
}

bool CxTreeSpace::isEnabled(const Entry* entry) const {
    return isEnabledByDefault(entry->id[0], entry->id[1]) != entry->exception;
}

std::vector<CxTreeSpace::Entry*> CxTreeSpace::allEntries() const {
    std::vector<Entry*> entries;
    for (int id = 0; id < mEndID; ++id)
        for (Entry *entry = mReps[idx(id)].pairs, *next = nullptr; entry != nullptr; entry = next) {
            next = entry->next[entry->id[1] == id];
            if (entry->id[0] == id)
                entries.push_back(entry);
        }
    return entries;
}

bool CxTreeSpace::isAwake(const Entry* entry) const {
    return mReps[idx(entry->id[0])].dynamic || mReps[idx(entry->id[1])].dynamic;
}

void CxTreeSpace::setAwake(Entry* entry, bool awake) {
    if (awake == (entry->awake != kNotAwake))
        return;
    if (awake) {
        entry->awake = mAwake.size();
        mAwake.push_back({{entry->id[0], entry->id[1]}, entry});
        return;
    }
    mAwake[entry->awake] = mAwake.back();
    mAwake[entry->awake].entry->awake = entry->awake;
    mAwake.pop_back();
    entry->awake = kNotAwake;
}

// Sorts what belongs to models that began or ceased to move since the last interval.
void CxTreeSpace::reclassifyPairs() {
    for (const int id : mReclassify) {
        Rep& rep = mReps[idx(id)];
        if (!std::exchange(rep.reclassify, false))
            continue;
        const Home home = rep.dynamic ? kInMovingTree : kInRestingTree;
        if (rep.home != kNowhere && rep.home != kInHugeList && rep.home != home)
            place(id);
        for (Entry* entry = rep.pairs; entry != nullptr; entry = entry->next[entry->id[1] == id]) {
            setAwake(entry, entry->candidate && isAwake(entry));
            CxPairLink* link = entry->link;
            if (link != nullptr && (link->mList == kActive || link->mList == kResting))
                moveLink(link, IsResting(link) ? kResting : kActive);
        }
    }
    mReclassify.clear();
}

// A pair begins when the boxes overlap strictly and ends when they are strictly apart. A box that was
// put in now also meets one whose upper side it touches.
bool CxTreeSpace::boxesOverlap(const Entry* entry) const {
    const TightBox& a = mBoxes[idx(entry->id[0])];
    const TightBox& b = mBoxes[idx(entry->id[1])];
    if (entry->overlap) {
        for (int axis = 0; axis < 3; ++axis)
            if (a.max[axis] < b.min[axis] || b.max[axis] < a.min[axis])
                return false;
        return true;
    }
    const std::uint32_t freshA = mReps[idx(entry->id[0])].fresh;
    const std::uint32_t freshB = mReps[idx(entry->id[1])].fresh;
    const TightBox& mine = freshA > freshB ? a : b;
    const TightBox& theirs = freshA > freshB ? b : a;
    const bool fresh = (freshA | freshB) != 0;
    for (int axis = 0; axis < 3; ++axis) {
        const bool below = theirs.min[axis] < mine.max[axis];
        const bool above =
            fresh ? theirs.max[axis] >= mine.min[axis] : theirs.max[axis] > mine.min[axis];
        if (!below || !above)
            return false;
    }
    return true;
}

void CxTreeSpace::evaluate(Entry* entry) {
    const bool overlap = boxesOverlap(entry);
    if (overlap == entry->overlap)
        return;
    entry->overlap = overlap;
    if (!isEnabled(entry))
        return;
    CxPairLink* link = entry->link;
    if (overlap) {
        if (link == nullptr)
            newLink(entry, kNew);
        else // ended in this interval
            moveLink(link, kActive);
    } else if (link != nullptr && link->mList == kNew) {
        dropLink(entry); // begun in this interval: nobody knows of it
    } else if (link != nullptr) {
        moveLink(link, kEnded);
    }
}

void CxTreeSpace::evaluateTouched() {
    if (mAllUpdated)
        for (const Candidate& candidate : mAwake)
            evaluate(candidate.entry);
    for (const int id : mTouched) {
        Rep& rep = mReps[idx(id)];
        if (!std::exchange(rep.touched, false))
            continue;
        for (Entry* entry = rep.pairs; entry != nullptr; entry = entry->next[entry->id[1] == id])
            if (entry->candidate)
                evaluate(entry);
    }
    mTouched.clear();
}

// Links

CxPairLink* CxTreeSpace::newLink(Entry* entry, List list) {
    CxPairLink* link = mLinks.Get();
    ColModel* model1 = mReps[idx(entry->id[0])].model;
    ColModel* model2 = mReps[idx(entry->id[1])].model;
    ColModelPairReset(&link->mPair, model1, model2);
    link->mID1 = entry->id[0];
    link->mID2 = entry->id[1];
    link->mSerial1 = std::min(model1->serial, model2->serial);
    link->mSerial2 = std::max(model1->serial, model2->serial);
    link->mOwner = entry;
    entry->link = link;
    moveLink(link, list);
    return link;
}

// Puts a link in the array of its new list. In the old one it stays until compact(), so that walks
// outside an interval go on; only the resting array is large and loses its links one by one.
void CxTreeSpace::moveLink(CxPairLink* link, List list) {
    if (link->mList == list)
        return;
    mActiveStale |= link->mList == kActive;
    mNewStale |= link->mList == kNew;
    if (link->mList == kResting) {
        if (mChanging)
            takeFromResting(link);
        else
            mLeftResting.push_back(link);
    }
    link->mList = list;
    switch (list) {
    case kNew:
        mNew.push_back(link);
        break;
    case kActive:
        mIncoming.push_back(link);
        break;
    case kResting:
        link->mIndex = mResting.size();
        mResting.push_back(link);
        mRestingSorted = false;
        break;
    case kEnded:
        mEnded.push_back(link);
        break;
    case kRemoved:
        mRemoved.push_back(link);
        break;
    case kNewDisabled:
        mNewDisabled.push_back(link);
        break;
    case kNewEnabled:
        mNewEnabled.push_back(link);
        break;
    case kNone:
        mDropped.push_back(link);
        break;
    }
}

void CxTreeSpace::takeFromResting(CxPairLink* link) {
    mResting[link->mIndex] = mResting.back();
    mResting[link->mIndex]->mIndex = link->mIndex;
    mResting.pop_back();
    mRestingSorted = false;
}

void CxTreeSpace::detach(CxPairLink* link) {
    if (link->mOwner != nullptr)
        static_cast<Entry*>(link->mOwner)->link = nullptr;
    link->mOwner = nullptr;
}

void CxTreeSpace::dropLink(Entry* entry) {
    CxPairLink* link = entry->link;
    detach(link);
    moveLink(link, kNone);
}

void CxTreeSpace::takePairsOf(int id, bool keepExceptions) {
    for (Entry *entry = mReps[idx(id)].pairs, *next = nullptr; entry != nullptr; entry = next) {
        next = entry->next[entry->id[1] == id];
        if (CxPairLink* link = entry->link; link != nullptr) {
            detach(link);
            // What ended in this interval still waits for its goodbye.
            if (link->mList == kNewEnabled || (link->mList == kNew && mChanging)) {
                link->mPair.model1 = link->mPair.model2 = nullptr;
                moveLink(link, kNone);
            } else {
                moveLink(link, kRemoved);
            }
        }
        entry->overlap = entry->candidate = false;
        setAwake(entry, false);
        if (!keepExceptions || !entry->exception)
            freeEntry(entry);
    }
}

bool CxTreeSpace::UpdateBegin() {
    if (mChanging)
        return false;
    mChanging = true;
    for (CxPairLink* link : mLeftResting)
        takeFromResting(link);
    mLeftResting.clear();
    for (CxPairLink* link : mEnded)
        mLinks.Put(link);
    mEnded.clear();
    mMerge.assign(mNew.begin(), mNew.end());
    mNew.clear();
    mNewStale = false;
    for (CxPairLink* link : mMerge)
        if (link->mList == kNew)
            moveLink(link, IsResting(link) ? kResting : kActive);
    mNewStale = false;
    mMerge.assign(mNewDisabled.begin(), mNewDisabled.end());
    mNewDisabled.clear();
    for (CxPairLink* link : mMerge)
        if (link->mList == kNewDisabled)
            moveLink(link, kEnded);
    mMerge.assign(mNewEnabled.begin(), mNewEnabled.end());
    mNewEnabled.clear();
    for (CxPairLink* link : mMerge)
        if (link->mList == kNewEnabled)
            moveLink(link, kNew);
    return true;
}

void CxTreeSpace::UpdateEnd() {
    if (!mChanging)
        return;
    reclassifyPairs();
    placeThoseThatLeft();
    evaluateTouched();
    compact();
    mAllUpdated = false;
    for (const int id : mFresh)
        mReps[idx(id)].fresh = 0;
    mFresh.clear();
    mInsertions = 0;
    mChanging = false;
}

void CxTreeSpace::compact() {
    const auto keep = [](std::vector<CxPairLink*>& links, int list) {
        std::erase_if(links, [list](const CxPairLink* link) { return link->mList != list; });
    };
    if (std::exchange(mActiveStale, false))
        keep(mActive, kActive);
    if (!mIncoming.empty()) {
        keep(mIncoming, kActive);
        std::sort(mIncoming.begin(), mIncoming.end(), inOrder);
        mIncoming.erase(std::unique(mIncoming.begin(), mIncoming.end()), mIncoming.end());
        mMerge.resize(mActive.size() + mIncoming.size());
        std::merge(mActive.begin(), mActive.end(), mIncoming.begin(), mIncoming.end(),
                   mMerge.begin(), inOrder);
        mMerge.erase(std::unique(mMerge.begin(), mMerge.end()), mMerge.end());
        mActive.swap(mMerge);
        mIncoming.clear();
    }
    if (std::exchange(mNewStale, false))
        keep(mNew, kNew);
    std::sort(mNew.begin(), mNew.end(), inOrder);
    keep(mEnded, kEnded);
    std::sort(mEnded.begin(), mEnded.end(), inOrder);
    mEnded.erase(std::unique(mEnded.begin(), mEnded.end()), mEnded.end());
    for (CxPairLink* link : mEnded) {
        Entry* entry = static_cast<Entry*>(link->mOwner);
        detach(link);
        if (entry != nullptr)
            freeIfIdle(entry);
    }
    std::sort(mRemoved.begin(), mRemoved.end(), inOrder);
    for (CxPairLink* link : mRemoved) {
        link->mID1 = -1;
        link->mList = kEnded;
    }
    mEnded.insert(mEnded.begin(), mRemoved.begin(), mRemoved.end());
    mRemoved.clear();
    for (CxPairLink* link : mDropped)
        mLinks.Put(link);
    mDropped.clear();
}

std::span<CxPairLink* const> CxTreeSpace::GetRestingPairList() {
    if (!std::exchange(mRestingSorted, true)) {
        std::sort(mResting.begin(), mResting.end(), inOrder);
        for (std::size_t i = 0; i < mResting.size(); ++i)
            mResting[i]->mIndex = i;
    }
    return mResting;
}

CxPairLink* CxTreeSpace::GetNextPairOf(int id, const CxPairLink* link) {
    if (!ValidID(id))
        return nullptr;
    const auto* from = link != nullptr ? static_cast<const Entry*>(link->mOwner) : nullptr;
    Entry* entry = from != nullptr ? from->next[from->id[1] == id] : mReps[idx(id)].pairs;
    while (entry != nullptr && entry->link == nullptr)
        entry = entry->next[entry->id[1] == id];
    return entry != nullptr ? entry->link : nullptr;
}

bool CxTreeSpace::IsListed(const CxPairLink* link) const {
    return link->mList == kNew || link->mList == kActive || link->mList == kResting ||
           link->mList == kEnded;
}

bool CxTreeSpace::IsResting(const CxPairLink* link) const {
    const auto rests = [this](int id) {
        const Rep& rep = mReps[idx(id)];
        return !rep.dynamic && rep.model->mTemporaryDisabledStatus != kTemporaryDisabledShortTerm;
    };
    return link->mID1 >= 0 && rests(link->mID1) && rests(link->mID2);
}

// Enabling

bool CxTreeSpace::SetPairOverlapEnabled(int id1, int id2, bool enabled) {
    if (id1 == id2 || !ValidID(id1) || !ValidID(id2))
        return false;
    Entry* entry = findEntry(id1, id2);
    if ((entry != nullptr ? isEnabled(entry) : isEnabledByDefault(id1, id2)) == enabled)
        return entry == nullptr || entry->link == nullptr || !isInTransition(entry->link);
    if (entry == nullptr)
        entry = addEntry(id1, id2);
    CxPairLink* link = entry->link;
    if (entry->overlap && link != nullptr && isInTransition(link))
        return false;
    entry->exception = !entry->exception;
    switchPair(entry, enabled);
    freeIfIdle(entry);
    return true;
}

void CxTreeSpace::switchPair(Entry* entry, bool enabled) {
    if (!entry->overlap)
        return;
    CxPairLink* link = entry->link;
    if (!enabled && link != nullptr) {
        if (mChanging && link->mList == kNew)
            dropLink(entry);
        else
            moveLink(link, mChanging ? kEnded : kNewDisabled);
    } else if (enabled && link != nullptr) {
        moveLink(link, kActive); // ended in this interval
    } else if (enabled) {
        newLink(entry, mChanging ? kNew : kNewEnabled);
    }
}

// Only pairs that are near, or were switched one by one, have entries. One in transition stays as it was.
void CxTreeSpace::SetAllPairOverlapEnabled(bool enabled) {
    const std::vector<Entry*> entries = allEntries();
    std::vector<Entry*> switched;
    for (Entry* entry : entries)
        if (isEnabled(entry) != enabled)
            switched.push_back(entry);
    for (Rep& rep : mReps)
        if (rep.model != nullptr)
            rep.rule = enabled ? kAllEnabled : kAllDisabled;
    for (Entry* entry : entries)
        entry->exception = false;
    for (Entry* entry : switched) {
        if (entry->overlap && entry->link != nullptr && isInTransition(entry->link))
            entry->exception = true;
        else
            switchPair(entry, enabled);
    }
    for (Entry* entry : entries)
        freeIfIdle(entry);
}

bool CxTreeSpace::isInTransition(const CxPairLink* link) const {
    return !mChanging && (link->mList == kNewDisabled || link->mList == kNewEnabled);
}

void CxTreeSpace::SetPairOverlapEnabled(int id, bool enabled) {
    for (int other = 0; other < mEndID; ++other)
        SetPairOverlapEnabled(id, other, enabled);
}

bool CxTreeSpace::GetPairOverlapEnabled(int id1, int id2) const {
    const Entry* entry = findEntry(id1, id2);
    return entry != nullptr ? isEnabled(entry) : isEnabledByDefault(id1, id2);
}

bool CxTreeSpace::GetPairOverlapStatus(int id1, int id2) const {
    const Entry* entry = findEntry(id1, id2);
    return entry != nullptr && entry->overlap;
}

std::size_t CxTreeSpace::GetPairOverlapEnabledCount() const {
    const auto pairsOf = [](std::size_t models) {
        return models < 2 ? 0 : models * (models - 1) / 2;
    };
    const auto withRule = [this](PairRule rule) {
        return static_cast<std::size_t>(
            std::count_if(mReps.begin(), mReps.end(), [rule](const Rep& rep) {
                return rep.model != nullptr && rep.rule == rule;
            }));
    };
    std::size_t count = mInitPairDisabled ? pairsOf(withRule(kAllEnabled))
                                          : pairsOf(mReps.size() - mFreeIDs.size()) -
                                                pairsOf(withRule(kAllDisabled));
    for (const Entry* entry : allEntries())
        if (entry->exception)
            count = isEnabled(entry) ? count + 1 : count - 1;
    return count;
}

ColModelPair* CxTreeSpace::GetPair(int id1, int id2) {
    const Entry* entry = id1 == id2 ? nullptr : findEntry(id1, id2);
    if (entry == nullptr || !entry->overlap || entry->link == nullptr)
        return nullptr;
    return &entry->link->mPair;
}

void CxTreeSpace::ForgetModel(const ColModel* model) {
    for (auto* links : {&mEnded, &mRemoved})
        for (CxPairLink* link : *links) {
            if (link->mPair.model1 == model)
                link->mPair.model1 = nullptr;
            if (link->mPair.model2 == model)
                link->mPair.model2 = nullptr;
        }
}
