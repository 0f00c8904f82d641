#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Kit/KitApi.h>

#include <cstddef>
#include <span>

/// Where a coordinate of a joint has its axis; see DyncLimit.
struct DynCoordinateType {
    DynLimitType type;
    int coord;   ///< row of the attachment frame
    int bodyRef; ///< slot of that frame
};

/// What all joints of one type have in common.
struct DynJointType {
    int tag;                     ///< DynJointTag
    const char* name;            ///< of the record
    DyncAddConstraintFn builder; ///< null: the application gives one
    int max_rows;                ///< most rows of equations, coordinates and friction together
    int equations;               ///< rows that are there in every step
    int n_bodies;                ///< body slots
    std::span<const DynCoordinateType> coordinates;
    std::size_t size; ///< of the record, bytes
    /// Makes a record of initial values in memory of that size.
    DynBaseConstraint* (*construct)(void* memory);
    DyncLimit* (*limits)(DynBaseConstraint* constraint); ///< null without coordinates
};

/// Null for a tag that has no record.
[[nodiscard]] HY_API const DynJointType* DynJointTypeGet(int tag);
/// All types, in the order of their tags.
[[nodiscard]] HY_API std::span<const DynJointType> DynJointTypeGetAll();
/// Bytes that hold a record of any type: the element of a pool for all of them.
[[nodiscard]] HY_API int getDynConstraintUnionSize();
