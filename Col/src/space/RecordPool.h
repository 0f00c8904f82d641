#pragma once
#include <cstddef>
#include <memory>
#include <vector>

/// Records of one type that keep their place; what was returned is handed out again, the latest
/// first. A record is set to its default value when it is handed out.
template <class Record>
class CxRecordPool {
public:
    [[nodiscard]] Record* Get() {
        if (mFree.empty())
            grow();
        Record* record = mFree.back();
        mFree.pop_back();
        *record = Record{};
        return record;
    }
    void Put(Record* record) { mFree.push_back(record); }

private:
    void grow() {
        constexpr std::size_t kFirstBlock = 64;
        const std::size_t count = mTotal > 0 ? mTotal : kFirstBlock; // doubles
        mBlocks.push_back(std::make_unique<Record[]>(count));
        mTotal += count;
        mFree.reserve(mTotal);
        for (std::size_t i = count; i-- > 0;)
            mFree.push_back(&mBlocks.back()[i]);
    }

    std::vector<std::unique_ptr<Record[]>> mBlocks;
    std::vector<Record*> mFree;
    std::size_t mTotal = 0;
};
