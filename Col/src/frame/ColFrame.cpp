#include <Col/ColFrame.h>
#include <Col/ColIntersect.h>
#include <Col/ColModel.h>
#include <Kit/KitMessage.h>
#include "ColFrameTables.h"

#include <cmath>
#include <memory>

ColFramework* gColFramework = nullptr;

namespace {
constexpr int kSpareTypes = 16;
constexpr int kMaxTypes = 1024;
constexpr int kDefaultTypes = 20;
constexpr int kDefaultModels = 20;
constexpr KitReal kInitialPadding = 0.005F; ///< m; single precision, as saved scenes have it

void runTermActions() {
    while (ColTermAction* newest = gColFramework->termActions) {
        gColFramework->termActions = newest->next; // the action may register others
        const std::unique_ptr<ColTermAction> node(newest);
        node->action();
    }
}
} // namespace

void ColInit(int geoTypeMaxCount, int modelCount) {
    if (gColFramework) {
        KitWarning(0, "ColInit: the framework must not exist yet.\n");
        return;
    }
    if (geoTypeMaxCount < 0 || geoTypeMaxCount > kMaxTypes || modelCount < 1) {
        KitWarning(0,
                   "ColInit: geoTypeMaxCount must lie in 0 to %d, modelCount must be positive.\n",
                   kMaxTypes);
        return;
    }
    gColFramework = new ColFramework;
    gColFramework->mDefaultPadding = kInitialPadding;
    ColGeometryTablesInit(geoTypeMaxCount + kSpareTypes);
    KitPoolInit(&gColFramework->modelPool, modelCount, static_cast<int>(sizeof(ColModel)), 0);
    KitPoolSetPoolName(&gColFramework->modelPool, "ColModel");
    ColDefaultRequestInit();
    ColInteractionTableInit(geoTypeMaxCount + kSpareTypes);
    ColSetHelloCallback(nullptr, nullptr);
    gColFramework->refCount = 1;
}

void ColDefaultInit() {
    if (!gColFramework)
        ColInit(kDefaultTypes, kDefaultModels);
}

void ColTerm() {
    static bool isRunning = false;
    if (!gColFramework || isRunning) // an action may end what holds the framework
        return;
    isRunning = true;
    runTermActions();
    ColGeometryTablesTerm();
    KitPoolTerm(&gColFramework->modelPool);
    ColInteractionTableTerm();
    ColSetHelloCallback(nullptr, nullptr);
    delete gColFramework;
    gColFramework = nullptr;
    isRunning = false;
}

void ColFrameRef() {
    if (gColFramework)
        ++gColFramework->refCount;
}

int ColFrameGetRef() {
    return gColFramework ? gColFramework->refCount : 0;
}

void ColFrameUnref() {
    if (gColFramework && --gColFramework->refCount <= 0)
        ColTerm();
}

void ColRegisterTermAction(ColTermActionFn action) {
    if (!action) {
        KitWarning(0, "ColRegisterTermAction: action must not be null.\n");
        return;
    }
    ColDefaultInit();
    gColFramework->termActions = new ColTermAction{action, gColFramework->termActions};
}

void ColModelSetDefaultContactTolerance(KitReal tolerance) {
    if (!std::isfinite(tolerance) || tolerance < 0) {
        KitWarning(0, "ColModelSetDefaultContactTolerance: tolerance must be finite and not "
                      "negative.\n");
        return;
    }
    ColDefaultInit();
    gColFramework->mDefaultPadding = tolerance;
}

KitReal ColModelGetDefaultContactTolerance() {
    return gColFramework ? gColFramework->mDefaultPadding : kInitialPadding;
}

void ColSetHost(const ColHost& host) {
    ColDefaultInit();
    gColFramework->host = host;
}

const ColHost& ColGetHost() {
    static constexpr ColHost kNone;
    return gColFramework ? gColFramework->host : kNone;
}
