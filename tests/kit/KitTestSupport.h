#pragma once
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

/// Records warnings while it lives, as "code: text".
class WarningRecorder {
public:
    WarningRecorder() {
        texts().clear();
        mPrevious = KitSetWarningHandler(record);
    }
    ~WarningRecorder() { KitSetWarningHandler(mPrevious); }
    WarningRecorder(const WarningRecorder&) = delete;
    WarningRecorder& operator=(const WarningRecorder&) = delete;

    [[nodiscard]] static std::vector<std::string> take() { return std::exchange(texts(), {}); }

private:
    static std::vector<std::string>& texts() {
        static std::vector<std::string> theTexts;
        return theTexts;
    }
    __attribute__((format(printf, 2, 0))) static void record(int code, const char* format,
                                                             va_list arguments) {
        char text[1000];
        std::vsnprintf(text, sizeof(text), format, arguments);
        texts().push_back(std::to_string(code) + ": " + text);
    }

    KitMessageHandler mPrevious;
};

/// While it lives, the allocator table counts blocks and can be told to fail.
class CountingAllocator {
public:
    CountingAllocator() {
        live = calls = 0;
        isFailing = false;
        previous() = KitMemoryAPI;
        KitMemoryAPI = {
            .create = [](std::size_t n) { return made(n, previous().create); },
            .createZeroed = [](std::size_t n) { return made(n, previous().createZeroed); },
            .createAligned =
                [](std::size_t n, std::size_t alignment) {
                    lastAlignment = alignment;
                    return isFailing ? nullptr
                                     : count(previous().createAligned(n, alignment), nullptr);
                },
            .destroy =
                [](void* p) {
                    live -= p ? 1 : 0;
                    previous().destroy(p);
                },
            .destroyAligned =
                [](void* p) {
                    live -= p ? 1 : 0;
                    previous().destroyAligned(p);
                },
            .resize = [](void* p, std::size_t n) -> void* {
                return isFailing ? nullptr : count(previous().resize(p, n), p);
            },
        };
    }
    ~CountingAllocator() { KitMemoryAPI = previous(); }
    CountingAllocator(const CountingAllocator&) = delete;
    CountingAllocator& operator=(const CountingAllocator&) = delete;

    static inline int live = 0;  ///< blocks
    static inline int calls = 0; ///< that gave memory
    static inline std::size_t lastAlignment = 0;
    static inline bool isFailing = false;

private:
    static KitMemoryAPIStruct& previous() {
        static KitMemoryAPIStruct table;
        return table;
    }
    static void* made(std::size_t n, void* (*create)(std::size_t)) {
        return isFailing ? nullptr : count(create(n), nullptr);
    }
    static void* count(void* block, const void* replaced) {
        ++calls;
        live += block && !replaced ? 1 : 0;
        return block;
    }
};
