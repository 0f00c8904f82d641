#include "GlbDocument.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace Hy {

// The file is little-endian, and values are copied into it as they are.
static_assert(std::endian::native == std::endian::little);

namespace {

// Numbers of the glTF 2.0 specification.
constexpr int kShort = 5122, kUnsignedShort = 5123, kUnsignedInt = 5125, kFloat = 5126;
constexpr int kArrayBuffer = 34962, kElementArrayBuffer = 34963;
constexpr std::uint32_t kMagic = 0x46546C67, kVersion = 2;
constexpr std::uint32_t kJsonChunk = 0x4E4F534A, kBinaryChunk = 0x004E4942;

std::string componentType(int type) {
    return "\"componentType\":" + std::to_string(type);
}

/// Length of the UTF-8 sequence at the start of a text, 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    if (length > 2) { // too long for what it says, surrogates, beyond the last code point
        const unsigned char second = byte(1);
        if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
            (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F))
            return 0;
    }
    return length;
}

void pad(std::string& bytes, char with) {
    bytes.append((4 - bytes.size() % 4) % 4, with);
}

void appendWord(std::string& bytes, std::size_t word) {
    const auto value = static_cast<std::uint32_t>(word);
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Bounds of vectors of a number of components each, as members of an accessor.
std::string bounds(std::span<const float> values, std::size_t components) {
    constexpr float kHuge = std::numeric_limits<float>::max();
    std::vector<float> low(components, kHuge), high(components, -kHuge);
    for (std::size_t i = 0; i < values.size(); ++i) {
        low[i % components] = std::min(low[i % components], values[i]);
        high[i % components] = std::max(high[i % components], values[i]);
    }
    return ",\"min\":" + jsonNumbers(low) + ",\"max\":" + jsonNumbers(high);
}

} // namespace

std::string jsonNumber(double value) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, std::isfinite(value) ? value : 0);
    return {digits, end.ptr};
}

std::string jsonText(std::string_view text) {
    std::string out = "\"";
    while (!text.empty()) {
        const char c = text.front();
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            out += '?';
        else if (c == '"' || c == '\\')
            (out += '\\') += c;
        else if (static_cast<unsigned char>(c) < 0x20)
            out += ' ';
        else
            out += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out + '"';
}

std::string jsonNumbers(std::span<const float> values) {
    JsonList list;
    for (const float value : values)
        list.add(jsonNumber(static_cast<double>(value))); // the same value, exactly
    return list.text();
}

std::size_t GlbDocument::add(View view, const void* data, std::size_t bytes, std::size_t count,
                             const std::string& type) {
    std::string& buffer = mViews[view];
    mAccessors.push_back({view, "\"byteOffset\":" + std::to_string(buffer.size()) +
                                    ",\"count\":" + std::to_string(count) + ',' + type});
    buffer.append(static_cast<const char*>(data), bytes);
    pad(buffer, 0);
    return mAccessors.size() - 1;
}

std::size_t GlbDocument::addCorners(std::span<const float> vectors, bool withBounds) {
    return add(kCorners, vectors.data(), vectors.size_bytes(), vectors.size() / 3,
               componentType(kFloat) + ",\"type\":\"VEC3\"" +
                   (withBounds ? bounds(vectors, 3) : std::string()));
}

std::size_t GlbDocument::addIndices(std::span<const std::uint32_t> indices,
                                    std::size_t cornerCount) {
    // The largest index is reserved for a restart.
    if (cornerCount > std::numeric_limits<std::uint16_t>::max())
        return add(kLongIndices, indices.data(), indices.size_bytes(), indices.size(),
                   componentType(kUnsignedInt) + ",\"type\":\"SCALAR\"");
    const std::vector<std::uint16_t> shorts(indices.begin(), indices.end());
    return add(kShortIndices, shorts.data(), shorts.size() * sizeof shorts[0], shorts.size(),
               componentType(kUnsignedShort) + ",\"type\":\"SCALAR\"");
}

std::size_t GlbDocument::addTimes(std::span<const float> seconds) {
    return add(kTimes, seconds.data(), seconds.size_bytes(), seconds.size(),
               componentType(kFloat) + ",\"type\":\"SCALAR\"" + bounds(seconds, 1));
}

std::size_t GlbDocument::addVectors(std::span<const float> vectors) {
    return add(kVectors, vectors.data(), vectors.size_bytes(), vectors.size() / 3,
               componentType(kFloat) + ",\"type\":\"VEC3\"");
}

std::size_t GlbDocument::addRotations(std::span<const std::int16_t> quaternions) {
    return add(kRotations, quaternions.data(), quaternions.size_bytes(), quaternions.size() / 4,
               componentType(kShort) + ",\"normalized\":true,\"type\":\"VEC4\"");
}

std::size_t GlbDocument::addExtraView(std::string bytes) {
    pad(bytes, 0);
    mExtraViews.push_back(std::move(bytes));
    const auto inUse = std::count_if(std::begin(mViews), std::end(mViews),
                                     [](const std::string& view) { return !view.empty(); });
    return static_cast<std::size_t>(inUse) + mExtraViews.size() - 1;
}

std::string GlbDocument::assemble(const std::string& members) const {
    JsonList views, accessors;
    std::string binary;
    std::size_t index[kViewCount] = {};
    const auto addView = [&](const std::string& bytes, const std::string& use) {
        views.add("{\"buffer\":0,\"byteOffset\":" + std::to_string(binary.size()) +
                  ",\"byteLength\":" + std::to_string(bytes.size()) + use + '}');
        binary += bytes;
    };
    const std::string elements = ",\"target\":" + std::to_string(kElementArrayBuffer);
    const std::string corners = ",\"byteStride\":12,\"target\":" + std::to_string(kArrayBuffer);
    for (std::size_t v = 0; v < kViewCount; ++v) {
        if (mViews[v].empty())
            continue;
        index[v] = views.size();
        addView(mViews[v], v == kCorners                             ? corners
                           : v == kShortIndices || v == kLongIndices ? elements
                                                                     : std::string());
    }
    for (const std::string& extra : mExtraViews)
        addView(extra, "");
    for (const Accessor& accessor : mAccessors)
        accessors.add("{\"bufferView\":" + std::to_string(index[accessor.view]) + ',' +
                      accessor.text + '}');

    std::string json = '{' + members;
    if (!accessors.empty())
        json += "\"accessors\":" + accessors.text() + ',';
    if (!views.empty())
        json += "\"bufferViews\":" + views.text() +
                ",\"buffers\":[{\"byteLength\":" + std::to_string(binary.size()) + "}],";
    json += "\"asset\":{\"version\":\"2.0\",\"generator\":\"Halcyr\"}}";
    pad(json, ' ');

    constexpr std::size_t kHeader = 12, kChunkHeader = 8;
    std::string file;
    const std::size_t total =
        kHeader + kChunkHeader + json.size() + (binary.empty() ? 0 : kChunkHeader + binary.size());
    if (total > std::numeric_limits<std::uint32_t>::max())
        return {};
    file.reserve(total);
    for (const std::size_t word :
         {std::size_t{kMagic}, std::size_t{kVersion}, total, json.size(), std::size_t{kJsonChunk}})
        appendWord(file, word);
    file += json;
    if (!binary.empty()) {
        appendWord(file, binary.size());
        appendWord(file, kBinaryChunk);
        file += binary;
    }
    return file;
}

} // namespace Hy
