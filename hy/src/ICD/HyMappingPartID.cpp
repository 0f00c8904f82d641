#include <Hy/HyMappingPartID.h>

#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <limits>

namespace Hy::ICD {

unsigned int HyMappingPartIDMap::map(HyPart* part) {
    if (!part) {
        HyWarning(0, "HyMappingPartIDMap::map: the part must not be null.\n");
        return std::numeric_limits<unsigned int>::max();
    }
    const auto [place, isNew] = mMapping.try_emplace({part, part->getSerial()}, mCurID);
    mCurID += isNew ? 1 : 0;
    return place->second;
}

} // namespace Hy::ICD
