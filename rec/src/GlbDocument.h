#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Hy {

/// A list of values as JSON has them.
class JsonList {
public:
    void add(std::string_view item) {
        if (mCount++ > 0)
            mText += ',';
        mText += item;
    }
    [[nodiscard]] std::size_t size() const { return mCount; }
    [[nodiscard]] bool empty() const { return mCount == 0; }
    [[nodiscard]] std::string text() const { return '[' + mText + ']'; }

private:
    std::string mText;
    std::size_t mCount = 0;
};

/// Shortest text that reads back as the same number; what is not finite becomes 0.
[[nodiscard]] std::string jsonNumber(double value);
/// In quotes; bytes that are not UTF-8 become question marks.
[[nodiscard]] std::string jsonText(std::string_view text);
[[nodiscard]] std::string jsonNumbers(std::span<const float> values);

/// The data of a binary glTF 2.0 file, sorted by use into buffer views, and the file around it.
class GlbDocument {
public:
    // Each answers the index of a new accessor.
    std::size_t addCorners(std::span<const float> vectors, bool withBounds); ///< three a corner
    std::size_t addIndices(std::span<const std::uint32_t> indices, std::size_t cornerCount);
    std::size_t addTimes(std::span<const float> seconds);
    std::size_t addVectors(std::span<const float> vectors);              ///< three a key
    std::size_t addRotations(std::span<const std::int16_t> quaternions); ///< x, y, z, w a key

    /// Bytes that extras refer to. Answers the index of their buffer view; after this, no accessor is
    /// added.
    std::size_t addExtraView(std::string bytes);

    /// The file; empty beyond the 4 GiB of the format.
    /// @param members members of the top object beside accessors, buffer views and buffer, each
    ///                ended by a comma
    [[nodiscard]] std::string assemble(const std::string& members) const;

private:
    enum View : std::size_t {
        kCorners,
        kShortIndices,
        kLongIndices,
        kTimes,
        kVectors,
        kRotations,
        kViewCount
    };
    struct Accessor {
        View view;
        std::string text; ///< without its view
    };

    std::size_t add(View view, const void* data, std::size_t bytes, std::size_t count,
                    const std::string& type);

    std::string mViews[kViewCount]; ///< an empty one is left out
    std::vector<std::string> mExtraViews;
    std::vector<Accessor> mAccessors;
};

} // namespace Hy
