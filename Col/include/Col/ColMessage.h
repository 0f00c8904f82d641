#pragma once
#include <Kit/KitApi.h>

/// Values of ColErrorEntry::m_errorLevel.
enum ColErrorLevel : int {
    kColErrorFatal = 0, ///< ends the process by KitFatalError()
    kColErrorWarning = 1,
    kColErrorInfo = 2,
};

/// One numbered message. The entry numbered 42 ends a list and stands for any number not found.
struct ColErrorEntry {
    int m_errNum;
    int m_errorLevel; ///< ColErrorLevel
    int m_errorCount; ///< reports left; each takes one off
    const char* m_description;
};

/// The messages of this layer, each for five reports.
extern HY_API ColErrorEntry gColCoreErrorList[];

constexpr int kColErrorNullPointer = 3;
constexpr int kColErrorAllocation = 5;
constexpr int kColErrorModel = 8;
constexpr int kColErrorGeometry = 10;
constexpr int kColErrorPair = 12;
constexpr int kColErrorResult = 13;
constexpr int kColErrorPairModels = 14;
constexpr int kColErrorTransform = 18;
constexpr int kColErrorTypeCapacity = 21;
constexpr int kColErrorContactArray = 22;
constexpr int kColErrorUnregisteredInteraction = 32;
constexpr int kColErrorUnknownInteraction = 33;
constexpr int kColErrorSafeTimeCase = 34;
constexpr int kColErrorInvalidInteraction = 35;
constexpr int kColErrorModelInSpace = 38;
constexpr int kColErrorInertia = 40;

/// Reports "Col: ", the description and extraText at the entry's level while reports are left; the
/// last one says so. The whole is cut at 511 bytes. May be called by any thread.
HY_API void ColError(ColErrorEntry* errorList, int errNum, const char* extraText);
/// Reports a caller's mistake: text and count of ColError() in the list of this layer, but as a
/// warning at most, since the call is refused and nothing is broken.
HY_API void ColMistake(int errNum, const char* extraText);
