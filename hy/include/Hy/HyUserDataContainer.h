#pragma once
#include <Hy/HyUserData.h>

#include <set>
#include <string>

namespace Hy {

/// Values by name, in the order of the names. A copy has copies of the values.
class HY_API HyUserDataContainer {
public:
    using Set = std::set<HyUserData>;

    /// Removes every value.
    void clear() { mData.clear(); }
    [[nodiscard]] const Set& getData() const { return mData; }
    /// The value of this name, or an empty one of type None. Valid until the value is replaced.
    [[nodiscard]] const HyUserData& getData(const std::string& name) const;
    /// Adds a value, or replaces the one of its name.
    void setData(const HyUserData& userData);
    /// Takes these values in place of its own.
    void setData(const Set& set) { mData = set; }
    [[nodiscard]] bool hasData(const std::string& name) const;
    /// @return whether there was one
    bool removeData(const std::string& name);
    /// HyUserData::getValue() of the value of this name.
    template <class T>
    [[nodiscard]] T getValue(const std::string& name) const {
        return getData(name).getValue<T>();
    }

private:
    Set mData;
};

} // namespace Hy
