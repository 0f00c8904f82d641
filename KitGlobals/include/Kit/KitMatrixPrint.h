#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <cstdio>

/// Prints a matrix to the standard output, see KitMatrixFPrint().
HY_API void KitMatrixPrint(const KitReal* A, int n, int m, const char* format);

/// Prints a matrix row by row, elements separated by one blank; an element exactly 0 stands as a
/// bare 0 of the same width.
/// @param A column-major, n rows and m columns
/// @param format of one element for printf, with exactly one conversion of a floating number such as
///        "%10.4f"; with another format, or null pointers, nothing is printed
HY_API void KitMatrixFPrint(std::FILE* file, const KitReal* A, int n, int m, const char* format);
