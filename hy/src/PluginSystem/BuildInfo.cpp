#include "BuildInfo.h"

#include <Hy/HyMessage.h>

#include <exception>
#include <sstream>

namespace Hy::HyPluginSystem {
namespace {

constexpr std::size_t kLongestLine = 79; ///< characters; the rest of a line is not read

/// Of compilers of other names any version fits.
constexpr const char* kCheckedCompiler = "MSVC";
constexpr int kCheckedCompilerVersion = 40102;

std::string readLine(std::istream& lines) {
    std::string line;
    std::getline(lines, line);
    return line.substr(0, kLongestLine);
}

std::string getValueToStr(const std::string& line) {
    return line.substr(line.find(':') + 1);
}

int getValueToInt(const std::string& line) {
    return std::stoi(getValueToStr(line), nullptr, 10);
}

} // namespace

BuildInfo BuildInfo::parse(const std::string& text) {
    BuildInfo info;
    std::istringstream lines(text);
    try {
        info.platform = getValueToInt(readLine(lines));
        info.compilerName = getValueToStr(readLine(lines));
        info.compilerVersion = getValueToInt(readLine(lines));
        info.release = getValueToInt(readLine(lines));
    } catch (const std::exception&) {
        HyWarning(0, "An error occurred when parsing the build info");
    }
    return info;
}

bool BuildInfo::isCompatible(std::string& error) const {
    if (compilerName != kCheckedCompiler)
        return true;
    if (release != 1) {
        error = std::string("This plugin was built in ") + "debug" +
                " mode while Halcyr was built in " + " release mode";
        return false;
    }
    if (compilerVersion != kCheckedCompilerVersion) {
        error = std::string("This plugin was created with a ") +
                (compilerVersion <= kCheckedCompilerVersion ? " lower " : " higher ") +
                "version of MS Visual C++ Compiler";
        return false;
    }
    return true;
}

} // namespace Hy::HyPluginSystem
