#include "DynBodyFixture.h"

#include <Dyn/DynBodyForce.h>

namespace {

class DynBodyForceTest : public DynBodyFixture {
protected:
    DynBodyForce* add(int id) {
        DynBodyForce* force = DynBodyForceCreate(mWorld);
        DynBodyForceConfig config{.id = id, .info = this};
        config.update = [](DynBodyForce* f) {
            auto* test = static_cast<DynBodyForceTest*>(f->info);
            test->mUpdated.push_back(f->id);
            if (test->mOnUpdate)
                test->mOnUpdate(f);
        };
        DynBodyForceSetConfig(force, config);
        return force;
    }
    std::vector<int> update() {
        mUpdated.clear();
        DynBodyForceUpdateEnabled(mWorld);
        return mUpdated;
    }

    std::vector<int> mUpdated;
    std::function<void(DynBodyForce*)> mOnUpdate;
};

using Ids = std::vector<int>;

} // namespace

TEST_F(DynBodyForceTest, SurvivesChangesOnTheWay) {
    struct Case {
        const char* name;
        std::function<void(std::vector<DynBodyForce*>&)> change; ///< during the update of force 1
        Ids expected;
    };
    const Case cases[] = {
        {"destroys itself", [](auto& f) { DynBodyForceDestroy(f[1]); }, {0, 1, 2, 3}},
        {"destroys the next", [](auto& f) { DynBodyForceDestroy(f[2]); }, {0, 1, 3}},
        {"destroys the one before", [](auto& f) { DynBodyForceDestroy(f[0]); }, {0, 1, 2, 3}},
        {"disables all after",
         [](auto& f) { DynBodyForceDisable(f[2]), DynBodyForceDisable(f[3]); },
         {0, 1}},
        {"creates one", [this](auto&) { DynBodyForceEnable(add(9)); }, {0, 1, 2, 3}},
    };
    for (const Case& c : cases) {
        mOnUpdate = nullptr;
        while (DynBodyForceGetFirst(mWorld))
            DynBodyForceDestroy(DynBodyForceGetFirst(mWorld));
        std::vector<DynBodyForce*> forces;
        for (int i = 0; i < 4; ++i)
            DynBodyForceEnable(forces.emplace_back(add(i)));
        mOnUpdate = [&](DynBodyForce* force) {
            if (force == forces[1])
                c.change(forces);
        };
        EXPECT_EQ(update(), c.expected) << c.name;
    }
}

TEST_F(DynBodyForceTest, TellsItsOwnerOfItsStates) {
    static std::string told;
    told.clear();
    DynBodyForce* force = DynBodyForceCreate(mWorld);
    DynBodyForceSetConfig(force, {.destroy = [](DynBodyForce*) { told += 'x'; },
                                  .disable = [](DynBodyForce*) { told += 'd'; },
                                  .enable = [](DynBodyForce*) { told += 'e'; }});
    DynBodyForceDisable(force);
    DynBodyForceEnable(force);
    DynBodyForceEnable(force);
    DynBodyForceDestroy(force);
    EXPECT_EQ(told, "edx");
    EXPECT_EQ(DynBodyForceGetFirst(mWorld), nullptr);
}

TEST_F(DynBodyForceTest, HoldsBodiesOrAnArrayOfTheOwners) {
    DynBody *a = addBody(), *b = addBody();
    DynBodyForce* force = add(0);
    DynBodyForceSetBodies(force, a, nullptr, b);
    EXPECT_EQ(DynBodyForceGetBody(force, 2), b);
    EXPECT_EQ(DynBodyForceGetUserBodyArray(force), nullptr);
    destroy(b);
    EXPECT_EQ(DynBodyForceGetBody(force, 2), nullptr);
    EXPECT_EQ(DynBodyForceGetBody(force, 0), a);

    DynBody* own[] = {a, a, a, a};
    DynBodyForceSetUserBodyArray(force, own, 4);
    EXPECT_EQ(DynBodyForceGetBody(force, 3), a);
    EXPECT_EQ(DynBodyForceGetUserBodyArray(force), own);
    const WarningRecorder recorder;
    EXPECT_EQ(DynBodyForceGetBody(force, 4), nullptr);
    EXPECT_EQ(DynBodyForceGetBody(force, -1), nullptr);
    EXPECT_EQ(recorder.take().size(), 2u);
    DynBodyForceSetUserBodyArray(force, nullptr, 0);
    EXPECT_EQ(DynBodyForceGetBody(force, 0), a);
}
