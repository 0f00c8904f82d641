#pragma once
#include <string>

namespace Hy::HyPluginSystem {

/// Whether a file is the beginning of a library alone. The dynamic linker maps what the file's header
/// promises without looking at its length, and dies reading beyond the end.
[[nodiscard]] bool isCutElf(const std::string& path);

} // namespace Hy::HyPluginSystem
