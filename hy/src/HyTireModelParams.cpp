#include <Hy/HyTireModelParams.h>

namespace Hy {

bool HyTireModelParams::isOfClassType(int id) const {
    return id == kHyTireModelParamsClassId;
}

bool HyTireModelParams::isOfExactClassType(int id) const {
    return id == kHyTireModelParamsClassId;
}

} // namespace Hy
