#pragma once
#include <limits>

/// Every simulated quantity is a 64-bit IEEE float, in SI units unless a name says otherwise.
using KitReal = double;
/// A truth value in plain records: zero is false.
using KitBool = int;

using KitVector3 = KitReal[3];
using KitVector4 = KitReal[4]; ///< three components and one of padding, or a quaternion w, x, y, z
using KitMatrix3 = KitReal[3][3];
/// A transform for row vectors: rows 0 to 2 are the images of the local axes in the parent frame,
/// row 3 is the translation, column 3 is (0, 0, 0, 1).
using KitMatrix4 = KitReal[4][4];

/// Stands for infinity in stiffness, force and bounds.
constexpr KitReal kKitInfinity = std::numeric_limits<KitReal>::max();
