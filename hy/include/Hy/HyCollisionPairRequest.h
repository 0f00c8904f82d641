#pragma once
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

#include <memory>

struct ColRequest;

namespace Hy {

/// How many contacts a pair of geometries may give, and how they are reduced to that number.
class HY_API HyCollisionPairRequest {
public:
    /// Normal of a group of contacts.
    enum GroupNormalMethodEnum : int {
        kGroupNormalMethodUseFirstContactNormal = 0,
        kGroupNormalMethodUseAverage = 1,
        kGroupNormalMethodUseContourNormal = 2,
        kGroupNormalMethodUseWeightedAverage = 3, ///< weighted by depth
    };
    /// Which contacts stay where two may.
    enum TwoContactsSimplifyMethodEnum : int {
        kTwoContactsSimplifyMethodMaximizeVolume = 0,
        kTwoContactsSimplifyMethodDeepest = 1,
    };

    /// With the values of a new ColRequest.
    HyCollisionPairRequest();
    HyCollisionPairRequest(unsigned contactMaxCount, bool faceNormalsFirst);
    HyCollisionPairRequest(const HyCollisionPairRequest& other);
    HyCollisionPairRequest(HyCollisionPairRequest&& other) noexcept;
    /// Takes the values of another; the record stays.
    HyCollisionPairRequest& operator=(const HyCollisionPairRequest& other);
    /// Takes the record of another, which takes this one's: who points to a record keeps it.
    HyCollisionPairRequest& operator=(HyCollisionPairRequest&& other) noexcept;
    ~HyCollisionPairRequest();

    void setContactMaxCount(unsigned count);
    [[nodiscard]] unsigned getContactMaxCount() const;
    /// Prefers contacts of faces to those of edges.
    void setFaceNormalsFirst(bool on);
    [[nodiscard]] bool getFaceNormalsFirst() const;
    void setCollinearThreshold(HyReal threshold);
    [[nodiscard]] HyReal getCollinearThreshold() const;
    /// Share of its size that a fast object may penetrate in one sub-step; nothing unless above 0 and
    /// below 1.
    void setMaxPenetrationFactor(HyReal factor);
    [[nodiscard]] HyReal getMaxPenetrationFactor() const;
    /// Most groups of contacts with about one normal, up to 6; above: a warning, and 6.
    void setGroupMaxCount(int count);
    [[nodiscard]] int getGroupMaxCount() const;
    /// Cosine above which two normals belong to one group.
    void setGroupAngleCosineTolerance(HyReal cosine);
    [[nodiscard]] HyReal getGroupAngleCosineTolerance() const;
    void setGroupNormalMethod(GroupNormalMethodEnum method);
    [[nodiscard]] GroupNormalMethodEnum getGroupNormalMethod() const;
    /// Distance in m under which contacts of two steps are one.
    void setContactMatchingEpsilon(HyReal distance);
    [[nodiscard]] HyReal getContactMatchingEpsilon() const;
    void setTwoContactsSimplifyMethod(TwoContactsSimplifyMethodEnum method);
    [[nodiscard]] TwoContactsSimplifyMethodEnum getTwoContactsSimplifyMethod() const;

    /// The record; it keeps its address while this lives and while it is moved.
    [[nodiscard]] ColRequest* getColRequest() const { return mColRequest.get(); }

private:
    std::unique_ptr<ColRequest> mColRequest; ///< never null but after a move
};

} // namespace Hy
