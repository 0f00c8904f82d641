#pragma once
#include <Col/ColContact.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

struct ColIntersectThreadedData;
struct ColModelPair;
struct ColTriangleList;
struct KitPool;
namespace Hy {
class HyBridge;
}

constexpr int kColMaxGroups = 6;

/// Contacts of about one normal, neighbours in the result's array.
struct ColIntersectGroupResult {
    int contactCount = 0;
    KitReal surface = 0; ///< area of contact, m^2, or 1 if it was not asked for
    lsVec3 normal;
};

/// What one intersection reads and writes.
struct ColIntersectResult {
    ColModelPair* pair = nullptr;
    ColContact* contacts = nullptr; ///< room for contactMaxCount; not owned
    int contactMaxCount = 0;
    int contactCount = 0; ///< written
    int groupCount = 0;
    ColIntersectGroupResult groupResult[kColMaxGroups];
    int touch = 0;                  ///< not 0 when the models touch, with or without contacts
    lsVec3 normal;                  ///< representative normal
    void* data = nullptr;           ///< carried, not read
    KitReal safeTime = 0;           ///< s, time of first contact within a path intersection
    KitPool* contactPool = nullptr; ///< of one worker, for buffers of contacts
    ColTriangleList* userTriangleList = nullptr;      ///< of one worker
    ColIntersectThreadedData* threadedData = nullptr; ///< null without workers
    Hy::HyBridge* bridge = nullptr;                   ///< carried, not read
};

/// No contacts, no groups, no touch.
inline void ColIntersectResultClear(ColIntersectResult* result) noexcept {
    result->contactCount = result->groupCount = result->touch = 0;
}
