#pragma once
#include <Hy/HyArray.h>

#include <Kit/KitApi.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Hy {

/// CRC-32 of IEEE 802.3: reflected, polynomial 0xEDB88320, inverted before and after. The result
/// for one stretch of data is the start value for the next.
/// @param start 0 for the first stretch; the result where there is no data
[[nodiscard]] HY_API std::uint32_t calculateCRC32(const void* data, std::size_t length,
                                                  std::uint32_t start);

/// A text that serves as a key through its checksum.
class HY_API HyID {
public:
    static const HyID INVALID; ///< the empty identifier, of number -1

    /// The empty identifier.
    HyID() = default;
    HyID(const std::string& text) { reset(text); }
    /// @param text zero-terminated; null counts as empty
    HyID(const char* text) : HyID(std::string(text ? text : "")) {}
    /// An identifier whose text is not known and reads "Unknown".
    explicit HyID(int number) : m_idString("Unknown"), m_idNumber(number) {}

    [[nodiscard]] const std::string& asString() const { return m_idString; }
    /// The checksum of the text, -1 for the empty one.
    [[nodiscard]] int asChecksum() const { return m_idNumber; }
    /// Takes another text.
    void reset(const std::string& text);

    /// Numbers alone are compared.
    [[nodiscard]] bool operator==(const HyID& other) const {
        return m_idNumber == other.m_idNumber;
    }
    [[nodiscard]] bool operator<(const HyID& other) const { return m_idNumber < other.m_idNumber; }

    /// Makes the identifier known to the process. One whose number is taken: a warning, and the
    /// first stays.
    static bool registerID(const HyID& id);
    /// Removes what is registered under the number.
    /// @return whether there was something
    static bool unregisterID(const HyID& id);
    /// Whether the number is registered.
    [[nodiscard]] static bool isRegistered(const HyID& id);
    /// The text registered for a number, or "Unknown ID".
    [[nodiscard]] static std::string getIDName(int number);
    /// All registered identifiers, sorted by number.
    [[nodiscard]] static const HyArray<HyID>& getRegisteredIDArray();

private:
    std::string m_idString;
    std::int32_t m_idNumber = -1;
};

} // namespace Hy
