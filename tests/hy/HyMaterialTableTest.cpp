#include <Hy/HyContactMaterial.h>
#include <Hy/HyContactProperties.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>

#include "FrameFixture.h"
#include "MessageCapture.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>

namespace Hy {
namespace {

using Base = HyMaterialBase;

TEST(HyMaterialTableTest, BeginsWithTheDefaultPair) {
    const HyMaterialTable table;
    EXPECT_EQ(table.getMaterialCount(), 1);
    EXPECT_EQ(table.getMaterial("default"), table.getDefaultMaterial());
    const HyContactMaterial* pair = table.getContactMaterial(nullptr, nullptr);
    ASSERT_TRUE(pair);
    EXPECT_EQ(pair, table.getContactMaterial(0, 0));
    EXPECT_EQ(pair->getName(), "default+default");
    EXPECT_EQ(pair->getFrictionModel(Base::kFrictionAxisLinear), Base::kFrictionModelNone);
    EXPECT_FALSE(pair->isLocked());
}

TEST(HyMaterialTableTest, NewNamesBeginAsTheDefaultStands) {
    MessageCapture capture;
    HyMaterialTable table;
    table.getDefaultMaterial()->setRestitution(0.5);
    HyMaterial* ice = table.registerMaterial("ice");
    table.getDefaultMaterial()->setRestitution(0.75);
    EXPECT_EQ(ice->getRestitution(), 0.5);
    EXPECT_EQ(ice->getIndex(), 1);
    EXPECT_EQ(table.registerMaterial("ice"), ice);
    EXPECT_EQ(ice->getRestitution(), 0.5);

    // A registered pointer is copied, with what belongs to it, unless its name is there.
    HyMaterial own;
    own.setName("rubber");
    own.setRestitution(0.9);
    own.setMaterialOrigin("library", "tires.xml");
    HyMaterial* rubber = table.registerMaterial(&own);
    ASSERT_NE(rubber, &own);
    EXPECT_EQ(own.getIndex(), -1);
    EXPECT_EQ(rubber->getRestitution(), 0.9);
    EXPECT_EQ(rubber->getMaterialOriginFilename(), "tires.xml");
    own.setRestitution(0.1);
    EXPECT_EQ(table.registerMaterial(&own), rubber);
    EXPECT_EQ(table.registerMaterial(rubber), rubber);
    EXPECT_EQ(rubber->getRestitution(), 0.9);
    EXPECT_EQ(table.getContactMaterial(&own, rubber), nullptr); // own is of no table
    EXPECT_EQ(capture.take(), "");

    HyMaterial* odd = table.registerMaterial("a/b");
    EXPECT_EQ(odd->getName(), "a_b");
    EXPECT_EQ(table.registerMaterial("a/b"), odd);
    EXPECT_EQ(table.registerMaterial(static_cast<const HyMaterial*>(nullptr)), nullptr);
    EXPECT_EQ(table.registerMaterial(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(table.registerMaterial(""), nullptr);
    EXPECT_EQ(table.getMaterial("steel"), nullptr);
    EXPECT_EQ(table.getMaterial(-1), nullptr);
    EXPECT_EQ(table.getMaterial(4), nullptr);
    EXPECT_EQ(table.getMaterialCount(), 4);
}

TEST(HyMaterialTableTest, ExtensionNamesItsMaterialsApart) {
    MessageCapture capture;
    HyMaterialTable table;
    HyBase::resetHyBaseCounter(); // so that default names repeat
    table.extendContactPropertyTable(4);
    HyBase::resetHyBaseCounter();
    table.extendContactPropertyTable(7);
    EXPECT_EQ(capture.take(), "");
    table.extendContactPropertyTable(2);
    table.extendContactPropertyTable(-1);
    table.extendContactPropertyTable(std::numeric_limits<int>::max());
    EXPECT_NE(capture.take(), "");
    ASSERT_EQ(table.getMaterialCount(), 7);
    for (int i = 0; i < 7; ++i) {
        HyMaterial* material = table.getMaterial(i);
        EXPECT_EQ(material->getIndex(), i);
        EXPECT_EQ(table.getMaterial(material->getName().c_str()), material);
        for (int j = 0; j < 7; ++j)
            EXPECT_EQ(table.getContactMaterial(i, j)->getName(),
                      table.getMaterial(std::min(i, j))->getName() + "+" +
                          table.getMaterial(std::max(i, j))->getName());
    }
    EXPECT_EXIT((void)table.getContactMaterial(3, 7), testing::ExitedWithCode(1),
                "HySymmetricTable::getEntry: invalid index \\(3,7\\)");
}

// Of two different models, which one brings its numbers; '=' where the models are the same. In the
// order of FrictionModel: box, scaled, low, high, fast, neutral, none.
constexpr const char* kWinner[7] = {"=222212", "1=22112", "11=1112", "112=112",
                                    "1222=12", "22222=2", "111111="};

TEST(HyMaterialTableTest, MergesFrictionByTheTableOfModels) {
    const auto axis = Base::kFrictionAxisAngularPrimary; // any; axes are independent
    for (int model1 = 0; model1 < 7; ++model1)
        for (int model2 = 0; model2 < 7; ++model2) {
            SCOPED_TRACE(testing::Message() << model1 << ' ' << model2);
            HyMaterial m1, m2;
            const auto fill = [&](HyMaterial& m, int model, HyReal mu, HyReal slip, HyReal slide) {
                m.setFrictionModel(axis, static_cast<Base::FrictionModel>(model));
                m.setFrictionCoefficient(axis, mu);
                m.setBoxFrictionForce(axis, 10 * mu);
                m.setStaticFrictionScale(axis, 1 + mu);
                m.setSlip(axis, slip);
                m.setSlide(axis, slide);
            };
            fill(m1, model1, 0.25, 0.5, -2);
            fill(m2, model2, 0.75, 0.125, -4);
            const HyContactMaterial merged(&m1, &m2);
            const char winner = kWinner[model1][model2];
            const HyReal mu = winner == '2' ? 0.75 : 0.25; // the smaller where they are alike
            EXPECT_EQ(merged.getFrictionModel(axis), winner == '2' ? model2 : model1);
            EXPECT_EQ(merged.getFrictionCoefficient(axis), mu);
            EXPECT_EQ(merged.getBoxFrictionForce(axis), 10 * mu);
            EXPECT_EQ(merged.getStaticFrictionScale(axis), 1 + mu);
            EXPECT_EQ(merged.getSlip(axis), winner == '2' ? 0.125 : 0.5);
            EXPECT_EQ(merged.getSlide(axis), -2);
            EXPECT_EQ(merged.getFrictionModel(Base::kFrictionAxisLinear), Base::kFrictionModelNone);
        }
}

TEST(HyMaterialTableTest, MergesTheNormalDirectionByTheSofterSide) {
    struct Case {
        HyReal compliance1, compliance2;
        int winner;
    };
    for (const Case& c : {Case{0, 0, 2}, Case{1e-6, 0, 1}, Case{0, 1e-6, 2}, Case{2e-6, 2e-6, 2},
                          Case{2e-6, 1e-6, 1}}) {
        HyMaterial m1, m2;
        m1.setCompliance(c.compliance1);
        m1.setDamping(10);
        m1.setRestitution(0.1);
        m1.setVelThreshold(1);
        m1.setMaxAdhesiveForce(7);
        m2.setCompliance(c.compliance2);
        m2.setRestitution(0.2);
        m2.setVelThreshold(2);
        m2.setMaxAdhesiveForce(5);
        const HyContactMaterial merged(&m1, &m2);
        EXPECT_EQ(merged.getCompliance(), std::max(c.compliance1, c.compliance2));
        EXPECT_EQ(merged.getDamping(), c.winner == 1 ? 10 : 0);
        EXPECT_EQ(merged.getRestitution(), 0.1 * c.winner);
        EXPECT_EQ(merged.getVelThreshold(), c.winner);
        EXPECT_EQ(merged.getMaxAdhesiveForce(), 7);
        const bool soft = merged.getCompliance() != 0 || merged.getDamping() != 0;
        EXPECT_EQ(merged.getValue().options, soft ? 4 : 0);
    }
    // Neutral, deactivated, activated, never.
    const char* kActivated[4] = {"0010", "0010", "1110", "0000"};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            HyMaterial m1, m2;
            m1.setIntegratedSlipDisplacement(
                static_cast<HyMaterial::IntegratedSlipDisplacement>(i));
            m2.setIntegratedSlipDisplacement(
                static_cast<HyMaterial::IntegratedSlipDisplacement>(j));
            EXPECT_EQ(HyContactMaterial(&m1, &m2).getIntegratedSlipDisplacementActivated(),
                      kActivated[i][j] == '1');
        }
}

TEST(HyMaterialTableTest, FirstEditLocksAndUnlockingDropsIt) {
    HyMaterialTable table;
    HyMaterial* ice = table.registerMaterial("ice");
    HyContactMaterial* pair = table.getContactMaterial(ice, nullptr);
    ice->setName("snow");
    EXPECT_EQ(pair->getName(), "default+snow");
    pair->setFrictionCoefficient(Base::kFrictionAxisLinear, 0.3);
    EXPECT_TRUE(pair->isLocked());
    ice->setMaxAdhesiveForce(5);
    EXPECT_EQ(pair->getMaxAdhesiveForce(), 0);
    EXPECT_EQ(table.getContactMaterial(ice, ice)->getMaxAdhesiveForce(), 5);
    pair->update(true); // merges, and stays locked
    EXPECT_EQ(pair->getMaxAdhesiveForce(), 5);
    EXPECT_TRUE(pair->isLocked());
    pair->setFrictionCoefficient(Base::kFrictionAxisLinear, 0.3);
    pair->setLocked(false);
    EXPECT_EQ(pair->getFrictionCoefficient(Base::kFrictionAxisLinear), 0);
    pair->setAutomaticLocking(false);
    pair->setRestitution(0.9);
    EXPECT_FALSE(pair->isLocked());
    ice->setRestitution(0.2);
    EXPECT_EQ(pair->getRestitution(), 0.2);

    HyContactMaterial own;
    own.setDamping(4);
    EXPECT_TRUE(table.setContactMaterial(ice, ice, &own));
    EXPECT_TRUE(table.getContactMaterial(ice, ice)->isLocked());
    EXPECT_EQ(table.getContactMaterial(ice, ice)->getDamping(), 4);
    EXPECT_EQ(table.getContactMaterial(ice, ice)->getName(), "snow+snow");
    HyMaterial foreign;
    EXPECT_FALSE(table.setContactMaterial(&foreign, ice, &own));
    EXPECT_FALSE(table.setContactMaterial(ice, ice, nullptr));
}

void addRestitutions(const HyMaterial* m1, const HyMaterial* m2, HyContactMaterial* pair) {
    pair->setRestitution(m1->getRestitution() + m2->getRestitution());
}

TEST(HyMaterialTableTest, AnotherRuleMayMerge) {
    HyMaterialTable::setMergeMaterialFn(addRestitutions);
    HyMaterialTable table;
    HyMaterial* ice = table.registerMaterial("ice");
    ice->setRestitution(0.25);
    EXPECT_EQ(table.getContactMaterial(ice, ice)->getRestitution(), 0.5);
    EXPECT_FALSE(table.getContactMaterial(ice, ice)->isLocked());
    HyMaterialTable::setMergeMaterialFn(nullptr);
    ice->setRestitution(0.25);
    EXPECT_EQ(table.getContactMaterial(ice, ice)->getRestitution(), 0.25);
}

TEST(HyMaterialTableTest, MergeTakesMaterialsByNameAndLockedPairs) {
    HyMaterialTable here, there;
    here.registerMaterial("wood");
    here.registerMaterial("ice")->setRestitution(0.1);
    there.registerMaterial("ice")->setRestitution(0.9);
    there.registerMaterial("iron")->setMaxAdhesiveForce(3);
    there.getContactMaterial(1, 2)->setDamping(8);
    there.getContactMaterial(1, 2)->setLocked(true);
    here.merge(&there);
    here.merge(&here);
    EXPECT_EQ(here.getMaterialCount(), 4);
    EXPECT_EQ(here.getMaterial("ice")->getIndex(), 2);
    EXPECT_EQ(here.getMaterial("ice")->getRestitution(), 0.9);
    EXPECT_EQ(here.getMaterial("iron")->getMaxAdhesiveForce(), 3);
    EXPECT_TRUE(here.getContactMaterial(2, 3)->isLocked());
    EXPECT_EQ(here.getContactMaterial(2, 3)->getDamping(), 8);
    EXPECT_FALSE(here.getContactMaterial(1, 3)->isLocked());
    EXPECT_EQ(here.getContactMaterial(1, 3)->getMaxAdhesiveForce(), 3);
    MessageCapture capture;
    here.merge(nullptr);
    EXPECT_NE(capture.take(), "");
}

TEST(HyMaterialTableTest, ClearedTableAnswersNothing) {
    HyMaterialTable table;
    const HySmartPtr<HyMaterial> kept = table.registerMaterial("kept");
    HyContactProperties* properties = table.getContactProperties(kept.get(), nullptr);
    properties->setDamping(2);
    EXPECT_EQ(table.getContactMaterial(0, 1)->getDamping(), 2);
    EXPECT_EQ(table.getContactProperties(nullptr, kept.get()), properties);
    table.clear(false);
    EXPECT_EQ(kept->getIndex(), -1);
    EXPECT_EQ(table.getContactMaterial(nullptr, nullptr), nullptr);
    EXPECT_EQ(table.getDefaultMaterial(), nullptr);
    EXPECT_EQ(table.registerMaterial("first")->getIndex(), 0);
    table.clear(true);
    EXPECT_EQ(table.getMaterial(0)->getName(), "default");
    kept->setRestitution(1); // nothing follows it any more
}

// A table beside a list of plain numbers, through random calls.
class TableModel {
public:
    struct Entry {
        std::string name;
        HyReal compliance, restitution, slide;
        bool used;
    };
    std::vector<Entry> materials{{"default", 0, 0, 0, false}};
    std::map<std::pair<std::string, std::string>, HyReal> locked; ///< restitution by names

    void remove(std::size_t index) {
        const std::string name = materials[index].name;
        std::erase_if(locked, [&](const auto& pair) {
            return pair.first.first == name || pair.first.second == name;
        });
        materials.erase(materials.begin() + static_cast<std::ptrdiff_t>(index));
    }
    void compare(const HyMaterialTable& table) const {
        ASSERT_EQ(table.getMaterialCount(), static_cast<int>(materials.size()));
        for (std::size_t i = 0; i < materials.size(); ++i)
            for (std::size_t j = i; j < materials.size(); ++j)
                comparePair(table, i, j);
    }

private:
    void comparePair(const HyMaterialTable& table, std::size_t i, std::size_t j) const {
        const Entry &a = materials[i], &b = materials[j];
        const HyMaterial* m1 = table.getMaterial(a.name.c_str());
        ASSERT_TRUE(m1);
        ASSERT_EQ(m1->getIndex(), static_cast<int>(i));
        const HyContactMaterial* pair =
            table.getContactMaterial(table.getMaterial(b.name.c_str()), m1);
        ASSERT_EQ(pair, table.getContactMaterial(static_cast<int>(i), static_cast<int>(j)));
        ASSERT_EQ(pair->getName(), a.name + "+" + b.name);
        const auto edit = locked.find({a.name, b.name});
        ASSERT_EQ(pair->isLocked(), edit != locked.end());
        const HyReal merged = a.compliance > b.compliance ? a.restitution : b.restitution;
        ASSERT_EQ(pair->getRestitution(), edit != locked.end() ? edit->second : merged);
        if (!pair->isLocked()) {
            ASSERT_EQ(pair->getSlide(Base::kFrictionAxisLinear), std::max(a.slide, b.slide));
        }
    }
};

TEST(HyMaterialTableTest, FollowsAPlainModelThroughRandomCalls) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    HyMaterialTable table;
    TableModel model;
    HyBase user;
    int named = 0;
    for (int call = 0; call < 1500; ++call) {
        const auto pick = [&] { return random() % model.materials.size(); };
        const std::size_t i = pick(), j = std::max(i, pick());
        HyMaterial* material = table.getMaterial(static_cast<int>(i));
        HyContactMaterial* pair =
            table.getContactMaterial(static_cast<int>(i), static_cast<int>(j));
        TableModel::Entry& entry = model.materials[i];
        const HyReal value = static_cast<HyReal>(random() % 4);
        switch (random() % 8) {
        case 0:
            if (model.materials.size() < 12) {
                TableModel::Entry fresh = model.materials[0];
                fresh.name = "m" + std::to_string(named++);
                fresh.used = false;
                table.registerMaterial(fresh.name.c_str());
                model.materials.push_back(fresh);
            }
            break;
        case 1: {
            const bool removable = i != 0 && !entry.used;
            ASSERT_EQ(table.removeMaterial(material), removable);
            if (removable)
                model.remove(i);
            break;
        }
        case 2:
            material->setCompliance(entry.compliance = value);
            break;
        case 3:
            material->setRestitution(entry.restitution = value);
            break;
        case 4:
            material->setSlide(Base::kFrictionAxisLinear, entry.slide = value - 2);
            break;
        case 5:
            pair->setRestitution(value);
            model.locked[{entry.name, model.materials[j].name}] = value;
            break;
        case 6:
            pair->setLocked(false);
            model.locked.erase({entry.name, model.materials[j].name});
            break;
        case 7:
            entry.used = !entry.used;
            entry.used ? material->registerUsage(&user) : material->unregisterUsage(&user);
            break;
        }
        ASSERT_NO_FATAL_FAILURE(model.compare(table)) << "call " << call;
    }
    HyMaterial foreign;
    EXPECT_FALSE(table.removeMaterial(&foreign));
    EXPECT_FALSE(table.removeMaterial(nullptr));
}

TEST(HyMaterialTableTest, DumpTellsMaterialsThenPairs) {
    HyMaterialTable table;
    table.registerMaterial("ice");
    const auto path = std::filesystem::temp_directory_path() / "HyMaterialTableTest.txt";
    table.dump(path.c_str());
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::filesystem::remove(path);
    std::size_t at = 0;
    for (const std::string piece :
         {"====== Beginning the material table ========= \n\nNumber of registred material "
          "2\n\nName: "
          "                       default\t\t ID =     0\n\nrestitution  ",
          "integrated displacement: \t Neutral \nName:                            ice\t\t ID =     "
          "1\n\n",
          "====== Material table Entries ========= \n\n\nentry (  0,   0)             default      "
          "default     :\n",
          "This material doesn't have a tire model\n\nentry (  0,   1)             default      "
          "ice         :\n",
          "\nentry (  1,   1)             ice          ice         :\n"}) {
        at = text.find(piece, at);
        ASSERT_NE(at, std::string::npos) << piece << "\nin\n" << text;
    }
}

using HyUniverseMaterialTest = FrameFixture;

TEST_F(HyUniverseMaterialTest, UniverseHasATableOfItsOwnOrSharesOne) {
    HyUniverse own(2, 2, nullptr);
    HyMaterial* ice = own.getMaterialTable()->registerMaterial("ice");
    EXPECT_EQ(own.getMaterial("ice"), ice);
    EXPECT_EQ(own.getContactMaterial(ice, nullptr),
              own.getMaterialTable()->getContactMaterial(0, 1));

    HyMaterialTable shared;
    {
        HyUniverse other(2, 2, &shared);
        EXPECT_EQ(other.getMaterialTable(), &shared);
        own.setMaterialTable(&shared);
        own.setMaterialTable(&shared);
        EXPECT_EQ(own.getMaterialTable(), &shared);
    }
    own.setMaterialTable(nullptr);
    EXPECT_TRUE(warned("HyUniverse::setMaterialTable"));
    EXPECT_EQ(own.getMaterial("default"), shared.getDefaultMaterial());
}

} // namespace
} // namespace Hy
