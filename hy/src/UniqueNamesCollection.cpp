#include <Hy/HyStringUtils.h>

#include <algorithm>

namespace Hy::HyStringUtils {

namespace {

constexpr const char* kBlanks = " \t";
constexpr const char* kDigits = "0123456789";

std::string trimBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// Whether text[first, last) is a number; an empty range is none.
bool isNumber(const std::string& text, std::size_t first, std::size_t last) {
    return first < last && text.find_first_not_of(kDigits, first) >= last;
}

} // namespace

std::string UniqueNamesCollection::add(const std::string& name) {
    std::string taken = trimBlanks(name);
    if (exists(taken))
        taken = _makeNameUnique(taken);
    m_nameList.push_back(taken);
    return taken;
}

bool UniqueNamesCollection::exists(const std::string& name) const {
    return std::find(m_nameList.begin(), m_nameList.end(), name) != m_nameList.end();
}

void UniqueNamesCollection::clear() {
    m_nameList.clear();
}

std::size_t UniqueNamesCollection::_getAppendedNumberPosition(const std::string& name) const {
    const bool isCopy = m_style == CopyStyle;
    if (isCopy && (name.size() < 4 || name.back() != ')'))
        return std::string::npos;
    const std::size_t position = name.rfind(isCopy ? '(' : ' ');
    if (position == std::string::npos)
        return std::string::npos;
    const std::size_t end = isCopy ? name.size() - 1 : name.size();
    return isNumber(name, position + 1, end) ? position : std::string::npos;
}

bool UniqueNamesCollection::_hasAppendedNumber(const std::string& name) const {
    return _getAppendedNumberPosition(name) != std::string::npos;
}

std::string UniqueNamesCollection::_trimAppendedNumber(const std::string& name) const {
    return _hasAppendedNumber(name) ? name.substr(0, _getAppendedNumberPosition(name)) : name;
}

std::string UniqueNamesCollection::_makeNameUnique(const std::string& name) const {
    const bool isCopy = m_style == CopyStyle;
    const std::string base =
        isCopy ? trimBlanks(_trimAppendedNumber(name)) : _trimAppendedNumber(name);
    std::string unique;
    for (int n = 1; unique.empty() || exists(unique); ++n)
        unique = base + (isCopy ? " (" : " ") + std::to_string(n) + (isCopy ? ")" : "");
    return unique;
}

} // namespace Hy::HyStringUtils
