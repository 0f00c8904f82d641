#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct ColIntersectResult;
struct ColModel;
struct ColModelPair;
struct ColRequest;
struct ColSafeTimeResult;

/// Writes the contacts of a pair into the result and answers whether the models touch.
using ColIntersectFn = int (*)(ColModelPair* pair, ColIntersectResult* result);
/// The same along the motion of `time` seconds; sets safeTime.
using ColPathIntersectFn = int (*)(ColModelPair* pair, ColIntersectResult* result, KitReal time);
/// Time until the two models can first touch, at most maxTime.
using ColSafeTimeFn = void (*)(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
using ColHelloFn = void (*)(ColModelPair* pair);
using ColGoodbyeFn = void (*)(ColModelPair* pair);

/// Values of ColModelPair::m_flags.
constexpr int kColPairWasIntersecting = 1;
constexpr int kColPairEnded = 2; ///< its goodbye was said

/// Two models whose boxes overlap. ColHello() binds the functions and fixes the order of the models.
struct ColModelPair {
    ColModel* model1 = nullptr;
    ColModel* model2 = nullptr;
    ColRequest* request = nullptr; ///< never null between hello and goodbye; not owned
    void* userData = nullptr;
    void* m_cachedData = nullptr; ///< the generator's memory between steps; its goodbye frees it
    ColIntersectFn m_intersectFn = nullptr;
    ColPathIntersectFn m_pathIntersectFn = nullptr;
    ColSafeTimeFn m_safetimeFn = nullptr;
    ColGoodbyeFn m_goodbyeFn = nullptr;
    void* responseData = nullptr; ///< of the bridge
    int m_flags = 0;
    /// Response ids as of the begin, which a goodbye may still read when the models are gone.
    int mResponseID1 = 0;
    int mResponseID2 = 0;
};

/// A pair made by hand, in no space; ColModelPairDestroy() takes it. The models are not owned.
[[nodiscard]] HY_API ColModelPair* ColModelPairCreate(ColModel* model1, ColModel* model2);
HY_API void ColModelPairDestroy(ColModelPair* pair);
/// Clears all but the models and installs the default request.
HY_API void ColModelPairReset(ColModelPair* pair, ColModel* model1, ColModel* model2);
/// @param request not owned; null installs the default
HY_API void ColModelPairSetRequestPtr(ColModelPair* pair, ColRequest* request);
[[nodiscard]] HY_API ColRequest* ColModelPairGetRequestPtr(const ColModelPair* pair);
HY_API void ColModelPairSetWasIntersecting(ColModelPair* pair, bool intersecting);
[[nodiscard]] HY_API bool ColModelPairGetWasIntersecting(const ColModelPair* pair);
