#include <Hy/HyConsumerPart.h>

#include <Hy/HyVector3.h>

#include <cstdio>

namespace Hy::ICD {
namespace {

void print(const char* quantity, const HyVector3& v) {
    std::printf("%s X:%f Y:%f Z:%f\n", quantity, v[0], v[1], v[2]);
}

} // namespace

void HyConsumerPartPrinter::partAdded(unsigned int id) {
    std::printf("Part %u added.\n", id);
}

void HyConsumerPartPrinter::partRemoved(unsigned int id) {
    std::printf("Part %u removed.\n", id);
}

void HyConsumerPartPrinter::partUpdated(unsigned int id, const HyVector3& position,
                                        const HyVector3& orientation,
                                        const HyVector3& linearVelocity,
                                        const HyVector3& angularVelocity) {
    std::printf("Part %u updated.\n", id);
    print("Position", position);
    print("Orientation", orientation);
    print("linearVelocity", linearVelocity);
    print("angularVelocity", angularVelocity);
}

} // namespace Hy::ICD
