#pragma once

namespace Hy {

// The order in which three angles turn, as a code of bits: 1 exchanges the first and third angle, 2
// repeats the first axis as the third, 4 takes the axes in odd order, 8 and 16 give the inner axis,
// 32 turns clockwise. Both enumerations number the same computations. By the names of
// HyEulerAnglesOrder, "Static" takes the angles as they stand and "Rotating" exchanges the first
// and the third; eEulerOrder has it the other way round. With R for column vectors and angles
// (first, second, third), 0 is R = Rx(first) Ry(second) Rz(third), and 1, its exchanged form, is
// R = Rx(third) Ry(second) Rz(first).

/// Orders of rotation, counterclockwise.
enum eEulerOrder : int {
    kXYZ_CounterClockwise_Rotating = 0,
    kZYX_CounterClockwise_Static,
    kXYX_CounterClockwise_Rotating,
    kXYX_CounterClockwise_Static,
    kXZY_CounterClockwise_Rotating,
    kYZX_CounterClockwise_Static,
    kXZX_CounterClockwise_Rotating,
    kXZX_CounterClockwise_Static,
    kYZX_CounterClockwise_Rotating,
    kXZY_CounterClockwise_Static,
    kYZY_CounterClockwise_Rotating,
    kYZY_CounterClockwise_Static,
    kYXZ_CounterClockwise_Rotating,
    kZXY_CounterClockwise_Static,
    kYXY_CounterClockwise_Rotating,
    kYXY_CounterClockwise_Static,
    kZXY_CounterClockwise_Rotating,
    kYXZ_CounterClockwise_Static,
    kZXZ_CounterClockwise_Rotating,
    kZXZ_CounterClockwise_Static,
    kZYX_CounterClockwise_Rotating,
    kXYZ_CounterClockwise_Static,
    kZYZ_CounterClockwise_Rotating,
    kZYZ_CounterClockwise_Static,
};

/// Orders of rotation, in both directions; see eEulerOrder for the first 24.
enum HyEulerAnglesOrder : int {
    kEulerOrder_XYZ_CounterClockwise_Static = 0,
    kEulerOrder_ZYX_CounterClockwise_Rotating,
    kEulerOrder_XYX_CounterClockwise_Static,
    kEulerOrder_XYX_CounterClockwise_Rotating,
    kEulerOrder_XZY_CounterClockwise_Static,
    kEulerOrder_YZX_CounterClockwise_Rotating,
    kEulerOrder_XZX_CounterClockwise_Static,
    kEulerOrder_XZX_CounterClockwise_Rotating,
    kEulerOrder_YZX_CounterClockwise_Static,
    kEulerOrder_XZY_CounterClockwise_Rotating,
    kEulerOrder_YZY_CounterClockwise_Static,
    kEulerOrder_YZY_CounterClockwise_Rotating,
    kEulerOrder_YXZ_CounterClockwise_Static,
    kEulerOrder_ZXY_CounterClockwise_Rotating,
    kEulerOrder_YXY_CounterClockwise_Static,
    kEulerOrder_YXY_CounterClockwise_Rotating,
    kEulerOrder_ZXY_CounterClockwise_Static,
    kEulerOrder_YXZ_CounterClockwise_Rotating,
    kEulerOrder_ZXZ_CounterClockwise_Static,
    kEulerOrder_ZXZ_CounterClockwise_Rotating,
    kEulerOrder_ZYX_CounterClockwise_Static,
    kEulerOrder_XYZ_CounterClockwise_Rotating,
    kEulerOrder_ZYZ_CounterClockwise_Static,
    kEulerOrder_ZYZ_CounterClockwise_Rotating,
    kEulerOrder_XYZ_Clockwise_Static = 32,
    kEulerOrder_ZYX_Clockwise_Rotating,
    kEulerOrder_XYX_Clockwise_Static,
    kEulerOrder_XYX_Clockwise_Rotating,
    kEulerOrder_XZY_Clockwise_Static,
    kEulerOrder_YZX_Clockwise_Rotating,
    kEulerOrder_XZX_Clockwise_Static,
    kEulerOrder_XZX_Clockwise_Rotating,
    kEulerOrder_YZX_Clockwise_Static,
    kEulerOrder_XZY_Clockwise_Rotating,
    kEulerOrder_YZY_Clockwise_Static,
    kEulerOrder_YZY_Clockwise_Rotating,
    kEulerOrder_YXZ_Clockwise_Static,
    kEulerOrder_ZXY_Clockwise_Rotating,
    kEulerOrder_YXY_Clockwise_Static,
    kEulerOrder_YXY_Clockwise_Rotating,
    kEulerOrder_ZXY_Clockwise_Static,
    kEulerOrder_YXZ_Clockwise_Rotating,
    kEulerOrder_ZXZ_Clockwise_Static,
    kEulerOrder_ZXZ_Clockwise_Rotating,
    kEulerOrder_ZYX_Clockwise_Static,
    kEulerOrder_XYZ_Clockwise_Rotating,
    kEulerOrder_ZYZ_Clockwise_Static,
    kEulerOrder_ZYZ_Clockwise_Rotating,
    kEulerOrderXYZStaticTransposed = kEulerOrder_XYZ_Clockwise_Static,
};
} // namespace Hy
