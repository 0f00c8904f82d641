#include <Kit/KitMatrixPrint.h>
#include <cstddef>
#include <cstring>

namespace {
/// Passes over "%[flags][width][.precision]" with one floating conversion; null if it is none.
const char* skipConversion(const char* percent) {
    const char* c = percent + 1;
    c += std::strspn(c, "-+ #0'");
    c += std::strspn(c, "0123456789");
    if (*c == '.')
        c += 1 + std::strspn(c + 1, "0123456789");
    return *c != '\0' && std::strchr("aAeEfFgG", *c) ? c + 1 : nullptr;
}

/// Whether printf may take the format with one double.
bool printsOneReal(const char* format) {
    int conversions = 0;
    for (const char* c = std::strchr(format, '%'); c; c = std::strchr(c, '%')) {
        if (c[1] == '%') {
            c += 2;
            continue;
        }
        c = skipConversion(c);
        if (!c)
            return false;
        ++conversions;
    }
    return conversions == 1;
}
} // namespace

void KitMatrixPrint(const KitReal* A, int n, int m, const char* format) {
    KitMatrixFPrint(stdout, A, n, m, format);
}

void KitMatrixFPrint(std::FILE* file, const KitReal* A, int n, int m, const char* format) {
    if (!file || !A || !format || !printsOneReal(format))
        return;
    const int width = std::snprintf(nullptr, 0, format, 0.0);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < m; ++j) {
            const KitReal element = A[static_cast<std::ptrdiff_t>(j) * n + i];
            if (j > 0)
                std::fputc(' ', file);
            if (element == 0)
                std::fprintf(file, "%*d", width, 0);
            else
                std::fprintf(file, format, element);
        }
        std::fputc('\n', file);
    }
}
