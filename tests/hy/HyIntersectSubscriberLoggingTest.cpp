#include "MessageCapture.h"

#include <Hy/Hy.h>
#include <Hy/HyInternalIDIntersectSubscriber.h>
#include <Hy/HyIntersectSubscriberLogging.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using namespace Hy;

namespace {

namespace fs = std::filesystem;

const HySequentialID& floorID() {
    static const HySequentialID id("floor of the log's scene");
    return id;
}

const HySequentialID& ballID() {
    static const HySequentialID id("ball of the log's scene");
    return id;
}

class ContactScene : public testing::Test {
protected:
    ContactScene()
        : universe(HyFrame::instance()->getUniverse()),
          folder(fs::temp_directory_path() / ("halcyr_log." + std::to_string(::getpid()))) {
        fs::create_directories(folder);
        ground = part(0, HyPart::kControlStatic, floorID());
        ball = part(0.99, HyPart::kControlDynamic, ballID());
        other = part(0.99, HyPart::kControlDynamic, ballID());
        other->setPosition(HyVector3(3, 0, 0.99));
    }
    ~ContactScene() override {
        HyFrame::release();
        fs::remove_all(folder);
    }
    HyPart* part(HyReal height, HyPart::EntityControlTypeEnum control, const HySequentialID& id) {
        auto* made = new HyPart(1);
        made->setControl(control);
        HyGeometry* shape = control == HyPart::kControlStatic
                                ? static_cast<HyGeometry*>(new HyBox(10, 10, 1))
                                : new HySphere(0.5);
        shape->setName(control == HyPart::kControlStatic ? "floor" : "ball");
        auto* geometry = new HyCollisionGeometry(shape);
        geometry->collisionGeometryID() = id;
        made->addCollisionGeometry(geometry);
        made->setPosition(HyVector3(0, 0, height));
        universe.addPart(made);
        return made;
    }
    std::string config(const std::string& text) {
        const fs::path path = folder / "config.txt";
        std::ofstream(path) << text;
        return path.string();
    }
    std::string read(const fs::path& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    fs::path onlyLog(const std::string& pattern) {
        fs::path found;
        for (const auto& entry : fs::directory_iterator(folder))
            if (testing::Value(entry.path().filename().string(), testing::MatchesRegex(pattern)))
                found = entry.path();
        return found;
    }

    HyUniverse& universe;
    fs::path folder;
    HyPart *ground, *ball, *other;
};

TEST_F(ContactScene, LoggingFollowsItsConfiguration) {
    struct Case {
        const char *name, *level, *pattern, *line;
    };
    const Case cases[] = {
        {"touch.log", "detail_level: terse", R"(touch[0-9]+\.log)",
         R"(0\.[0-9]{6}, .*(floor|ball).*(floor|ball).*, 2nd order, (None|[0-9] directions?))"},
        {"no.dots/touch", "detail_level: 7", R"(no_file)", ""},
        {"plain", "detail_level: wordy", R"(plain[0-9]+)",
         R"(.*, 2nd order, +0\.000000, +0\.000000, (None|[0-9] direction.*)(, +[0-9.e-]+){5}, +[0-9]+)"},
        {"two", "", R"(two[0-9]+)", R"(.*(, +[0-9.e-]+){5}, +[0-9]+)"},
        {"digit.a.b", "detail_level: 2", R"(digit\.a[0-9]+\.b)", R"(.*, 2nd order, [^,]*)"},
    };
    for (const Case& c : cases) {
        MessageCapture messages;
        HyIntersectSubscriberLogging logging(
            config("filename: " + (folder / c.name).string() + "\n" + c.level + "\n").c_str());
        if (!*c.line) { // its folder is not there
            EXPECT_FALSE(logging.isValid());
            EXPECT_EQ(logging.registerLogging(&universe), 1);
            continue;
        }
        ASSERT_TRUE(logging.isValid()) << c.name;
        EXPECT_EQ(logging.registerLogging(nullptr), 2);
        EXPECT_EQ(logging.registerLogging(&universe), 0);
        HyFrame::instance()->step();
        EXPECT_EQ(logging.unregisterLogging(&universe), 0);
        HyFrame::instance()->step();
        logging.setEnableLogging(false);
        std::fflush(nullptr);
        const std::string text = read(onlyLog(c.pattern));
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << c.name << "\n" << text;
        const std::string line = text.substr(0, text.find('\n'));
        EXPECT_NE(line.find("floor"), std::string::npos) << line;
        EXPECT_THAT(line, testing::MatchesRegex(c.line)) << c.name;
    }
}

TEST_F(ContactScene, LoggingRefusesBadConfigurations) {
    MessageCapture messages;
    for (const char* path : {"", "no such file"})
        EXPECT_FALSE(HyIntersectSubscriberLogging(path).isValid());
    EXPECT_FALSE(HyIntersectSubscriberLogging(nullptr).isValid());
    EXPECT_FALSE(HyIntersectSubscriberLogging(config("detail_level: terse").c_str()).isValid());
    EXPECT_FALSE(HyIntersectSubscriberLogging(config("filename: ").c_str()).isValid());
    // A name beyond its room is cut, not written beyond.
    EXPECT_FALSE(
        HyIntersectSubscriberLogging(config("filename: /" + std::string(9000, 'x')).c_str())
            .isValid());
}

/// Writes down its name when it is told.
struct Teller : HyIntersectSubscriber {
    Teller(std::string& text, char letter) : log(text), name(letter) {}
    void notifyDisjoint(eIntersectEventType, HyIntersectResult*) override { log += name; }
    void notifyIntersect(eIntersectEventType, HyIntersectResult*,
                         HyDynamicsResponseInput*) override {
        log += name;
    }
    std::string& log;
    char name;
};

TEST_F(ContactScene, SubscribersByGeometryIdAreToldInOrder) {
    std::string log;
    Teller one(log, '1'), two(log, '2'), pair(log, 'p'), same(log, 's');
    HyInternalIDIntersectSubscriber router;
    universe.addIntersectSubscriber(0, 0, kEventFirst, &router);
    universe.addIntersectSubscriber(0, 0, kEventDisjoint, &router);
    for (const eIntersectEventType event : {kEventFirst, kEventDisjoint}) {
        router.addIntersectSubscriber(floorID(), event, &one);
        router.addIntersectSubscriber(ballID(), event, &two);
        router.addIntersectSubscriber(ballID(), event, &two); // is there
        router.addIntersectSubscriber(ballID(), floorID(), event, &pair);
        router.addIntersectSubscriber(ballID(), ballID(), event, &same);
    }
    HyFrame::instance()->step();
    ASSERT_EQ(log.size(), 6u); // two balls on the floor
    EXPECT_EQ(log[2], 'p');
    EXPECT_EQ(std::count(log.begin(), log.end(), '1'), 2);
    EXPECT_EQ(std::count(log.begin(), log.end(), '2'), 2);

    log.clear();
    EXPECT_TRUE(router.removeIntersectSubscriber(floorID(), kEventDisjoint, &one));
    EXPECT_FALSE(router.removeIntersectSubscriber(floorID(), kEventDisjoint, &one));
    universe.destroyPart(ball);
    EXPECT_EQ(log, "2p");

    log.clear(); // of equal ids the list of one is told once
    part(4.99, HyPart::kControlDynamic, ballID());
    part(5.9, HyPart::kControlDynamic, ballID());
    HyFrame::instance()->step();
    EXPECT_EQ(log, "2s");
    universe.removeIntersectSubscriber(0, 0, kEventFirst, &router);
    universe.removeIntersectSubscriber(0, 0, kEventDisjoint, &router);
}

} // namespace
