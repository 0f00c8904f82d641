#include "SecondaryColours.h"

#include "StepperData.h"

#include <algorithm>
#include <functional>

void SecondaryColours::build(std::span<StepperData* const> secondaries) {
    numberBodies(secondaries);
    mColours.clear();
    mStamps.assign(secondaries.size() + 1, -1);
    mCount = 0;
    std::size_t first = 0;
    for (const StepperData* data : secondaries) {
        const std::size_t end = first + static_cast<std::size_t>(data->nb);
        const int colour = smallestFreeColour(first, end, static_cast<int>(mColours.size()));
        for (std::size_t position = first; position < end; ++position) {
            int& head = mHeads[static_cast<std::size_t>(mBodyNumbers[position])];
            mUses[position] = {.colour = colour, .next = head};
            head = static_cast<int>(position);
        }
        mColours.push_back(colour);
        mCount = std::max(mCount, colour + 1);
        first = end;
    }
    sortByColour(secondaries);
}

std::span<StepperData* const> SecondaryColours::ofColour(int colour) const {
    const auto begin = static_cast<std::size_t>(mStarts[static_cast<std::size_t>(colour)]);
    const auto end = static_cast<std::size_t>(mStarts[static_cast<std::size_t>(colour) + 1]);
    return std::span<StepperData* const>(mOrder).subspan(begin, end - begin);
}

// Addresses serve to find equal bodies alone; the numbers that they get are only used as names.
void SecondaryColours::numberBodies(std::span<StepperData* const> secondaries) {
    mEntries.clear();
    for (const StepperData* data : secondaries)
        for (int i = 0; i < data->nb; ++i)
            mEntries.push_back({.body = data->b[i], .position = mEntries.size()});
    std::sort(mEntries.begin(), mEntries.end(), [](const Entry& a, const Entry& b) {
        return a.body != b.body ? std::less<>()(a.body, b.body) : a.position < b.position;
    });
    mBodyNumbers.resize(mEntries.size());
    mUses.resize(mEntries.size());
    int number = -1;
    const DynsBody* last = nullptr;
    for (const Entry& entry : mEntries) {
        if (number < 0 || entry.body != last)
            ++number;
        last = entry.body;
        mBodyNumbers[entry.position] = number;
    }
    mHeads.assign(static_cast<std::size_t>(number + 1), -1);
}

int SecondaryColours::smallestFreeColour(std::size_t first, std::size_t end, int stamp) {
    for (std::size_t position = first; position < end; ++position)
        for (int use = mHeads[static_cast<std::size_t>(mBodyNumbers[position])]; use >= 0;
             use = mUses[static_cast<std::size_t>(use)].next)
            mStamps[static_cast<std::size_t>(mUses[static_cast<std::size_t>(use)].colour)] = stamp;
    int colour = 0;
    while (mStamps[static_cast<std::size_t>(colour)] == stamp)
        ++colour;
    return colour;
}

void SecondaryColours::sortByColour(std::span<StepperData* const> secondaries) {
    mStarts.assign(static_cast<std::size_t>(mCount) + 1, 0);
    for (int colour : mColours)
        ++mStarts[static_cast<std::size_t>(colour) + 1];
    for (std::size_t i = 1; i < mStarts.size(); ++i)
        mStarts[i] += mStarts[i - 1];
    mOrder.resize(secondaries.size());
    // Each start moves to its end while its colour is dealt out, and is then set back.
    for (std::size_t i = 0; i < secondaries.size(); ++i)
        mOrder[static_cast<std::size_t>(mStarts[static_cast<std::size_t>(mColours[i])]++)] =
            secondaries[i];
    for (std::size_t i = mStarts.size() - 1; i > 0; --i)
        mStarts[i] = mStarts[i - 1];
    mStarts[0] = 0;
}
