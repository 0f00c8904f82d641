#pragma once
#include <Kit/KitApi.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Hy {
class HyAssembly;
class HyAssemblyContainer;
class HyCollisionGeometry;
class HyPart;

/// Whether two things may collide: two objects, or one of them and everything.
///
/// Where several rules apply to a pair, the one of the highest priority decides; of equal ones the
/// one whose objects were created first. A rule is a value; it names its objects by their creation, so
/// that one which is gone is never taken for a younger one at its address.
class HY_API HyCollisionRule {
public:
    /// Of which kinds the objects are, the more specific one first.
    enum Type : int {
        kType_CG_CG = 0,
        kType_CG_Part = 1,
        kType_CG_Assembly = 2,
        kType_CG_Mechanism = 3,
        kType_CG_Everything = 4,
        kType_Part_Part = 5,
        kType_Part_Assembly = 6,
        kType_Part_Mechanism = 7,
        kType_Part_Everything = 8,
        kType_Assembly_Assembly = 9,
        kType_Assembly_Mechanism = 10,
        kType_Assembly_Everything = 11,
        kType_Mechanism_Mechanism = 12,
        kType_Mechanism_Everything = 13,
        kType_Everything_Everything = 14,
    };

    static constexpr int PriorityDefault = 0;
    static constexpr int PriorityPart = 10000;
    static constexpr int PriorityAssembly = 20000;
    static constexpr int PriorityMechanism = 30000;
    static constexpr int PriorityScene = 40000;
    /// What no rule in a universe has as its ID.
    static constexpr unsigned InvalidID = 0;

    /// What a rule names, then one object is set; or what a rule is asked about, then an object and
    /// all that it belongs to are set. Without any it stands for everything.
    struct HY_API Target {
        Target() = default;
        /// Names a part, which is alive; null: everything.
        Target(HyPart* namedPart);
        /// Names a geometry likewise.
        Target(HyCollisionGeometry* namedGeometry);
        /// A part and all that it belongs to.
        [[nodiscard]] static Target chainOf(HyPart* part);
        /// A geometry and all that it belongs to.
        [[nodiscard]] static Target chainOf(HyCollisionGeometry* geometry);

        /// The more specific object first; of one kind the one created first.
        [[nodiscard]] bool operator<(const Target& other) const;
        /// Whether the same objects are set.
        [[nodiscard]] bool operator==(const Target& other) const {
            return serials == other.serials;
        }

        HyCollisionGeometry* collisionGeometry = nullptr;
        HyPart* part = nullptr;
        HyAssembly* assembly = nullptr;
        HyAssemblyContainer* mechanism = nullptr;
        /// Creation numbers of these four, 0 for null. They alone are compared.
        std::array<std::uint64_t, 4> serials{};
    };

    /// Everything against everything, not to collide.
    HyCollisionRule() = default;
    /// Two objects in either order; their pointers serve as targets.
    HyCollisionRule(const Target& a, const Target& b, bool mayCollide, int rulePriority);
    /// One object against everything.
    HyCollisionRule(const Target& a, bool mayCollide, int rulePriority);

    [[nodiscard]] const Target& first() const { return mFirst; }
    [[nodiscard]] const Target& second() const { return mSecond; }
    [[nodiscard]] Type getType() const { return mType; }

    /// Whether the rule is about a pair, in either order.
    [[nodiscard]] bool appliesTo(const Target& t1, const Target& t2) const;
    /// Whether the rule may be about a pair with this in it: it is named, or the rule is about
    /// everything.
    [[nodiscard]] bool appliesTo(const Target& t) const;
    /// Whether everything is one of its targets.
    [[nodiscard]] bool appliesToEverything() const;
    [[nodiscard]] static bool appliesToEverything(const std::vector<HyCollisionRule>& rules);
    /// The rules that have an earlier one's priority and targets, whatever they say of them.
    [[nodiscard]] static std::vector<HyCollisionRule>
    detectContradictions(const std::vector<HyCollisionRule>& rules);

    /// The same rule; the ID does not count.
    [[nodiscard]] bool operator==(const HyCollisionRule& other) const;
    /// The higher priority first, then by targets.
    [[nodiscard]] bool operator<(const HyCollisionRule& other) const;

    bool collide = false;
    int priority = PriorityDefault;
    unsigned ID = InvalidID; ///< given by the universe

private:
    Target mFirst, mSecond;
    Type mType = kType_Everything_Everything;
};

} // namespace Hy
