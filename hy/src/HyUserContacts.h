#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyVector3.h>

struct DynBody;
struct DynWorld;

namespace Hy {
class HyContactMaterial;
class HyDynamicsContact;
class HyPart;

/// The contacts of a world that the application has made, in the order of making.
class HyUserContacts {
public:
    explicit HyUserContacts(DynWorld* world) : mWorld(world) {}
    HyUserContacts(const HyUserContacts&) = delete;
    HyUserContacts& operator=(const HyUserContacts&) = delete;
    ~HyUserContacts() { destroyAll(); }

    /// An enabled contact; null if the world has no more.
    /// @param part1,part2 of the world; at most one null
    HyDynamicsContact* create(HyPart* part1, HyPart* part2, const HyContactMaterial& material,
                              const HyVector3& position, const HyVector3& normal,
                              HyReal penetration);
    /// False for a contact that is none of these.
    bool destroy(HyDynamicsContact* contact);
    void destroyAll();
    /// After a step: what is to act in the next one is enabled anew.
    void disableAll();
    /// Before a solve: turns friction models that the application chose meanwhile into those that the
    /// rows know.
    void resolveFriction();
    /// The body leaves the world: its contacts are disabled and have it no more.
    void forget(const DynBody* body);
    [[nodiscard]] const HyArray<HyDynamicsContact*>& all() const { return mContacts; }

private:
    DynWorld* mWorld;
    HyArray<HyDynamicsContact*> mContacts;
};

} // namespace Hy
