#pragma once
#include <Hy/HyIntersect.h>
#include <Hy/HyIntersectSubscriberList.h>
#include <Hy/HyResponse.h>
#include <Hy/HySymmetricTable.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class CxSpace;
struct ColIntersectResult;
struct ColModel;
struct ColModelPair;
struct ColModelPairContainer;
struct ColRequest;
struct DynWorld;

namespace Hy {
class HyCollisionGeometry;
class HyContactMaterial;
class HyMaterial;
class HyMaterialTable;

/// Answer of HyBridge::detectCollisions().
enum CGTestEnum : int {
    kCGCollisionNone = 0,
    kCGCollidesAndAborted = 1,
    kCGCollides = 2,
};

/// The road from overlapping boxes to contacts of the dynamics, one a universe.
///
/// A step takes the pairs out of the space, says goodbye and hello, intersects the pairs that need it,
/// on workers where that is switched on, and hands each result to the response that the pair's two
/// response ids select. Responses and subscribers run on the stepping thread in the order of the
/// pairs, after all have been intersected, so the number of workers changes no result.
class HY_API HyBridge : public HySubscriberListResponseHandler {
public:
    /// @param materialTable,space,world not owned
    /// @param contactBufferSize contacts that one pair may give at first
    HyBridge(HyMaterialTable* materialTable, CxSpace* space, DynWorld* world,
             int contactBufferSize);
    ~HyBridge() override;

    // Tables.

    /// Pairs that are taken out of the space at a time; only grows.
    void setCollisionPairsMaxCount(unsigned count);
    [[nodiscard]] unsigned getCollisionPairsMaxCount() const { return mCollisionPairsMaxCount; }
    /// Contacts that one pair may give before its buffer grows.
    [[nodiscard]] int getContactBufferSize() const { return mContactBufferSize; }
    void setContactBufferSize(int size);

    /// An id out of range is fatal.
    void setResponse(int id1, int id2, const HyResponsePair& response);
    [[nodiscard]] HyResponsePair& getResponse(int id1, int id2);
    [[nodiscard]] const HyResponsePair& getResponse(int id1, int id2) const;
    /// Highest response id.
    [[nodiscard]] int getResponseMaxIndex() const;
    void setResponseMaxIndex(int index);
    [[nodiscard]] bool haveSameResponseFunction(int id1, int id2) const;
    /// Whether the pairs of two response ids carry contacts, as those of two parts do.
    [[nodiscard]] bool makesContacts(int id1, int id2) const;
    /// A new response id that behaves as the template.
    int getNewResponseIDFromTemplateID(int templateID);

    /// The request of pairs of parts whose geometries have these request ids; grows the table.
    void setPartPartResponseRequest(int id1, int id2, const HyCollisionPairRequest& request);
    /// Ids beyond the table take the default.
    [[nodiscard]] HyCollisionPairRequest& getPartPartResponseRequest(int id1, int id2);
    [[nodiscard]] ColRequest* getPartPartColRequest(int id1, int id2);
    [[nodiscard]] int getPartPartResponseRequestMaxIndex() const;
    void setPartPartResponseRequestMaxIndex(int index);
    /// Gives the living pairs of a geometry the request of its present id.
    void updatePairsForNewCollisionGeometryRequest(HyCollisionGeometry* geometry);

    void setMaterialTable(HyMaterialTable* table) { mMaterialTable = table; }
    /// Null stands for the default material; never null.
    [[nodiscard]] const HyContactMaterial* getContactMaterial(const HyMaterial* material1,
                                                              const HyMaterial* material2) const;
    /// The material's present name, valid for ever.
    [[nodiscard]] const char* getInternedName(const HyContactMaterial& material) const;

    // Step.

    /// Brings transitions, contacts and subscribers up to date. Called between two change intervals
    /// of the space: ends the one and begins the next.
    /// @param time step in s; 0 also visits pairs at rest
    void updateContacts(HyReal time);
    /// The transitions alone. Neither may be called from a response or subscriber: a warning, and
    /// nothing happens.
    void updateTransitions();
    /// The model has left the space: its pairs end at once, and results that wait are dropped.
    void modelRemoved(ColModel* model);
    /// A model inside of a composite goes: results that name it are dropped.
    void childModelRemoved(const ColModel* model);
    /// Whether an update is under way: inside responses and subscribers.
    [[nodiscard]] bool isUpdating() const { return mUpdating; }
    /// Time of the first impact that the last update found, s; its time if there was none.
    [[nodiscard]] HyReal getCollisionSafeTime() const { return mSafeTime; }
    /// Looks at the pairs of a geometry where they stand, see HyIntersect::intersect().
    CGTestEnum detectCollisions(HyCollisionGeometry* geometry, HyReal time,
                                HyIntersect::IntersectSubscriber* subscriber);
    void resetAccumulatedIntersectSubscriberTime() { mAccIntersectSubscriberTime = 0; }
    /// s, since it was reset.
    [[nodiscard]] HyReal getAccumulatedIntersectSubscriberTime() const {
        return mAccIntersectSubscriberTime;
    }

    // Settings.

    /// Intersects pairs on the frame's workers.
    void setMultithreaded(bool on) { mMultiThreaded = on; }
    [[nodiscard]] bool getMultithreaded() const { return mMultiThreaded; }
    /// Merges the contacts of all pairs of the same two bodies into one result, which is simplified as
    /// that of one pair is: for parts of many geometries. Off at first; switching it on ends the
    /// contacts there are. Only pairs of the same two response ids merge. Not from a response or
    /// subscriber: a warning, and nothing happens.
    void setBatchPartPairContact(bool on);
    [[nodiscard]] bool getBatchPartPairContact() const { return mBatchPartPairContact; }
    /// Whether pairs of two bodies that are not dynamic are intersected.
    void setAcceptNonDynamicPairCollision(bool on) { mAcceptNonDynamicPairCollision = on; }
    [[nodiscard]] bool getAcceptNonDynamicPairCollision() const {
        return mAcceptNonDynamicPairCollision;
    }
    /// Whether subscribers are called.
    void setCallBackEnabled(bool on) { mCallBackEnabled = on; }

    void addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                HyIntersectSubscriber* subscriber, unsigned priority) override;
    bool removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                   HyIntersectSubscriber* subscriber) override;
    void removeAllIntersectSubscriber() override;

    struct Result;
    struct Merged;

private:
    /// A pair in batch mode by the creation of its two bodies, 0 for none, and its response ids.
    struct BatchEntry {
        std::uint64_t high, low;
        int highID, lowID;
        int place; ///< in the container before
        ColModelPair* pair;
    };
    class WorkUnit;
    class TriangleLists;
    struct Arena;

    void fillRequestTable();
    void countSubscriber(int id1, int id2, eIntersectEventType event, int change);
    [[nodiscard]] bool beginUpdate(const char* operation);
    void endUpdate();
    void handleTransitions();
    void handleCollisions(HyReal time);
    void collide(std::size_t first, std::size_t end, HyReal time, Arena& arena) const;
    void collidePair(ColModelPair* pair, HyReal time, Arena& arena) const;
    [[nodiscard]] bool pairNeedsCollision(const ColModel* model1, const ColModel* model2,
                                          bool sensorSensor, bool sensorPart,
                                          bool acceptNonDynamic) const;
    [[nodiscard]] static bool bothRest(const ColModel* model1, const ColModel* model2);
    void sortByGenerators();
    void respond(std::size_t units);
    void respond(Result& result);
    void sortBatch();
    [[nodiscard]] bool goesOnInBatch(std::size_t i) const;
    static void mergeLast(Arena& arena);
    static void endBatchRun(Arena& arena);
    static void endContacts(ColModelPair* pair, Arena& arena);
    [[nodiscard]] std::size_t unitEnd(std::size_t from, std::size_t end) const;
    void dropResultsOf(const ColModel* model);
    void handlePairResponse(ColModelPair* pair, ColIntersectResult* result,
                            eIntersectEventType event);
    void sayGoodbye(ColModelPair* pair);
    void sayResponseGoodbye(ColModelPair* pair);
    void handleInactivePairs();
    void notify(ColModelPair* pair, ColIntersectResult* result, eIntersectEventType event);

    HyMaterialTable* mMaterialTable;
    CxSpace* mSpace;
    DynWorld* mWorld;
    HySymmetricTable<HyResponsePair> mResponseTable;
    HySymmetricTable<std::unique_ptr<HyCollisionPairRequest>> mRequestTable;
    ColModelPairContainer* mPairs = nullptr; ///< owned
    unsigned mCollisionPairsMaxCount = 0;
    int mContactBufferSize;
    std::vector<std::unique_ptr<Arena>> mArenas; ///< one a work unit
    std::vector<WorkUnit> mUnits;
    std::vector<int> mOrder; ///< places of the pairs at hand, in the order of their intersection
    std::vector<std::uint8_t> mBuckets;
    std::vector<Result*> mWaiting;                 ///< by place of the pair
    std::vector<BatchEntry> mBatch;                ///< of the pairs at hand
    std::unique_ptr<TriangleLists> mTriangleLists; ///< one a thread
    HyReal mAccIntersectSubscriberTime = 0;
    HyReal mSafeTime = 0;
    int mNumInactiveEntityPairSubscribers = 0;
    int mNumSensorSensorPairSubscribers = 0;
    int mNumSensorPartPairSubscribers = 0;
    bool mAcceptNonDynamicPairCollision = false;
    bool mCallBackEnabled = true;
    bool mMultiThreaded = false;
    bool mToldThreaded = false;
    bool mBatchPartPairContact = false;
    bool mUpdating = false;
};

} // namespace Hy
