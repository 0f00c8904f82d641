#pragma once
#include <string>
#include <string_view>

namespace Hy {

/// Writes a file that appears whole or not at all: the bytes go into a new file beside it, which then
/// takes its name. A failure gives a warning that begins with `who`, and false.
bool writeWholeFile(const char* who, const char* path, std::string_view bytes);

} // namespace Hy
