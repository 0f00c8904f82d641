#include <Kit/KitProcessor.h>

namespace {

KitVectorSet askProcessor() noexcept {
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        return __builtin_cpu_supports("avx512f") ? KitVectorSet::kAvx512 : KitVectorSet::kAvx2;
#endif
    return KitVectorSet::kPortable;
}

} // namespace

KitVectorSet KitProcessorGetVectorSet() noexcept {
    static const KitVectorSet set = askProcessor();
    return set;
}
