#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace Hy {

/// What is recorded of one thing at one sample. Poses: position relative to the scene's origin in m and
/// quaternion x, y, z, w. Forces: point, force in N, and kind.
struct RunSample {
    std::uint32_t frame; ///< number of the sample
    float value[7];
};

/// Chunks of samples in one block of memory that is reserved at the start and handed out in order; the
/// system backs a page of it when it is first written.
class RunChunks {
public:
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};
    static constexpr std::size_t kSamplesPerChunk = 63;

    struct Chunk {
        RunSample samples[kSamplesPerChunk];
        std::uint32_t next;
    };

    /// @param bytes cap of memory; room for at least one chunk. Without memory it has no chunk at all.
    explicit RunChunks(std::size_t bytes);

    /// The index of a fresh chunk, kNone when all are in use.
    [[nodiscard]] std::uint32_t take();
    [[nodiscard]] Chunk& operator[](std::uint32_t index) { return mChunks[index]; }
    [[nodiscard]] const Chunk& operator[](std::uint32_t index) const { return mChunks[index]; }
    [[nodiscard]] std::size_t getUsedBytes() const { return mUsed * sizeof(Chunk); }
    [[nodiscard]] bool isEmpty() const { return mCount == 0; }

private:
    std::unique_ptr<Chunk[], decltype(&std::free)> mChunks{nullptr, &std::free};
    std::size_t mCount = 0, mUsed = 0;
};

/// Samples of one thing in the order of time, in chunks of a common block.
class RunTrack {
public:
    /// False, and no change, when the chunks are all in use.
    bool append(RunChunks& chunks, const RunSample& sample);
    /// Records a pose; one that has not changed is not stored, but for the last before it changes.
    /// False when the chunks are all in use.
    bool appendPose(RunChunks& chunks, const RunSample& pose);

    [[nodiscard]] std::size_t size() const { return mCount; }
    [[nodiscard]] bool empty() const { return mCount == 0; }
    [[nodiscard]] std::vector<RunSample> read(const RunChunks& chunks) const;

private:
    std::uint32_t mFirst = RunChunks::kNone, mLast = RunChunks::kNone;
    std::size_t mCount = 0;
    RunSample mPose{}; ///< the last stored
};

} // namespace Hy
