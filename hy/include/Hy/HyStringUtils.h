#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy::HyStringUtils {

/// Text formatted as by printf.
/// @return empty if the format is null or cannot be followed
[[nodiscard, gnu::format(printf, 1, 2)]] HY_API std::string format(const char* format, ...);

/// Whether the whole text fits the pattern, in which '*' stands for any run of characters, also
/// none, and '?' for exactly one.
/// @param caseSensitive false compares by toupper
[[nodiscard]] HY_API bool match(const std::string& text, const std::string& pattern,
                                bool caseSensitive);

} // namespace Hy::HyStringUtils
