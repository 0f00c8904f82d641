#pragma once
#include <Kit/KitApi.h>

#include <cstdint>
#include <map>
#include <utility>

namespace Hy {
class HyPart;

namespace ICD {

/// Gives parts their numbers. Producers that share one give a part the same number.
class HY_API HyMappingPartID {
public:
    virtual ~HyMappingPartID() = default;
    /// @param part alive
    [[nodiscard]] virtual unsigned int map(HyPart* part) = 0;
};

/// Numbers parts from 0 on in the order in which it meets them. A number is never given again, not
/// even to a part that comes to stand at the address of one that is gone.
class HY_API HyMappingPartIDMap : public HyMappingPartID {
public:
    /// Null: a warning, and the largest number, which no part gets.
    [[nodiscard]] unsigned int map(HyPart* part) override;

private:
    unsigned int mCurID = 0;                                            ///< the next number
    std::map<std::pair<HyPart*, std::uint64_t>, unsigned int> mMapping; ///< by address and serial
};

} // namespace ICD
} // namespace Hy
