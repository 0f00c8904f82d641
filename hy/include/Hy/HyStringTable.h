#pragma once
#include <Hy/HyArray.h>
#include <string>

namespace Hy {

struct HyStringTableElement {
    char name[256] = {}; ///< zero-terminated
    std::string text;
};

/// Named texts of the whole process, in the order of adding. Not thread-safe.
class HY_API HyStringTable {
public:
    /// Made on first use, destroyed at exit.
    [[nodiscard]] static HyStringTable& instance();
    HyStringTable(const HyStringTable&) = delete;
    HyStringTable& operator=(const HyStringTable&) = delete;

    /// Adds a text, or replaces that of a present name. A null argument, or a name of 256 bytes or
    /// more, is warned of and ignored.
    void add(const char* name, const char* text);
    /// A zero-terminated text, valid until the next add(); null, and a warning, if absent.
    [[nodiscard]] const char* get(const char* name) const;
    /// Number of names.
    [[nodiscard]] std::size_t size() const;

private:
    HyStringTable() = default;
    ~HyStringTable() = default;
    [[nodiscard]] const HyStringTableElement* find(const char* name) const;

    HyArray<HyStringTableElement> table;
};

} // namespace Hy
