#include <Hy/HyNameValidation.h>

#include <Hy/HyMessage.h>

#include <atomic>

namespace Hy {

namespace {
std::atomic<bool> isEnabled{true};
}

std::string HyNameValidation::replaceRestrictedCharacters(const std::string& name,
                                                          char replacement) {
    if (!getIsEnabled())
        return name;
    std::string valid = name;
    std::string report;
    for (char& c : valid) {
        if (getRestrictedCharacters().find(c) == std::string::npos)
            continue;
        report += "Replaced invalid character '";
        report += c;
        report += "' with '";
        report += replacement;
        report += "'. ";
        c = replacement;
    }
    if (!report.empty())
        HyWarning(2, "%sComplete name was: %s New name is: %s.", report.c_str(), name.c_str(),
                  valid.c_str());
    return valid;
}

const std::string& HyNameValidation::getRestrictedCharacters() {
    static const std::string characters = "\\:;*?!\"%&$/<>|^'";
    return characters;
}

bool HyNameValidation::getIsEnabled() {
    return isEnabled.load(std::memory_order_relaxed);
}

bool HyNameValidation::setIsEnabled(bool on) {
    return isEnabled.exchange(on, std::memory_order_relaxed);
}

} // namespace Hy
