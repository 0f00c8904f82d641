#include <Dyn/DynJointType.h>

#include <Dync/DyncContact.h>
#include <Dync/DyncJointTags.h>
#include <Dync/DyncJoints.h>

#include <algorithm>
#include <array>
#include <new>

namespace {

using Coordinates = std::span<const DynCoordinateType>;

constexpr DynCoordinateType kAlong[] = {{kDynLimitTypeLinear, 0, 0}};
constexpr DynCoordinateType kAbout[] = {{kDynLimitTypeAngular, 0, 0}};
constexpr DynCoordinateType kAlongAndAbout[] = {{kDynLimitTypeLinear, 0, 0},
                                                {kDynLimitTypeAngular, 0, 0}};
constexpr DynCoordinateType kCrossed[] = {{kDynLimitTypeAngular, 0, 0},
                                          {kDynLimitTypeAngular, 1, 1}};
constexpr DynCoordinateType kAboutAndThreeAlong[] = {{kDynLimitTypeAngular, 0, 0},
                                                     {kDynLimitTypeLinear, 0, 0},
                                                     {kDynLimitTypeLinear, 1, 0},
                                                     {kDynLimitTypeLinear, 2, 0}};
constexpr DynCoordinateType kCrossedAndThreeAlong[] = {{kDynLimitTypeAngular, 0, 0},
                                                       {kDynLimitTypeAngular, 1, 1},
                                                       {kDynLimitTypeLinear, 0, 0},
                                                       {kDynLimitTypeLinear, 1, 0},
                                                       {kDynLimitTypeLinear, 2, 0}};
constexpr DynCoordinateType kLink[] = {
    {kDynLimitTypeDistance, 0, 0}, {kDynLimitTypeAngular, 0, 0}, {kDynLimitTypeAngular, 0, 1}};
constexpr DynCoordinateType kAllSix[] = {
    {kDynLimitTypeLinear, 0, 0},  {kDynLimitTypeLinear, 1, 0},  {kDynLimitTypeLinear, 2, 0},
    {kDynLimitTypeAngular, 0, 0}, {kDynLimitTypeAngular, 1, 0}, {kDynLimitTypeAngular, 2, 0}};

template <class Record>
DynBaseConstraint* construct(void* memory) {
    return new (memory) Record{};
}

template <class Record>
DyncLimit* limitsOf(DynBaseConstraint* constraint) {
    return static_cast<Record*>(constraint)->limit;
}

template <class Record>
consteval DynJointType makeType(int tag, const char* name, DyncAddConstraintFn builder,
                                int max_rows, int equations, Coordinates coordinates = {},
                                int n_bodies = 2) {
    constexpr bool kHasLimits = requires(Record record) {
        record.limit[0];
    };
    if (coordinates.empty() == kHasLimits)
        throw "a type has coordinates just where its record has limits"; // does not compile
    DynJointType type{tag,      name,        builder,        max_rows,          equations,
                      n_bodies, coordinates, sizeof(Record), construct<Record>, nullptr};
    if constexpr (kHasLimits)
        type.limits = limitsOf<Record>;
    return type;
}

// Rows: equations, up to two a coordinate, six of friction; never beyond the rows of a record.
// Distance and cone have one equation in some of their steps only, hence none here.
constexpr std::array kTypes = {
    makeType<DynBSJoint>(kDynTagBSJoint, "DynBSJoint", DyncAddBSJoint, 9, 3),
    makeType<DynHinge>(kDynTagHinge, "DynHinge", DyncAddHinge, 13, 5, kAbout),
    makeType<DynPrismatic>(kDynTagPrismatic, "DynPrismatic", DyncAddPrismatic, 13, 5, kAlong),
    makeType<DynContact>(kDynTagContact, "DynContact", DyncAddContact, kDyncMaxContactRows, 1),
    makeType<DynFixedPath>(kDynTagFixedPath, "DynFixedPath", DyncAddFixedPath, 9, 3),
    makeType<DynUniversal>(kDynTagUniversal, "DynUniversal", DyncAddUniversal, 14, 4, kCrossed),
    makeType<DynHomokinetic>(kDynTagHomokinetic, "DynHomokinetic", DyncAddHomokinetic, 10, 4),
    makeType<DynLinear1>(kDynTagLinear1, "DynLinear1", DyncAddLinear1, 7, 1),
    makeType<DynLinear2>(kDynTagLinear2, "DynLinear2", DyncAddLinear2, 8, 2),
    makeType<DynLinear3>(kDynTagLinear3, "DynLinear3", DyncAddLinear3, 10, 3),
    makeType<DynAngular3>(kDynTagAngular3, "DynAngular3", DyncAddAngular3, 9, 2),
    makeType<DynConeLimit>(kDynTagConeLimit, "DynConeLimit", DyncAddConeLimit, 7, 0),
    makeType<DynCylindrical>(kDynTagCylindrical, "DynCylindrical", DyncAddCylindrical, 14, 4,
                             kAlongAndAbout),
    makeType<DynDistance>(kDynTagDistance, "DynDistance", DyncAddDistance, 7, 0),
    makeType<DynDoubleHinge>(kDynTagDoubleHinge, "DynDoubleHinge", DyncAddDoubleHinge, 14, 4,
                             kLink),
    makeType<DynA1P3Joint>(kDynTagA1P3, "DynA1P3Joint", DyncAddA1P3Joint, 16, 2,
                           kAboutAndThreeAlong),
    makeType<DynA2P3Joint>(kDynTagA2P3, "DynA2P3Joint", DyncAddA2P3Joint, 16, 1,
                           kCrossedAndThreeAlong),
    makeType<DynMotorJoint>(kDynTagMotor, "DynMotorJoint", DyncAddMotorJoint, 8, 0, kAbout),
    makeType<DynUserConstraint>(kDynTagUser, "DynUserConstraint", nullptr, kDynsMaxConstraintRows,
                                0, kAllSix),
    makeType<DynGenericConstraint>(kDynTagGeneric, "DynGenericConstraint", DyncAddGenericConstraint,
                                   13, 0, {}, kDynsMaxConstraintBodies),
};

static_assert(std::all_of(kTypes.begin(), kTypes.end(), [](const DynJointType& type) {
    return type.max_rows <= kDynsMaxConstraintRows;
}));
static_assert(std::is_sorted(kTypes.begin(), kTypes.end(),
                             [](const DynJointType& a, const DynJointType& b) {
                                 return a.tag < b.tag;
                             }));

} // namespace

const DynJointType* DynJointTypeGet(int tag) {
    const auto* place =
        std::lower_bound(kTypes.begin(), kTypes.end(), tag,
                         [](const DynJointType& type, int wanted) { return type.tag < wanted; });
    return place != kTypes.end() && place->tag == tag ? &*place : nullptr;
}

std::span<const DynJointType> DynJointTypeGetAll() {
    return kTypes;
}

int getDynConstraintUnionSize() {
    std::size_t size = sizeof(DynBaseConstraint);
    for (const DynJointType& type : kTypes)
        size = std::max(size, type.size);
    return static_cast<int>(size);
}
