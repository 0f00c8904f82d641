#include <Rec/HyChannels.h>

#include "WholeFile.h"

#include <Hy/HyMessage.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace Hy {

namespace {

/// A cell of a table whose text may hold what separates cells.
std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string cell = "\"";
    for (const char c : text)
        cell.append(c == '"' ? 2 : 1, c);
    return cell + '"';
}

void appendNumber(std::string& text, HyReal value) {
    char digits[32];
    const int length = std::snprintf(digits, sizeof digits, "%.17g", value);
    text.append(digits, static_cast<std::size_t>(length));
}

} // namespace

bool HyChannels::add(const char* name, const char* unit, std::function<HyReal()> source) {
    if (!name || !*name || !source) {
        HyWarning(12, "HyChannels::add: a channel must have a name and a source.\n");
        return false;
    }
    if (!mTimes.empty()) {
        HyWarning(12, "HyChannels::add: channels must be added before the first sample.\n");
        return false;
    }
    if (std::any_of(mChannels.begin(), mChannels.end(),
                    [name](const Channel& channel) { return channel.name == name; })) {
        HyWarning(12, "HyChannels::add: the name \"%s\" must not be in use.\n", name);
        return false;
    }
    std::string title = name;
    if (unit && *unit)
        title += " (" + std::string(unit) + ")";
    mChannels.push_back({quoted(title), name, std::move(source)});
    return true;
}

void HyChannels::sample(HyReal time) {
    if (!std::isfinite(time) || (!mTimes.empty() && time < mTimes.back())) {
        HyWarning(12, "HyChannels::sample: the time must be finite and not before the last one.\n");
        return;
    }
    if (mTimes.empty()) {
        mTimes.reserve(mReserved);
        mValues.reserve(mReserved * mChannels.size());
    }
    mTimes.push_back(time);
    for (const Channel& channel : mChannels)
        mValues.push_back(channel.source());
}

HyReal HyChannels::getTime(std::size_t sample) const {
    return sample < mTimes.size() ? mTimes[sample] : std::numeric_limits<HyReal>::quiet_NaN();
}

HyReal HyChannels::getValue(std::size_t channel, std::size_t sample) const {
    if (channel >= mChannels.size() || sample >= mTimes.size())
        return std::numeric_limits<HyReal>::quiet_NaN();
    return mValues[sample * mChannels.size() + channel];
}

bool HyChannels::writeCsv(const char* path) const {
    std::string text = "time (s)";
    for (const Channel& channel : mChannels)
        text += "," + channel.title;
    text += '\n';
    for (std::size_t i = 0; i < mTimes.size(); ++i) {
        appendNumber(text, mTimes[i]);
        for (std::size_t c = 0; c < mChannels.size(); ++c) {
            text += ',';
            appendNumber(text, getValue(c, i));
        }
        text += '\n';
    }
    return writeWholeFile("HyChannels::writeCsv", path, text);
}

} // namespace Hy
