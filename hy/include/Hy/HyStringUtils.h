#pragma once
#include <Hy/HyArray.h>
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

/// Hands out names that no earlier one has taken: a taken name gets a number, "box" becomes "box 1"
/// and "box 1" then "box 2". Blanks at both ends of a name do not count.
class HY_API UniqueNamesCollection {
public:
    enum StyleType : int {
        IncrementStyle = 0, ///< "box 1"
        CopyStyle = 1,      ///< "box (1)"
    };

    explicit UniqueNamesCollection(StyleType style = IncrementStyle) : m_style(style) {}

    /// Takes a name, made unique.
    /// @return the name as taken
    std::string add(const std::string& name);
    /// Takes a name that others are to keep clear of.
    void addReferenceName(const std::string& name) { add(name); }
    /// Whether exactly this name is taken.
    [[nodiscard]] bool exists(const std::string& name) const;
    /// Frees all names.
    void clear();

private:
    [[nodiscard]] std::size_t _getAppendedNumberPosition(const std::string& name) const;
    [[nodiscard]] bool _hasAppendedNumber(const std::string& name) const;
    [[nodiscard]] std::string _trimAppendedNumber(const std::string& name) const;
    [[nodiscard]] std::string _makeNameUnique(const std::string& name) const;

    HyArray<std::string> m_nameList; ///< in the order of adding
    StyleType m_style;
};

} // namespace Hy::HyStringUtils
