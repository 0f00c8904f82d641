#include <Hy/HyUserData.h>

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace Hy {

namespace {

/// The value that a text begins with, T() if it begins with none. The same in every locale.
template <class T>
T parse(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    T value{};
    return (stream >> value) ? value : T{};
}

/// The values as a stream shows them, separated by blanks.
template <class... T>
std::string print(const T&... values) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    const char* separator = "";
    ((stream << separator << values, separator = " "), ...);
    return stream.str();
}

std::string print(const HyTransform& tm) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += i == 0 ? "" : " ";
        text += print(tm[i][0], tm[i][1], tm[i][2], tm[i][3]);
    }
    return text;
}

int truncate(HyReal value) {
    using Limits = std::numeric_limits<int>;
    if (std::isnan(value))
        return 0;
    if (value <= Limits::min())
        return Limits::min();
    return value >= Limits::max() ? Limits::max() : static_cast<int>(value);
}

} // namespace

HyUserData::HyUserData(const std::string& name, const std::string& value) : mName(name) {
    setValueString(value);
}
HyUserData::HyUserData(const std::string& name, const char* value) : mName(name) {
    setValueString(value ? value : "");
}
HyUserData::HyUserData(const std::string& name, int value) : mName(name) {
    setValueInteger(value);
}
HyUserData::HyUserData(const std::string& name, HyReal value) : mName(name) {
    setValueReal(value);
}
HyUserData::HyUserData(const std::string& name, const HyVector3& value) : mName(name) {
    setValueHyVector3(value);
}
HyUserData::HyUserData(const std::string& name, const HyTransform& value) : mName(name) {
    setValueHyTransform(value);
}
HyUserData::HyUserData(const std::string& name, const HyQuaternion& value) : mName(name) {
    setValueHyQuaternion(value);
}
HyUserData::HyUserData(const std::string& name, void* value) : mName(name) {
    setPointerVoid(value);
}
HyUserData::HyUserData(const std::string& name, HyAssembly* value) : mName(name) {
    setPointerHyAssembly(value);
}
HyUserData::HyUserData(const std::string& name, HyPart* value) : mName(name) {
    setPointerHyPart(value);
}
HyUserData::HyUserData(const std::string& name, HyCollisionGeometry* value) : mName(name) {
    setPointerHyCollisionGeometry(value);
}
HyUserData::HyUserData(const std::string& name, HyConstraint* value) : mName(name) {
    setPointerHyConstraint(value);
}
HyUserData::HyUserData(const std::string& name, HyAttachment* value) : mName(name) {
    setPointerHyAttachment(value);
}
HyUserData::HyUserData(const std::string& name, HyAttachmentPoint* value) : mName(name) {
    setPointerHyAttachmentPoint(value);
}
HyUserData::HyUserData(const std::string& name, HyBase* value) : mName(name) {
    setPointerHyBase(value);
}

void HyUserData::clearValue() {
    *this = HyUserData(mName);
}

bool HyUserData::getValueBoolean() const {
    return mType == ValueBoolean && mValueInteger != 0;
}
std::string HyUserData::getValueString() const {
    return mValueString;
}
int HyUserData::getValueInteger() const {
    return mType == ValueInteger ? mValueInteger : 0;
}
HyReal HyUserData::getValueReal() const {
    return mValueReal;
}
HyVector3 HyUserData::getValueHyVector3() const {
    return mValueHyVector3;
}
HyTransform HyUserData::getValueHyTransform() const {
    return mValueHyTransform;
}
HyQuaternion HyUserData::getValueHyQuaternion() const {
    return mValueHyQuaternion;
}
void* HyUserData::getPointerVoid() const {
    return getPointer(PointerVoid);
}
HyAssembly* HyUserData::getPointerHyAssembly() const {
    return static_cast<HyAssembly*>(getPointer(PointerHyAssembly));
}
HyPart* HyUserData::getPointerHyPart() const {
    return static_cast<HyPart*>(getPointer(PointerHyPart));
}
HyCollisionGeometry* HyUserData::getPointerHyCollisionGeometry() const {
    return static_cast<HyCollisionGeometry*>(getPointer(PointerHyCollisionGeometry));
}
HyConstraint* HyUserData::getPointerHyConstraint() const {
    return static_cast<HyConstraint*>(getPointer(PointerHyConstraint));
}
HyAttachment* HyUserData::getPointerHyAttachment() const {
    return static_cast<HyAttachment*>(getPointer(PointerHyAttachment));
}
HyAttachmentPoint* HyUserData::getPointerHyAttachmentPoint() const {
    return static_cast<HyAttachmentPoint*>(getPointer(PointerHyAttachmentPoint));
}
HyBase* HyUserData::getPointerHyBase() const {
    return static_cast<HyBase*>(getPointer(PointerHyBase));
}
void* HyUserData::getPointer(Type type) const {
    return mType == type ? mValuePointer : nullptr;
}

void HyUserData::setValueBoolean(bool value) {
    clearValue();
    mType = ValueBoolean;
    mValueInteger = value;
}
void HyUserData::setValueString(const std::string& value) {
    const std::string copy = value; // it may be this object's own
    clearValue();
    mType = ValueString;
    mValueString = copy;
}
void HyUserData::setValueInteger(int value) {
    clearValue();
    mType = ValueInteger;
    mValueInteger = value;
}
void HyUserData::setValueReal(HyReal value) {
    clearValue();
    mType = ValueReal;
    mValueReal = value;
}
void HyUserData::setValueHyVector3(const HyVector3& value) {
    const HyVector3 copy = value; // it may be this object's own
    clearValue();
    mType = ValueHyVector3;
    mValueHyVector3 = copy;
}
void HyUserData::setValueHyTransform(const HyTransform& value) {
    const HyTransform copy = value; // it may be this object's own
    clearValue();
    mType = ValueHyTransform;
    mValueHyTransform = copy;
}
void HyUserData::setValueHyQuaternion(const HyQuaternion& value) {
    const HyQuaternion copy = value; // it may be this object's own
    clearValue();
    mType = ValueHyQuaternion;
    mValueHyQuaternion = copy;
}
void HyUserData::setPointerVoid(void* value) {
    setPointer(PointerVoid, value);
}
void HyUserData::setPointerHyAssembly(HyAssembly* value) {
    setPointer(PointerHyAssembly, value);
}
void HyUserData::setPointerHyPart(HyPart* value) {
    setPointer(PointerHyPart, value);
}
void HyUserData::setPointerHyCollisionGeometry(HyCollisionGeometry* value) {
    setPointer(PointerHyCollisionGeometry, value);
}
void HyUserData::setPointerHyConstraint(HyConstraint* value) {
    setPointer(PointerHyConstraint, value);
}
void HyUserData::setPointerHyAttachment(HyAttachment* value) {
    setPointer(PointerHyAttachment, value);
}
void HyUserData::setPointerHyAttachmentPoint(HyAttachmentPoint* value) {
    setPointer(PointerHyAttachmentPoint, value);
}
void HyUserData::setPointerHyBase(HyBase* value) {
    setPointer(PointerHyBase, value);
}
void HyUserData::setPointer(Type type, void* value) {
    clearValue();
    mType = type;
    mValuePointer = value;
}

bool HyUserData::asBoolean() const {
    switch (mType) {
    case ValueBoolean:
    case ValueInteger:
        return mValueInteger != 0;
    case ValueString:
        return parse<bool>(mValueString);
    case ValueReal:
        return mValueReal != 0;
    default:
        return mValuePointer != nullptr;
    }
}

int HyUserData::asInteger() const {
    if (mType == ValueString)
        return parse<int>(mValueString);
    return mType == ValueReal ? truncate(mValueReal) : mValueInteger;
}

HyReal HyUserData::asDouble() const {
    if (mType == ValueString)
        return parse<HyReal>(mValueString);
    return mType == ValueReal ? mValueReal : mValueInteger;
}

std::string HyUserData::asString() const {
    const HyVector3& v = mValueHyVector3;
    const HyQuaternion& q = mValueHyQuaternion;
    switch (mType) {
    case None:
        return {};
    case ValueBoolean:
        return mValueInteger ? "true" : "false";
    case ValueString:
        return mValueString;
    case ValueInteger:
        return std::to_string(mValueInteger);
    case ValueReal:
        return print(mValueReal);
    case ValueHyVector3:
        return "HyVector3(" + print(v[0], v[1], v[2]) + ")";
    case ValueHyTransform:
        return "HyTransform(" + print(mValueHyTransform) + ")";
    case ValueHyQuaternion:
        return "HyQuaternion(" + print(q[0], q[1], q[2], q[3]) + ")";
    case PointerVoid:
        return "(void *)" + print(mValuePointer);
    case PointerHyAssembly:
        return "(HyAssembly *)" + print(mValuePointer);
    case PointerHyPart:
        return "(HyPart *)" + print(mValuePointer);
    case PointerHyCollisionGeometry:
        return "(HyCollisionGeometry *)" + print(mValuePointer);
    case PointerHyConstraint:
        return "(HyConstraint *)" + print(mValuePointer);
    case PointerHyAttachment:
        return "(HyAttachment *)" + print(mValuePointer);
    case PointerHyAttachmentPoint:
        return "(HyAttachmentPoint *)" + print(mValuePointer);
    case PointerHyBase:
        return "(HyBase *)" + print(mValuePointer);
    }
    return {};
}

} // namespace Hy
