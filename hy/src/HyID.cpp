#include <Hy/HyID.h>

#include <Hy/HyMessage.h>

#include <algorithm>
#include <array>

namespace Hy {

namespace {

using CrcTable = std::array<std::uint32_t, 256>;

CrcTable makeCrcTable() {
    CrcTable table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t remainder = i;
        for (int bit = 0; bit < 8; ++bit)
            remainder = remainder >> 1 ^ (remainder & 1 ? 0xEDB88320u : 0u);
        table[i] = remainder;
    }
    return table;
}

HyArray<HyID>& registeredIDs() {
    static HyArray<HyID> ids;
    return ids;
}

} // namespace

std::uint32_t calculateCRC32(const void* data, std::size_t length, std::uint32_t start) {
    static const CrcTable table = makeCrcTable();
    const auto* byte = static_cast<const unsigned char*>(data);
    std::uint32_t crc = ~start;
    for (std::size_t i = 0; i < length; ++i)
        crc = crc >> 8 ^ table[(crc ^ byte[i]) & 0xFF];
    return ~crc;
}

const HyID HyID::INVALID;

void HyID::reset(const std::string& text) {
    m_idString = text;
    m_idNumber =
        text.empty() ? -1 : static_cast<std::int32_t>(calculateCRC32(text.data(), text.size(), 0));
}

bool HyID::registerID(const HyID& id) {
    if (isRegistered(id)) {
        HyWarning(0, "HyID %s is already registered. The application make not work correctly.\n",
                  id.asString().c_str());
        return false;
    }
    HyArray<HyID>& ids = registeredIDs();
    ids.push_back(id);
    std::sort(ids.begin(), ids.end());
    return true;
}

bool HyID::unregisterID(const HyID& id) {
    return registeredIDs().eraseOnce(id);
}

bool HyID::isRegistered(const HyID& id) {
    const HyArray<HyID>& ids = registeredIDs();
    return std::binary_search(ids.begin(), ids.end(), id);
}

std::string HyID::getIDName(int number) {
    for (const HyID& id : registeredIDs())
        if (id.asChecksum() == number)
            return id.asString();
    return "Unknown ID";
}

const HyArray<HyID>& HyID::getRegisteredIDArray() {
    return registeredIDs();
}

} // namespace Hy
