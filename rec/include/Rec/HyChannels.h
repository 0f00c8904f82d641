#pragma once
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Hy {

/// Named scalars with units over time, such as a tension, a power or a drift, for plots and tables.
///
/// Sampled by HyRecorder, or by sample(). Channels are added before the first sample.
class HY_API HyChannels {
public:
    /// @param reservedSamples room for so many samples: up to there, sample() makes no heap call
    explicit HyChannels(std::size_t reservedSamples = 36000) : mReserved(reservedSamples) {}

    /// Adds a scalar that is asked for at each sample.
    /// @param name,unit null or empty names, and those in use, are warned of and refused, as is an empty
    ///                  source; a null unit stands for none
    /// @return false if it was refused, also after the first sample
    bool add(const char* name, const char* unit, std::function<HyReal()> source);
    /// Takes a sample of all channels. A time that is not finite or before the last one: a warning, and
    /// nothing is taken.
    /// @param time s
    void sample(HyReal time);

    [[nodiscard]] std::size_t getChannelCount() const { return mChannels.size(); }
    [[nodiscard]] std::size_t getSampleCount() const { return mTimes.size(); }
    /// Time of a sample, s; NaN for an index out of range.
    [[nodiscard]] HyReal getTime(std::size_t sample) const;
    /// NaN for an index out of range.
    [[nodiscard]] HyReal getValue(std::size_t channel, std::size_t sample) const;

    /// Writes a table: a line of names with units, then a line a sample, every number such that reading
    /// it gives the same bits. A path that cannot be written, or a full disk: a warning, and false.
    bool writeCsv(const char* path) const;

private:
    struct Channel {
        std::string title; ///< name and unit
        std::string name;
        std::function<HyReal()> source;
    };

    std::size_t mReserved;
    std::vector<Channel> mChannels;
    std::vector<HyReal> mTimes;  ///< s
    std::vector<HyReal> mValues; ///< a row of all channels a sample
};

} // namespace Hy
