#pragma once
#include <Hy/HyQuaternion.h>
#include <Hy/HyTransform.h>
#include <Hy/HyVector3.h>

#include <concepts>
#include <cstdint>
#include <string>

namespace Hy {
class HyAssembly;
class HyAttachment;
class HyAttachmentPoint;
class HyBase;
class HyCollisionGeometry;
class HyConstraint;
class HyPart;

/// A value of one of several types under a name, as an application attaches it to an object.
///
/// A getter of a type other than the value's gives false, 0, an empty text, the zero vector, the
/// identity, or null; the as... operations convert. Pointers are stored and never followed.
class HY_API HyUserData {
public:
    enum Type : int {
        None = 0,
        ValueBoolean = 1,
        ValueString = 2,
        ValueInteger = 3,
        ValueReal = 4,
        ValueHyVector3 = 5,
        ValueHyTransform = 6,
        ValueHyQuaternion = 7,
        PointerVoid = 8,
        PointerHyAssembly = 9,
        PointerHyPart = 10,
        PointerHyCollisionGeometry = 11,
        PointerHyConstraint = 12,
        PointerHyAttachment = 13,
        PointerHyAttachmentPoint = 14,
        PointerHyBase = 15
    };

    explicit HyUserData(const std::string& name) : mName(name) {}
    /// Takes a bool alone, not what converts to one, such as a pointer to const.
    template <std::same_as<bool> Boolean>
    HyUserData(const std::string& name, Boolean value) : mName(name) {
        setValueBoolean(value);
    }
    HyUserData(const std::string& name, const std::string& value);
    HyUserData(const std::string& name, const char* value);
    HyUserData(const std::string& name, int value);
    HyUserData(const std::string& name, HyReal value);
    HyUserData(const std::string& name, const HyVector3& value);
    HyUserData(const std::string& name, const HyTransform& value);
    HyUserData(const std::string& name, const HyQuaternion& value);
    HyUserData(const std::string& name, void* value);
    HyUserData(const std::string& name, HyAssembly* value);
    HyUserData(const std::string& name, HyPart* value);
    HyUserData(const std::string& name, HyCollisionGeometry* value);
    HyUserData(const std::string& name, HyConstraint* value);
    HyUserData(const std::string& name, HyAttachment* value);
    HyUserData(const std::string& name, HyAttachmentPoint* value);
    HyUserData(const std::string& name, HyBase* value);

    [[nodiscard]] const std::string& getName() const { return mName; }
    void setName(const std::string& name) { mName = name; }
    [[nodiscard]] Type getType() const { return mType; }
    /// Whether the type is not None.
    [[nodiscard]] bool hasValue() const { return mType != None; }
    /// Back to type None.
    void clearValue();

    /// The value, if it is of type T.
    /// @tparam T bool, std::string, int, HyReal, HyVector3, HyTransform, HyQuaternion, void*, or a
    /// pointer to HyAssembly, HyPart, HyCollisionGeometry, HyConstraint, HyAttachment,
    /// HyAttachmentPoint or HyBase
    template <class T>
    [[nodiscard]] T getValue() const;

    [[nodiscard]] bool getValueBoolean() const;
    [[nodiscard]] std::string getValueString() const;
    [[nodiscard]] int getValueInteger() const;
    [[nodiscard]] HyReal getValueReal() const;
    [[nodiscard]] HyVector3 getValueHyVector3() const;
    [[nodiscard]] HyTransform getValueHyTransform() const;
    [[nodiscard]] HyQuaternion getValueHyQuaternion() const;
    [[nodiscard]] void* getPointerVoid() const;
    [[nodiscard]] HyAssembly* getPointerHyAssembly() const;
    [[nodiscard]] HyPart* getPointerHyPart() const;
    [[nodiscard]] HyCollisionGeometry* getPointerHyCollisionGeometry() const;
    [[nodiscard]] HyConstraint* getPointerHyConstraint() const;
    [[nodiscard]] HyAttachment* getPointerHyAttachment() const;
    [[nodiscard]] HyAttachmentPoint* getPointerHyAttachmentPoint() const;
    [[nodiscard]] HyBase* getPointerHyBase() const;

    void setValueBoolean(bool value);
    void setValueString(const std::string& value);
    void setValueInteger(int value);
    void setValueReal(HyReal value);
    void setValueHyVector3(const HyVector3& value);
    void setValueHyTransform(const HyTransform& value);
    void setValueHyQuaternion(const HyQuaternion& value);
    void setPointerVoid(void* value);
    void setPointerHyAssembly(HyAssembly* value);
    void setPointerHyPart(HyPart* value);
    void setPointerHyCollisionGeometry(HyCollisionGeometry* value);
    void setPointerHyConstraint(HyConstraint* value);
    void setPointerHyAttachment(HyAttachment* value);
    void setPointerHyAttachmentPoint(HyAttachmentPoint* value);
    void setPointerHyBase(HyBase* value);

    /// A number other than 0, a pointer other than null, or a text that begins with the number 1.
    [[nodiscard]] bool asBoolean() const;
    /// The value as text; a HyReal has six significant digits.
    [[nodiscard]] std::string asString() const;
    /// A number truncated towards 0 and into the range, or the number that a text begins with; 0
    /// for what is none.
    [[nodiscard]] int asInteger() const;
    /// A number, or the number that a text begins with; 0 for what is none.
    [[nodiscard]] HyReal asDouble() const;

    /// Names alone are compared, byte by byte.
    [[nodiscard]] bool operator==(const HyUserData& other) const { return mName == other.mName; }
    [[nodiscard]] bool operator<(const HyUserData& other) const { return mName < other.mName; }

private:
    void setPointer(Type type, void* value);
    [[nodiscard]] void* getPointer(Type type) const;

    std::string mName;
    Type mType = None;
    std::string mValueString;
    std::int32_t mValueInteger = 0; ///< also a boolean
    HyReal mValueReal = 0;
    void* mValuePointer = nullptr;
    HyVector3 mValueHyVector3 = HyVector3(0, 0, 0);
    HyTransform mValueHyTransform = HyTransform::kIdentity;
    HyQuaternion mValueHyQuaternion = HyQuaternion(1, 0, 0, 0);
};

// clang-format off
template <> inline bool HyUserData::getValue<bool>() const { return getValueBoolean(); }
template <> inline std::string HyUserData::getValue<std::string>() const { return getValueString(); }
template <> inline int HyUserData::getValue<int>() const { return getValueInteger(); }
template <> inline HyReal HyUserData::getValue<HyReal>() const { return getValueReal(); }
template <> inline HyVector3 HyUserData::getValue<HyVector3>() const { return getValueHyVector3(); }
template <> inline HyTransform HyUserData::getValue<HyTransform>() const { return getValueHyTransform(); }
template <> inline HyQuaternion HyUserData::getValue<HyQuaternion>() const { return getValueHyQuaternion(); }
template <> inline void* HyUserData::getValue<void*>() const { return getPointerVoid(); }
template <> inline HyAssembly* HyUserData::getValue<HyAssembly*>() const { return getPointerHyAssembly(); }
template <> inline HyPart* HyUserData::getValue<HyPart*>() const { return getPointerHyPart(); }
template <> inline HyCollisionGeometry* HyUserData::getValue<HyCollisionGeometry*>() const { return getPointerHyCollisionGeometry(); }
template <> inline HyConstraint* HyUserData::getValue<HyConstraint*>() const { return getPointerHyConstraint(); }
template <> inline HyAttachment* HyUserData::getValue<HyAttachment*>() const { return getPointerHyAttachment(); }
template <> inline HyAttachmentPoint* HyUserData::getValue<HyAttachmentPoint*>() const { return getPointerHyAttachmentPoint(); }
template <> inline HyBase* HyUserData::getValue<HyBase*>() const { return getPointerHyBase(); }
// clang-format on

} // namespace Hy
