#include <Hy/HyMemoryPool.h>
#include <Hy/HyMemory.h>
#include <Hy/HyMessage.h>
#include <Kit/KitPool.h>
#include <cstdlib>
#include <new>

namespace Hy {

HyMemoryPool::HyMemoryPool(int structSize, int structCount, int alignment) {
    void* memory = HyMemory::create(sizeof(KitPool));
    if (!memory)
        HyFatalErrorOrAbort("HyMemoryPool::HyMemoryPool: out of memory.\n");
    mPool = new (memory) KitPool;
    KitPoolInit(mPool, structCount, structSize, alignment);
}

HyMemoryPool::~HyMemoryPool() {
    KitPoolTerm(mPool);
    HyMemory::destroy(mPool);
}

void* HyMemoryPool::_get() {
    return KitPoolGetStruct(mPool);
}

void HyMemoryPool::_put(void* ptr) {
    KitPoolPutStruct(mPool, ptr);
}

int HyMemoryPool::getStructSize() const {
    return KitPoolGetStructSize(mPool);
}

void HyMemoryPool::checkStructSize(std::size_t size) const {
    const bool isRight = size == static_cast<std::size_t>(getStructSize());
    HyAssertImplementation(__FILE__, __LINE__, isRight,
                           "HyMemoryPool::get: incorrect struct size.\n");
    if (!isRight)
        std::abort(); // the handler has returned; a T may not fit an element
}

} // namespace Hy
