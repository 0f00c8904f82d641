#include <Hy/HyStringUtils.h>

#include <cctype>
#include <cstdarg>
#include <cstdio>

namespace Hy::HyStringUtils {

namespace {

bool isSameCharacter(char a, char b, bool caseSensitive) {
    if (caseSensitive)
        return a == b;
    return std::toupper(static_cast<unsigned char>(a)) ==
           std::toupper(static_cast<unsigned char>(b));
}

} // namespace

std::string format(const char* format, ...) {
    if (!format)
        return {};
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool match(const std::string& text, const std::string& pattern, bool caseSensitive) {
    // Only the last star need be taken back: what an earlier one could give, it gives as well.
    // So the cost is at most the product of the lengths.
    std::size_t t = 0, p = 0;
    std::size_t star = std::string::npos; // in the pattern
    std::size_t runEnd = 0;               // in the text, of the run that the star stands for
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            runEnd = t;
        } else if (p < pattern.size() &&
                   (pattern[p] == '?' || isSameCharacter(text[t], pattern[p], caseSensitive))) {
            ++t;
            ++p;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++runEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string::npos;
}

} // namespace Hy::HyStringUtils
