#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy {

/// Keeps names free of characters that stored data gives a meaning of their own.
class HY_API HyNameValidation {
public:
    /// The name with each restricted character replaced; a warning of code 2 lists what was. While
    /// validation is disabled, the name as it is.
    [[nodiscard]] static std::string replaceRestrictedCharacters(const std::string& name,
                                                                 char replacement);
    /// The characters that a name must not hold.
    [[nodiscard]] static const std::string& getRestrictedCharacters();
    /// Whether names are validated; they are at the start.
    [[nodiscard]] static bool getIsEnabled();
    /// Switches validation.
    /// @return the previous value
    static bool setIsEnabled(bool on);
};

} // namespace Hy
