#include <Col/ColMessage.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace {
constexpr int kNoError = 42;
constexpr int kReports = 5;
constexpr int kLastDescribed = 41;

constexpr ColErrorEntry fatal(int number, const char* text) {
    return {number, kColErrorFatal, kReports, text};
}
constexpr ColErrorEntry warning(int number, const char* text) {
    return {number, kColErrorWarning, kReports, text};
}

ColErrorEntry& findEntry(ColErrorEntry* list, int errNum) {
    while (list->m_errNum != errNum && list->m_errNum != kNoError)
        ++list;
    return *list;
}

/// Takes one report off and answers how many were left before; 0 if none was.
int takeReport(ColErrorEntry& entry) {
    std::atomic_ref<int> count(entry.m_errorCount);
    int left = count.load();
    while (left > 0 && !count.compare_exchange_weak(left, left - 1))
        ;
    return left > 0 ? left : 0;
}

void report(ColErrorEntry& entry, int errNum, const char* extraText, int level) {
    const int left = takeReport(entry);
    if (left == 0)
        return;
    char text[512];
    const bool described = errNum >= 1 && errNum <= kLastDescribed;
    const int length =
        std::snprintf(text, sizeof(text), "Col: %s%s%s\n", described ? entry.m_description : "",
                      extraText ? extraText : "",
                      left == 1 ? "\n[This message will not be repeated again!]" : "");
    if (length >= static_cast<int>(sizeof(text)))
        text[sizeof(text) - 2] = '\n'; // a text that was cut still ends its line

    switch (level) {
    case kColErrorFatal:
        KitFatalError(errNum, "%s", text);
        break;
    case kColErrorWarning:
        KitWarning(errNum, "%s", text);
        break;
    default:
        KitInfo(errNum, "%s", text);
    }
}
} // namespace

// The texts stand as applications know them, odd punctuation included.
ColErrorEntry gColCoreErrorList[] = {
    fatal(3, "Function called with null pointer as argument "),
    fatal(4, "object not of correct derived type: expecting object of type "),
    fatal(5, "Allocation failed for object of type: "),
    fatal(6, "Assertion failed: "),
    warning(7, "Invalid use of ColModelSetTransform(),: This ColModel's transform is automatically "
               "updated from a DynBody transform "),
    fatal(8, "Invalid ColModelID."),
    fatal(9, "Invalid ColSpaceID."),
    fatal(10, "Invalid ColGeometryID."),
    fatal(11, "Invalid ColSpacePairID."),
    fatal(12, "Invalid ColModelPair pointer."),
    fatal(13, "Invalid ColIntersectResult pointer."),
    fatal(14, "ColModelPair contains null model pointer(s),."),
    fatal(15, "Invalid ColDtBridgeID."),
    fatal(16, "Invalid ColRwWorldID."),
    fatal(17, "Invalid ColRwBSPID."),
    fatal(18, "Expected non null transform pointer."),
    fatal(19, "SpaceUpdate called on unbuilt space.  Invoke SpaceBuild(),"),
    fatal(20, "Attempt to SetBody(), without Initializing dynamics bridge (BridgeInit(),),"),
    fatal(21, "Failed to register new geometry type. Ensure sufficient number of geometries in "
              "ColInit()."),
    fatal(22, "Invalid Intersect Result. Output contact array pointer must exist."),
    fatal(23, "Invalid Intersect Request (%s),."),
    fatal(24, "Out of memory for ColModelPairs in ColSpace. Resizing not implemented. Please use a "
              "larger number of pairs in ColAxisSortCreate."),
    fatal(25, "Out of memory for ColModels in ColSpace. Resizing not implemented. Please use a "
              "larger number of models in ColAxisSortCreate."),
    warning(26, "Ran out of memory for PairData objects."),
    warning(27, "Internal error: Ran out of contact in pool, "),
    warning(28, "TriangleMesh has no triangles, cannot build triangle mesh."),
    fatal(29, "TriangleMesh is not built - the function ColTriangleMeshBuild(mesh), shoud be "
              "called."),
    warning(30, "No intersection function available for this pair combination. Pair will be "
                "ignored. This could also be due to an invalid Request for the given pair: "),
    warning(31, "Invalid Request "),
    warning(32, "Attempt to register an interaction involving an unregistered geometry type. "
                "Interaction ignored. Pair combination was "),
    warning(33, "Attempt to find an interaction involving an unregistered geometry type. Empty "
                "interaction will be used for debug version, but release version will produce "
                "undefined behaviour."),
    warning(34, "Unimplemented case in ColSafeTime in "),
    warning(35, "Attempt to register an interaction involving an invalid geometry type. Failure to "
                "register geometry type before registering interactions?"),
    warning(36, "Attempt to use a state-modification function while ColSpaceIsChanging() is false. "
                "Call ColSpaceBeginChanges() first. Function name: "),
    warning(37, "Attempt to use a state-query function while ColSpaceIsChanging() is true. Call "
                "ColSpaceEndChanges() first. Function name: "),
    warning(38, "ColModelDestroy: model being destroyed while still in an ColSpace."),
    warning(39, "ColBoxBox: internal error due to invalid transform."),
    warning(40, "ColGeometryGetMassProperties: Inertia tensor matrix is non-symmetric."),
    warning(41, "ColTerm: ColColFramework already terminated."),
    fatal(kNoError, "No error"),
};

void ColError(ColErrorEntry* errorList, int errNum, const char* extraText) {
    ColErrorEntry& entry = findEntry(errorList ? errorList : gColCoreErrorList, errNum);
    report(entry, errNum, extraText, entry.m_errorLevel);
}

void ColMistake(int errNum, const char* extraText) {
    ColErrorEntry& entry = findEntry(gColCoreErrorList, errNum);
    report(entry, errNum, extraText, std::max<int>(entry.m_errorLevel, kColErrorWarning));
}
