#pragma once
#include <Kit/KitApi.h>
#include <string>
#include <typeinfo>

namespace Hy {

/// Knows the enumerations of an application: what their values are called.
class HY_API ReflectionAccessor {
public:
    virtual ~ReflectionAccessor();
    [[nodiscard]] virtual bool isEnum(const std::type_info* type) = 0;
    [[nodiscard]] virtual std::string getTypeId(const std::type_info* type) = 0;
    /// Null if unknown.
    [[nodiscard]] virtual const std::type_info* getType(const std::string& typeString) = 0;
    /// Empty for a value that does not exist.
    [[nodiscard]] virtual std::string getValueString(const std::type_info* type, int value) = 0;
    /// -1 if not found.
    [[nodiscard]] virtual int getValue(const std::type_info* type,
                                       const std::string& valueString) = 0;
};

/// An enumeration value that converts to and from text through the installed accessor.
///
/// Type and text are resolved on use, so that a value may be made before the accessor is there.
/// Where both number and text exist, the text wins. Not thread-safe, reading included.
class HY_API HyEnum {
public:
    HyEnum() = default;
    HyEnum(const std::string& typeString, int value);
    HyEnum(const std::type_info* type, int value);
    HyEnum(const HyEnum&) = default;
    ~HyEnum() = default;
    /// A value of another type is warned of and not taken.
    HyEnum& operator=(const HyEnum& other);

    /// Null until resolved.
    [[nodiscard]] const std::type_info* getType() const;
    [[nodiscard]] int getValue() const;
    operator int() const;

    /// Always true. A value that its type does not have is warned of and not taken.
    bool setValue(int value);
    /// False, and no change, if the text is no value of the type or the type is not known.
    bool fromString(const std::string& text);
    /// Name of the value, empty if not known.
    [[nodiscard]] const std::string& toString() const;
    /// Name of the type, empty if not known.
    [[nodiscard]] const std::string& getTypeString() const;

    /// @param accessor not owned; null for none
    static void setReflectionAccessor(ReflectionAccessor* accessor);

private:
    void _validate() const;
    [[nodiscard]] bool isResolved() const;

    // Resolving changes them without changing what they mean.
    mutable int mValue = 0;
    mutable const std::type_info* mType = nullptr;
    mutable std::string mValueString;
    mutable std::string mTypeString;

    static ReflectionAccessor* sReflectionAccessor;
};

} // namespace Hy
