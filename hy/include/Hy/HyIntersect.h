#pragma once
#include <Kit/KitApi.h>

namespace Hy {
class HyCollisionGeometry;
class HyCollisionPairRequest;
class HyIntersectResult;
class HyPart;

/// Questions that are answered at once, without waiting for a step.
class HY_API HyIntersect {
public:
    /// What a subscriber says of a candidate.
    enum IntersectAction : int {
        kIntersectionTest = 0,      ///< test it, if the pair is one that a step would look at
        kForceIntersectionTest = 1, ///< test it in any case
        kNoIntersectionTest = 2,    ///< pass it over
        kStop = 3,                  ///< end the query
    };

    /// Chooses candidates and hears of hits.
    class HY_API IntersectSubscriber {
    public:
        virtual ~IntersectSubscriber() = default;
        virtual IntersectAction collisionFilter(HyCollisionGeometry*) { return kIntersectionTest; }
        /// A geometry is touched; mResult tells where. False ends the query.
        virtual bool notify(HyCollisionGeometry* geometry) = 0;

        HyIntersectResult* mResult = nullptr;   ///< valid within notify()
        HyCollisionGeometry* mTestCg = nullptr; ///< the geometry asked about
    };

    /// Contacts of two geometries where they stand; the result stays if their boxes are apart.
    static void intersectPair(HyCollisionGeometry* g1, HyCollisionGeometry* g2,
                              HyIntersectResult* result);
    static void intersectPair(HyCollisionGeometry* g1, HyCollisionGeometry* g2,
                              HyCollisionPairRequest* request, HyIntersectResult* result);
    /// Whether anything touches a geometry of a universe, by the boxes of the last step.
    /// @param subscriber not owned; null asks for touch alone
    /// @param updateTransitions take in first what was added and removed since
    static bool intersect(HyCollisionGeometry* geometry, IntersectSubscriber* subscriber,
                          bool updateTransitions);
    /// The same for each geometry of a part.
    static bool intersect(HyPart* part, IntersectSubscriber* subscriber, bool updateTransitions);
};

} // namespace Hy
