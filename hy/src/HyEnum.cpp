#include <Hy/HyEnum.h>
#include <Hy/HyMessage.h>

namespace Hy {
namespace {
constexpr int kNotFound = -1; ///< ReflectionAccessor::getValue() of an unknown text
} // namespace

ReflectionAccessor* HyEnum::sReflectionAccessor = nullptr;

ReflectionAccessor::~ReflectionAccessor() = default;

HyEnum::HyEnum(const std::string& typeString, int value) : mValue(value), mTypeString(typeString) {}

HyEnum::HyEnum(const std::type_info* type, int value) : mValue(value), mType(type) {}

HyEnum& HyEnum::operator=(const HyEnum& other) {
    if (this == &other)
        return *this;
    _validate();
    other._validate();
    if (mType && !other.mType) {
        mValue = other.mValue;
        mValueString = other.mValueString;
        (void)getTypeString(); // keeps the type by name, from which it is resolved again
        mType = nullptr;
        _validate();
        return *this;
    }
    if (mType && *mType != *other.mType) {
        HyWarning(0, "HyEnum::operator=(): Cannot assign a HyEnum of different type.");
        return *this;
    }
    if (!mType) {
        mType = other.mType;
        mTypeString = other.mTypeString;
    }
    mValue = other.mValue;
    mValueString = other.mValueString;
    return *this;
}

const std::type_info* HyEnum::getType() const {
    return mType;
}

int HyEnum::getValue() const {
    return mValue;
}

HyEnum::operator int() const {
    return mValue;
}

bool HyEnum::setValue(int value) {
    _validate();
    if (!isResolved()) {
        mValue = value;
        mValueString.clear();
        return true;
    }
    const std::string text = sReflectionAccessor->getValueString(mType, value);
    if (text.empty()) {
        HyWarning(0, "HyEnum::setValue: %d is not a valid enum value for %s\n.", value,
                  getTypeString().c_str());
        return true;
    }
    mValueString = text;
    mValue = value;
    return true;
}

bool HyEnum::fromString(const std::string& text) {
    _validate();
    if (!isResolved())
        return false;
    const int value = sReflectionAccessor->getValue(mType, text);
    if (value == kNotFound) {
        HyWarning(0, "HyEnum::fromString: Not found value %s for enumeration %s\n.", text.c_str(),
                  getTypeString().c_str());
        return false;
    }
    mValue = value;
    mValueString = text;
    return true;
}

const std::string& HyEnum::toString() const {
    _validate();
    if (isResolved() && mValueString.empty())
        mValueString = sReflectionAccessor->getValueString(mType, mValue);
    return mValueString;
}

const std::string& HyEnum::getTypeString() const {
    _validate();
    if (isResolved() && mTypeString.empty())
        mTypeString = sReflectionAccessor->getTypeId(mType);
    return mTypeString;
}

void HyEnum::setReflectionAccessor(ReflectionAccessor* accessor) {
    sReflectionAccessor = accessor;
}

void HyEnum::_validate() const {
    if (!sReflectionAccessor || mType)
        return;
    mType = sReflectionAccessor->getType(mTypeString);
    if (!mType)
        return;
    const int value = sReflectionAccessor->getValue(mType, mValueString);
    if (value == kNotFound)
        mValueString = sReflectionAccessor->getValueString(mType, mValue);
    else
        mValue = value;
}

bool HyEnum::isResolved() const {
    return mType && sReflectionAccessor;
}

} // namespace Hy
