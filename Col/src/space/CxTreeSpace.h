#pragma once
#include "BoxTree.h"
#include "PairTable.h"
#include "RecordPool.h"

#include <Col/CxSpace.h>
#include <Kit/KitThreadPool.h>

#include <cstdint>
#include <vector>

/// The broad phase over two dynamic trees of fat boxes, one of the moving and one of the resting
/// models. Only a model that left its fat box moves in its tree and asks for its neighbours; whom it
/// meets becomes a candidate, and each interval tests the tight boxes of the candidates of moving
/// models. Boxes too large for a tree, as those of planes, stand in a flat list.
class CxTreeSpace final : public CxSpace {
public:
    /// @param axes mask of the axes that count: 1 x, 2 y, 4 z
    CxTreeSpace(unsigned axes, int modelCount, std::size_t pairCount, bool initPairDisabled);
    ~CxTreeSpace() override;

    int GetSize() const override { return static_cast<int>(mReps.size()); }
    int GetFree() const override { return static_cast<int>(mFreeIDs.size()); }
    std::size_t GetMaxPairCount() const override { return mTable.GetRoom(); }

    int Insert(ColModel* model, bool parked) override;
    void Remove(int id) override;
    void Park(int id, bool parked) override;
    ColModel* GetRepData(int id) const override;
    bool ValidID(int id) const override;
    int GetEndID() const override { return mEndID; }

    void SetDynamic(int id, bool dynamic) override;
    bool GetDynamic(int id) const override;
    void StatusChanged(int id) override;

    void SetAABBUpdateFn(BoundsUpdateCb fn) override { mAABBUpdateFn = fn; }
    void SetThreadPool(KitThreadPool* pool) override { mPool = pool; }
    void SetData(void* userData) override { mUserData = userData; }
    void* GetData() const override { return mUserData; }

    bool UpdateBegin() override;
    void UpdateEnd() override;
    bool IsChanging() const override { return mChanging; }
    bool UpdateAll(KitReal duration) override;
    void UpdateSingle(int id, KitReal duration, bool forceUpdate) override;
    bool Update(int id, KitReal duration) override;
    bool GetBox(int id, lsVec3* min, lsVec3* max) const override;
    void WalkSegment(const lsVec3& start, const lsVec3& end, CxSegmentCb visit,
                     void* data) const override;
    void SetBox(int id, const lsVec3& min, const lsVec3& max) override;

    std::span<CxPairLink* const> GetNewPairOverlapList() override { return mNew; }
    std::span<CxPairLink* const> GetPairOverlapList() override { return mActive; }
    std::span<CxPairLink* const> GetRestingPairList() override;
    std::span<CxPairLink* const> GetOldPairOverlapList() override { return mEnded; }
    std::span<CxPairLink* const> GetRemovedPairList() override { return mRemoved; }
    CxPairLink* GetNextPairOf(int id, const CxPairLink* link) override;
    bool IsListed(const CxPairLink* link) const override;
    bool IsResting(const CxPairLink* link) const override;

    bool SetPairOverlapEnabled(int id1, int id2, bool enabled) override;
    void SetPairOverlapEnabled(int id, bool enabled) override;
    void SetAllPairOverlapEnabled(bool enabled) override;
    bool GetPairOverlapEnabled(int id1, int id2) const override;
    bool GetPairOverlapStatus(int id1, int id2) const override;
    std::size_t GetPairOverlapEnabledCount() const override;
    ColModelPair* GetPair(int id1, int id2) override;
    void ForgetModel(const ColModel* model) override;

private:
    /// Where a link stands.
    enum List : int {
        kNone = 0,    ///< dropped without a report
        kNew,         ///< hello
        kActive,      ///< stays, and one of the models may move
        kResting,     ///< stays at rest
        kEnded,       ///< goodbye
        kRemoved,     ///< goodbye in the next interval, a model is gone
        kNewDisabled, ///< goodbye in the next interval
        kNewEnabled,  ///< hello in the next interval
    };
    /// Two models that are near, or whose pair was enabled or disabled against the default.
    struct Entry {
        int id[2] = {-1, -1}; ///< the smaller first
        bool overlap = false; ///< as of the last interval
        bool exception = false;
        bool candidate = false;              ///< the fat boxes meet
        std::size_t awake = kNotAwake;       ///< place among the candidates of moving models
        CxPairLink* link = nullptr;          ///< the pair's record until it was reported as ended
        Entry* next[2] = {nullptr, nullptr}; ///< in the list of each model
        Entry* previous[2] = {nullptr, nullptr};
    };
    static constexpr std::size_t kNotAwake = SIZE_MAX;
    struct Candidate {
        int id[2];
        Entry* entry;
    };
    struct TightBox {
        KitReal min[3];
        KitReal max[3];
    };
    /// The default of the pairs of two models that bear the same rule.
    enum PairRule : std::uint8_t { kNoRule, kAllEnabled, kAllDisabled };
    enum Home : std::uint8_t { kNowhere, kInMovingTree, kInRestingTree, kInHugeList };
    struct Rep {
        ColModel* model = nullptr; ///< null: the id is free
        Entry* pairs = nullptr;
        CxFloatBox fat{};
        Home home = kNowhere;
        PairRule rule = kNoRule;
        bool dynamic = false;
        bool parked = false;
        bool placed = false;  ///< has a box
        bool left = false;    ///< the box left the fat one, or the model is new
        bool listed = false;  ///< waits for its place
        bool touched = false; ///< has a new box outside UpdateAll()
        bool reclassify = false;
        bool warned = false;
        bool bad = false;        ///< the last box was no box, and nobody was told
        std::uint32_t fresh = 0; ///< order of insertion in this interval, 0 for older ones
    };
    class BoxUnit;

    static std::size_t idx(int i) noexcept { return static_cast<std::size_t>(i); }
    void growModels(std::size_t size);
    void takeBox(int id, const lsVec3& min, const lsVec3& max);
    void computeBoxes(const int* first, const int* last, KitReal duration);
    void touch(int id);
    void markLeft(int id);
    void place(int id);
    void unplace(int id);
    void placeThoseThatLeft();
    void findNeighbours(int id);

    Entry* findEntry(int id1, int id2) const;
    Entry* addEntry(int id1, int id2);
    void freeEntry(Entry* entry);
    void freeIfIdle(Entry* entry);
    bool isEnabledByDefault(int id1, int id2) const;
    bool isEnabled(const Entry* entry) const;
    void switchPair(Entry* entry, bool enabled);
    std::vector<Entry*> allEntries() const;
    bool isAwake(const Entry* entry) const;
    void setAwake(Entry* entry, bool awake);
    void reclassifyPairs();
    bool boxesOverlap(const Entry* entry) const;
    void evaluate(Entry* entry);
    void evaluateTouched();

    CxPairLink* newLink(Entry* entry, List list);
    void moveLink(CxPairLink* link, List list);
    void dropLink(Entry* entry);
    void detach(CxPairLink* link);
    void takeFromResting(CxPairLink* link);
    bool isInTransition(const CxPairLink* link) const;
    void takePairsOf(int id, bool keepExceptions);
    void compact();

    unsigned mAxes;
    bool mInitPairDisabled;
    bool mChanging = true;
    bool mAllUpdated = false;
    bool mRestingSorted = true;
    bool mActiveStale = false; ///< has links that moved to another list
    bool mNewStale = false;
    BoundsUpdateCb mAABBUpdateFn = nullptr;
    KitThreadPool* mPool = nullptr;
    void* mUserData = nullptr;
    int mEndID = 0;
    std::uint32_t mInsertions = 0;

    std::vector<Rep> mReps;
    std::vector<TightBox> mBoxes; ///< by id
    std::vector<int> mFreeIDs;    ///< a stack, so that a fresh table hands out ascending ids
    std::vector<std::uint64_t> mDynamicBits;
    std::vector<int> mDynamicIDs;
    std::vector<int> mLeft, mTouched, mReclassify, mFresh;
    CxBoxTree mMovingTree, mRestingTree;
    std::vector<int> mHuge;

    CxPairTable<Entry> mTable;
    CxRecordPool<Entry> mEntries;
    CxRecordPool<CxPairLink> mLinks;
    std::vector<Candidate> mAwake;
    std::vector<CxPairLink*> mNew, mActive, mResting, mEnded;
    std::vector<CxPairLink*> mRemoved, mNewDisabled, mNewEnabled;
    std::vector<CxPairLink*> mIncoming; ///< to be sorted into mActive
    std::vector<CxPairLink*> mLeftResting, mDropped, mMerge;
    std::vector<BoxUnit> mUnits;
};
