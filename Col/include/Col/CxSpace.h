#pragma once
#include <Col/ColModelPair.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

#include <cstddef>
#include <cstdint>
#include <span>

struct ColModel;
class KitThreadPool;

/// World box of a model along its motion of `duration` seconds.
using BoundsUpdateCb = void (*)(ColModel* model, lsVec3* minCorner, lsVec3* maxCorner,
                                KitReal duration);

/// What a walk along a segment asks of a model whose box the segment enters.
/// @return distance from the start beyond which no more models are of interest, m; negative ends the
/// walk
using CxSegmentCb = KitReal (*)(ColModel* model, void* data);

/// Record of two models whose boxes overlap, from hello to goodbye; it stays in place.
struct CxPairLink {
    ColModelPair mPair;
    int mID1 = -1; ///< the smaller id; -1 once a model was removed
    int mID2 = -1;
    std::uint64_t mSerial1 = 0; ///< serials of the models, the smaller first: the order of delivery
    std::uint64_t mSerial2 = 0;
    int mList = 0;          ///< of the space
    std::size_t mIndex = 0; ///< of the space
    void* mOwner = nullptr; ///< of the space
};

/// The broad phase: holds models and tells which pairs of them have overlapping boxes.
///
/// A pair begins when the boxes overlap strictly on all axes and ends when they are strictly apart on
/// one, so two boxes that come to touch exactly keep the state that they had. Changes are made inside
/// a change interval, from UpdateBegin() to UpdateEnd(), and count by their net effect; a new space is
/// changing. Outside of one the lists are stable. What is enabled, disabled or removed outside takes
/// effect in the next interval. Pairs are listed by the order of creation of their models.
///
/// One thread at a time; boxes may be computed on the workers of setThreadPool().
class HY_API CxSpace {
public:
    virtual ~CxSpace() = default;

    /// Room of the table of models, and how much of it is free. It grows by doubling.
    [[nodiscard]] virtual int GetSize() const = 0;
    [[nodiscard]] virtual int GetFree() const = 0;
    /// Room of the table of pairs, which grows as well.
    [[nodiscard]] virtual std::size_t GetMaxPairCount() const = 0;

    /// Adds a model as dynamic and answers its id, -1 without memory. A parked one has no pairs.
    virtual int Insert(ColModel* model, bool parked) = 0;
    /// Takes a model out; its pairs come out as goodbyes, ahead of others.
    virtual void Remove(int id) = 0;
    /// A parked model keeps its id and the disabled state of its pairs, and has no pairs.
    virtual void Park(int id, bool parked) = 0;
    [[nodiscard]] virtual ColModel* GetRepData(int id) const = 0;
    [[nodiscard]] virtual bool ValidID(int id) const = 0;
    /// One more than the highest id in use.
    [[nodiscard]] virtual int GetEndID() const = 0;

    /// A model that is not dynamic is passed over by UpdateAll() and keeps its pairs.
    virtual void SetDynamic(int id, bool dynamic) = 0;
    [[nodiscard]] virtual bool GetDynamic(int id) const = 0;
    /// Tells that a model's short-term status changed, which decides whether its pairs rest.
    virtual void StatusChanged(int id) = 0;

    /// The box of a model; null updates nothing.
    virtual void SetAABBUpdateFn(BoundsUpdateCb fn) = 0;
    /// Workers for UpdateAll(), not owned; used from 129 models on. Null computes on the caller.
    virtual void SetThreadPool(KitThreadPool* pool) = 0;
    virtual void SetData(void* userData) = 0;
    [[nodiscard]] virtual void* GetData() const = 0;

    /// Opens a change interval: hello pairs become staying, goodbye records die. False if it is open.
    virtual bool UpdateBegin() = 0;
    /// Closes the interval and brings the lists up to date; nothing if none is open.
    virtual void UpdateEnd() = 0;
    [[nodiscard]] virtual bool IsChanging() const = 0;
    /// Takes new boxes of all dynamic models. False without a function for the boxes.
    virtual bool UpdateAll(KitReal duration) = 0;
    /// Opens an interval if need be, takes the new box of one model and leaves the interval open.
    /// A model that is not dynamic is passed over unless forced.
    virtual void UpdateSingle(int id, KitReal duration, bool forceUpdate) = 0;
    /// Takes the new box of one model; opens an interval for it and closes it, or leaves an open one
    /// open.
    virtual bool Update(int id, KitReal duration) = 0;

    /// The box that a model has in the space; false if there is none.
    virtual bool GetBox(int id, lsVec3* min, lsVec3* max) const = 0;
    /// Calls back for each model that is not parked and whose box a segment enters, about from near to
    /// far, in an order that depends on the space alone. Boxes are those of the last update; inside
    /// a change interval the models that came or left their place in the trees are tried one by one.
    /// The space
    /// must not be changed meanwhile; without changes, walks of several threads may run at once.
    virtual void WalkSegment(const lsVec3& start, const lsVec3& end, CxSegmentCb visit,
                             void* data) const = 0;
    /// Gives a model a box, padding included, until its next update. Opens an interval if need be and
    /// leaves it open.
    virtual void SetBox(int id, const lsVec3& min, const lsVec3& max) = 0;

    /// Pairs that began in the last interval.
    [[nodiscard]] virtual std::span<CxPairLink* const> GetNewPairOverlapList() = 0;
    /// Pairs that stay, without those at rest.
    [[nodiscard]] virtual std::span<CxPairLink* const> GetPairOverlapList() = 0;
    /// Pairs that stay of two models that are not dynamic.
    [[nodiscard]] virtual std::span<CxPairLink* const> GetRestingPairList() = 0;
    /// Pairs that ended, those of removed models first.
    [[nodiscard]] virtual std::span<CxPairLink* const> GetOldPairOverlapList() = 0;
    /// Pairs of models that were removed or parked since the last interval ended.
    [[nodiscard]] virtual std::span<CxPairLink* const> GetRemovedPairList() = 0;
    /// The living pairs of a model one by one, from null on; null at the end.
    [[nodiscard]] virtual CxPairLink* GetNextPairOf(int id, const CxPairLink* link) = 0;
    /// Whether a link stands in its list still; what was disabled or removed since does not.
    [[nodiscard]] virtual bool IsListed(const CxPairLink* link) const = 0;
    /// Both models not dynamic and none disabled for a short term.
    [[nodiscard]] virtual bool IsResting(const CxPairLink* link) const = 0;

    /// False if nothing can change now: a pair of a model with itself, or in transition.
    virtual bool SetPairOverlapEnabled(int id1, int id2, bool enabled) = 0;
    /// The same for every pair of the model.
    virtual void SetPairOverlapEnabled(int id, bool enabled) = 0;
    /// The same for every pair of the models that are here; the work goes with those that are near.
    virtual void SetAllPairOverlapEnabled(bool enabled) = 0;
    [[nodiscard]] virtual bool GetPairOverlapEnabled(int id1, int id2) const = 0;
    /// Whether the boxes overlap, enabled or not.
    [[nodiscard]] virtual bool GetPairOverlapStatus(int id1, int id2) const = 0;
    [[nodiscard]] virtual std::size_t GetPairOverlapEnabledCount() const = 0;
    /// The pair of two overlapping models, null if there is none.
    [[nodiscard]] virtual ColModelPair* GetPair(int id1, int id2) = 0;
    /// Clears a model that is about to die from the records that still wait for their goodbye.
    virtual void ForgetModel(const ColModel* model) = 0;
};
