#include "RunTrack.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace Hy {

// Chunks come to life by being written.
static_assert(std::is_trivial_v<RunChunks::Chunk>);

RunChunks::RunChunks(std::size_t bytes)
    : mCount(std::clamp<std::size_t>(bytes / sizeof(Chunk), 1, kNone)) {
    mChunks.reset(static_cast<Chunk*>(std::malloc(mCount * sizeof(Chunk))));
    if (!mChunks)
        mCount = 0;
}

std::uint32_t RunChunks::take() {
    if (mUsed == mCount)
        return kNone;
    const auto index = static_cast<std::uint32_t>(mUsed++);
    mChunks[index].next = kNone;
    return index;
}

bool RunTrack::append(RunChunks& chunks, const RunSample& sample) {
    const std::size_t slot = mCount % RunChunks::kSamplesPerChunk;
    if (slot == 0) {
        const std::uint32_t fresh = chunks.take();
        if (fresh == RunChunks::kNone)
            return false;
        if (mLast == RunChunks::kNone)
            mFirst = fresh;
        else
            chunks[mLast].next = fresh;
        mLast = fresh;
    }
    chunks[mLast].samples[slot] = sample;
    ++mCount;
    return true;
}

bool RunTrack::appendPose(RunChunks& chunks, const RunSample& pose) {
    if (mCount > 0) {
        if (std::equal(std::begin(pose.value), std::end(pose.value), mPose.value))
            return true;
        if (mPose.frame + 1 < pose.frame) { // it stood still until the sample before
            mPose.frame = pose.frame - 1;
            if (!append(chunks, mPose))
                return false;
        }
    }
    mPose = pose;
    return append(chunks, pose);
}

std::vector<RunSample> RunTrack::read(const RunChunks& chunks) const {
    std::vector<RunSample> samples;
    samples.reserve(mCount);
    for (std::uint32_t index = mFirst; samples.size() < mCount; index = chunks[index].next) {
        const std::size_t left = mCount - samples.size();
        const auto& chunk = chunks[index].samples;
        samples.insert(samples.end(), chunk, chunk + std::min(left, RunChunks::kSamplesPerChunk));
    }
    return samples;
}

} // namespace Hy
