#pragma once
#include <Hy/HyID.h>

#include <cstdint>
#include <string>

namespace Hy {

/// Names of one kind of identifiers; an identifier is the index of its name. Index 0 is reserved
/// and has the empty name.
class HY_API SequentialIDInternalData {
public:
    SequentialIDInternalData();

    /// Appends a name.
    /// @return its index; 0, after a warning, for a name that is null or in use
    int create(const char* name);
    /// The name, or "Unknown ID" after a warning.
    [[nodiscard]] std::string getName(int id) const;
    /// Number of names, the reserved one among them.
    [[nodiscard]] int getIDCount() const { return static_cast<int>(mNames.size()); }
    [[nodiscard]] bool exist(const char* name) const;

private:
    HyArray<HyID> mNames;
};

/// The names of the identifiers of class T in this process.
template <class T>
class HY_API HySequentialIDGenerator {
public:
    /// Appends a name.
    /// @return its index; 0, after a warning, for a name that is null or in use
    static int create(const char* name) { return data().create(name); }
    /// The name, or "Unknown ID" after a warning.
    [[nodiscard]] static std::string getName(int id) { return data().getName(id); }
    /// Number of names, the reserved one among them.
    [[nodiscard]] static int getIDCount() { return data().getIDCount(); }
    [[nodiscard]] static bool exist(const char* name) { return data().exist(name); }

private:
    static SequentialIDInternalData& data();
};

template <class T>
SequentialIDInternalData& HySequentialIDGenerator<T>::data() {
    static SequentialIDInternalData names;
    return names;
}

/// An identifier that counts the names of class T from 1; 0 is the one without a name.
template <class T>
class HY_API HyGenericSequentialID : public HySequentialIDGenerator<T> {
public:
    HyGenericSequentialID() = default;
    /// Creates the name. One that is null or in use: a warning, and the identifier is 0.
    explicit HyGenericSequentialID(const char* name) { reset(name); }

    operator int() const { return m_id; }
    [[nodiscard]] std::string asString() const { return HyGenericSequentialID::getName(m_id); }
    /// Creates another name. One that is null or in use: a warning, and the old one stays.
    void reset(const char* name) {
        if (const int id = HyGenericSequentialID::create(name))
            m_id = id;
    }

private:
    std::int32_t m_id = 0;
};

/// The process's common sequence of named identifiers.
class HY_API HySequentialID : public HyGenericSequentialID<HySequentialID> {
public:
    using HyGenericSequentialID::HyGenericSequentialID;
};

extern template class HySequentialIDGenerator<HySequentialID>;

} // namespace Hy
