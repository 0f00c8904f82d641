#pragma once
#include <Hy/HyClass.h>

namespace Hy {

/// Parameters of a tire on a pair of surfaces, stored with their contact material for who simulates
/// the tire. The engine carries them and reads none.
class HY_API HyTireModelParams {
public:
    static constexpr std::array<int, 1> kIDVector{kHyTireModelParamsClassId};
    /// Identity of the class.
    [[nodiscard]] static constexpr int getStaticClassType() { return kHyTireModelParamsClassId; }
    /// Identities of the class and of all that it derives from, its own first.
    [[nodiscard]] static constexpr std::span<const int> getIDVector() { return kIDVector; }

    HyTireModelParams() = default;
    HyTireModelParams(const HyTireModelParams&) = default;
    HyTireModelParams& operator=(const HyTireModelParams&) = default;

    /// Whether the object is of the class with this identity or of one derived from it.
    [[nodiscard]] virtual bool isOfClassType(int id) const;
    /// Whether the object is of the class with this identity itself.
    [[nodiscard]] virtual bool isOfExactClassType(int id) const;
    virtual ~HyTireModelParams() = default;
    /// A copy of the same class; owned by the caller.
    [[nodiscard]] virtual HyTireModelParams* clone() const = 0;
};

} // namespace Hy
