#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitPool.h>
#include <Kit/KitTypes.h>

struct ColModel;
struct ColRequest;
namespace Hy {
class HyBridge;
class HyCollisionGeometry;
class HyIntersectFilter;
class HyLineSegIntersectSub;
} // namespace Hy

using ColTermActionFn = void (*)();

struct ColTermAction {
    ColTermActionFn action;
    ColTermAction* next;
};

/// What a subscriber of a line-segment query says of a geometry.
enum ColLineSegAction : int {
    kColLineSegIntersect = 0,
    kColLineSegIgnore = 1,
    kColLineSegStop = 2,
};

/// How this layer reaches what the layers above own; filled by them, null entries are allowed.
/// Called by whatever thread intersects.
struct ColHost {
    /// Whether a filter lets two models touch; a missing entry lets all.
    bool (*isPairEnabled)(Hy::HyIntersectFilter* filter, ColModel* model1,
                          ColModel* model2) = nullptr;
    /// Request of two request ids, or null for none.
    ColRequest* (*partPartRequest)(Hy::HyBridge* bridge, int requestID1, int requestID2) = nullptr;
    ColLineSegAction (*notifyLineSeg)(Hy::HyLineSegIntersectSub* subscriber,
                                      Hy::HyCollisionGeometry* geometry) = nullptr;
};

/// The collision layer of the process.
struct ColFramework {
    int refCount = 0;
    ColTermAction* termActions = nullptr; ///< newest first
    KitPool modelPool;
    KitReal mDefaultPadding = 0; ///< contact tolerance of a new model, m
    ColHost host;
};

/// Null until ColInit().
extern HY_API ColFramework* gColFramework;

/// Starts the layer with one holder: room for geoTypeMaxCount + 16 geometry types and, growing,
/// modelCount models. A framework that is there already, a type count outside 0 to 1024 or a model
/// count below 1 gives a warning and no change.
HY_API void ColInit(int geoTypeMaxCount, int modelCount);
/// Starts the layer unless it is there.
HY_API void ColDefaultInit();
/// Runs the termination actions, newest first, while types and pools still serve them, and then
/// takes everything down, models included. Nothing happens without a framework.
HY_API void ColTerm();
HY_API void ColFrameRef();
/// Holders of the framework, 0 without one.
[[nodiscard]] HY_API int ColFrameGetRef();
/// The last holder takes the layer down.
HY_API void ColFrameUnref();
/// Starts the framework if need be.
HY_API void ColRegisterTermAction(ColTermActionFn action);

/// Contact tolerance of each model made from now on, m, finite and not negative.
HY_API void ColModelSetDefaultContactTolerance(KitReal tolerance);
[[nodiscard]] HY_API KitReal ColModelGetDefaultContactTolerance();

/// Starts the framework if need be.
HY_API void ColSetHost(const ColHost& host);
/// Entries are null without a framework.
[[nodiscard]] HY_API const ColHost& ColGetHost();
