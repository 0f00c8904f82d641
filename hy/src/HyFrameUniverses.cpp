#include <Hy/HyFrame.h>

#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

// The universes of a frame and those who follow their coming and going.

namespace Hy {
namespace {

/// Sizes of the universe that getUniverse() makes.
constexpr unsigned kDefaultGeometries = 2000, kDefaultPairs = 10000;

} // namespace

void HyFrame::addUniverse(HyUniverse* universe) {
    if (!universe) {
        HyWarning(0, "HyFrame::addUniverse: pHyUniverse != __null\n");
        return;
    }
    mObservers.forEach([universe](Observer& o) { o.universeAboutToBeAdded(*universe); });
    addStepper(universe);
    mObservers.forEach([universe](Observer& o) { o.universeAdded(*universe); });
}

bool HyFrame::removeUniverse(HyUniverse* universe) {
    if (!universe) {
        HyWarning(0, "HyFrame::removeUniverse: pHyUniverse != __null\n");
        return false;
    }
    mObservers.forEach([universe](Observer& o) { o.universeAboutToBeRemoved(*universe); });
    const bool wasThere = removeStepper(universe);
    mObservers.forEach([universe](Observer& o) { o.universeRemoved(*universe); });
    return wasThere;
}

HyUniverse& HyFrame::getUniverse() {
    if (mUniverseArr.empty())
        addUniverse(new HyUniverse(kDefaultGeometries, kDefaultPairs, nullptr));
    return *static_cast<HyUniverse*>(mUniverseArr[0]);
}

void HyFrame::registerObserver(Observer* observer) {
    if (!observer)
        HyWarning(0, "HyFrame::registerObserver: observer != __null\n");
    mObservers.add(observer);
}

void HyFrame::unregisterObserver(Observer* observer) {
    if (!observer)
        HyWarning(0, "HyFrame::unregisterObserver: observer != __null\n");
    mObservers.remove(observer);
}

} // namespace Hy
