#pragma once
#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyRefCount.h>
#include <Hy/HySmartPtr.h>

class CxSpace;
struct ColIntersectResult;
struct ColModelPair;
struct DynWorld;

namespace Hy {
class HyBridge;
class HyCollisionGeometryPair;
class HyIntersectResult;
struct HyResponsePair;

// What is done with a pair of models, by their response ids. All run on the stepping thread, in the
// order of the pairs.

/// When a pair begins; binds its functions by ColHelloWithRequest().
class HY_API HyResponseHello : public HyRefCount {
public:
    virtual void operator()(HyBridge* bridge, ColModelPair* pair, CxSpace* space, DynWorld* world,
                            const HyResponsePair* response) = 0;
};

/// When a pair was intersected and touches, or touched in the last step.
class HY_API HyResponseActive : public HyRefCount {
public:
    virtual void operator()(HyBridge* bridge, ColModelPair* pair, ColIntersectResult* result,
                            CxSpace* space, DynWorld* world, const HyResponsePair* response) = 0;
};

/// When a pair ends. Its models may be gone: the pair's may be null.
class HY_API HyResponseGoodbye : public HyRefCount {
public:
    virtual void operator()(HyBridge* bridge, ColModelPair* pair, CxSpace* space, DynWorld* world,
                            const HyResponsePair* response) = 0;
};

/// The responses to pairs of two response ids; each may be null.
struct HyResponsePair {
    HyCollisionPairRequest mRequest;
    HySmartPtr<HyResponseHello> mResponseHello;
    HySmartPtr<HyResponseActive> mResponseActive;
    HySmartPtr<HyResponseGoodbye> mResponseGoodbye;
};

/// Two parts: takes the request from the table of request ids and begins with no contacts.
class HY_API HyResponseStartBody_Body : public HyResponseHello {
public:
    void operator()(HyBridge* bridge, ColModelPair* pair, CxSpace* space, DynWorld* world,
                    const HyResponsePair* response) override;
};

/// With a sensor: takes the request of the responses.
class HY_API HyResponseStart_Sensor_Body : public HyResponseHello {
public:
    void operator()(HyBridge* bridge, ColModelPair* pair, CxSpace* space, DynWorld* world,
                    const HyResponsePair* response) override;
};
class HY_API HyResponseStart_Sensor_Sensor : public HyResponseStart_Sensor_Body {};
class HY_API HyResponseStart_Sensor_PS : public HyResponseStart_Sensor_Body {};

/// Two parts: turns the result into contacts of the dynamics, which continue those of the last step.
class HY_API HyResponseBody_Body : public HyResponseActive {
public:
    void operator()(HyBridge* bridge, ColModelPair* pair, ColIntersectResult* result,
                    CxSpace* space, DynWorld* world, const HyResponsePair* response) override;
};

/// Two parts: wakes them if they move and ends their contacts.
class HY_API HyResponseEndBody_Body : public HyResponseGoodbye {
public:
    void operator()(HyBridge* bridge, ColModelPair* pair, CxSpace* space, DynWorld* world,
                    const HyResponsePair* response) override;
};

/// A response of the application's own.
class HY_API HyResponseActive_User : public HyResponseActive {
public:
    void operator()(HyBridge* bridge, ColModelPair* pair, ColIntersectResult* result,
                    CxSpace* space, DynWorld* world, const HyResponsePair* response) override;
    virtual void userResponse(HyIntersectResult* result, const HyCollisionGeometryPair* pair) = 0;
};

} // namespace Hy
