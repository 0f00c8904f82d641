#include <Hy/HyCommandLine.h>

#include <Hy/HyMessage.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Hy {

namespace {

int toInt(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    return static_cast<int>(
        std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

HyReal toHyReal(const char* text) {
    return std::strtod(text, nullptr);
}

bool isNumber(const char* text) {
    char* end = nullptr;
    std::strtod(text, &end);
    return end != text;
}

} // namespace

HyCommandLine::HyCommandLine(int argc, const char** argv) {
    if (argc < 0 || (argc > 0 && !argv)) {
        HyWarning(0, "HyCommandLine::HyCommandLine: the arguments must not be null and their "
                     "number not negative.\n");
        return;
    }
    mArgv.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc && argv[i]; ++i)
        mArgv.push_back(argv[i]);
    mArgC = static_cast<int>(mArgv.size());
}

const char* HyCommandLine::operator[](int index) const {
    if (index >= 0 && index < mArgC)
        return mArgv[static_cast<std::size_t>(index)];
    HyWarning(0, "HyCommandLine::operator[]: the index must be below the number of arguments.\n");
    return "";
}

int HyCommandLine::getPos(const char* name) const {
    for (int i = 0; name && i < mArgC; ++i)
        if (std::strcmp((*this)[i], name) == 0)
            return i;
    return -1;
}

void HyCommandLine::eatArg(const int* positions, int count) {
    if (count <= 0)
        return;
    HyArray<int> sorted;
    for (int i = 0; positions && i < count; ++i)
        sorted.push_back(positions[i]);
    std::sort(sorted.begin(), sorted.end());
    if (!positions || sorted.front() < 0 || sorted.back() >= mArgC ||
        std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
        HyWarning(0, "HyCommandLine::eatArg: the positions must be those of different "
                     "arguments.\n");
        return;
    }
    for (int i = count - 1; i >= 0; --i)
        mArgv.erase(mArgv.begin() + sorted[static_cast<std::size_t>(i)]);
    mArgC -= count;
}

void HyCommandLine::eatFrom(int first, int count) {
    mArgv.erase(mArgv.begin() + first, mArgv.begin() + first + count);
    mArgC -= count;
}

bool HyCommandLine::checkFor(const char* name, bool eat) {
    if (!name) {
        HyWarning(0, "HyCommandLine::checkFor: You must pass in a valid char*\n");
        return false;
    }
    const int option = getPos(name);
    if (option >= 0 && eat)
        eatFrom(option, 1);
    return option >= 0;
}

bool HyCommandLine::checkForList(const char* const* names, bool eat) {
    if (!names) {
        HyWarning(0, "HyCommandLine::checkForList: You must pass in a valid char*[]\n");
        return false;
    }
    bool found = false;
    for (; *names; ++names)
        found = checkFor(*names, eat) || found;
    return found;
}

template <class Number>
Number HyCommandLine::getNumber(const char* name, bool eat, Number (*convert)(const char*),
                                const char* missing) {
    const int option = getPos(name);
    if (option < 0)
        return 0;
    const bool isLast = option + 1 == mArgC;
    const char* const text = isLast ? "" : (*this)[option + 1];
    const Number value = convert(text);
    const bool isMissing = isLast || (value == 0 && std::strcmp(text, "0") != 0);
    if (eat || isLast)
        eatFrom(option, isMissing ? 1 : 2);
    if (isMissing)
        HyInfo(0, missing, name);
    return isMissing ? 0 : value;
}

int HyCommandLine::getInt(const char* name, bool eat) {
    return getNumber(name, eat, toInt,
                     "Numerical parameter that should follow %s is missing! Defaulting to 0.\n");
}

HyReal HyCommandLine::getHyReal(const char* name, bool eat) {
    return getNumber(
        name, eat, toHyReal,
        "Floating point parameter that should follow %s is missing! Defaulting to 0.\n");
}

std::string HyCommandLine::getString(const char* name, bool eat) {
    const int option = getPos(name);
    if (option < 0)
        return {};
    if (option + 1 == mArgC) {
        eatFrom(option, 1);
        HyInfo(0, "String parameter that should follow %s is missing! Returning null pointer.\n",
               name);
        return {};
    }
    const std::string value = (*this)[option + 1];
    const bool isValid = !value.starts_with('-');
    if (eat)
        eatFrom(option, isValid ? 2 : 1);
    if (isValid)
        return value;
    HyInfo(0, "String parameters aren't allowed to start with `-'.\n");
    return {};
}

int HyCommandLine::getHyRealArray(const char* name, HyReal* out, int count, bool eat) {
    if (!out || count <= 0) {
        HyWarning(0,
                  "HyCommandLine::getHyRealArray: there must be room for at least one number.\n");
        return 0;
    }
    const int option = getPos(name);
    if (option < 0)
        return 0;
    const bool isIncomplete = mArgC - option - 1 < count;
    const auto first = mArgv.begin() + option + 1;
    const bool isMissing = isIncomplete || !std::all_of(first, first + count, isNumber);
    if (!isMissing)
        std::transform(first, first + count, out, toHyReal);
    if (eat || isIncomplete)
        eatFrom(option, isMissing ? 1 : 1 + count);
    if (isMissing)
        HyInfo(0, "Floating point %d-vector that should follow %s is missing or incomplete!\n",
               count, name);
    return isMissing ? 0 : count;
}

void HyCommandLine::addOption(const std::string& name, const std::string& description) {
    mOptions << "option: " << name << " (" << description << ")\n";
}

void HyCommandLine::printHelp() const {
    std::printf("usage: [options]\n%s", mOptions.str().c_str());
}

} // namespace Hy
