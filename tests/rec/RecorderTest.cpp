#include "GlbReader.h"
#include "hy/MessageCapture.h"
#include "support/HeapCounter.h"

#include <Hy/Hy.h>
#include <Rec/HyChannels.h>
#include <Rec/HyRecorder.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/resource.h>

using namespace Hy;

namespace {

constexpr HyReal kStep = 1.0 / 60; // s

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct RecorderTest : testing::Test {
    RecorderTest() : universe(HyFrame::instance()->getUniverse()) {
        folder =
            std::filesystem::temp_directory_path() /
            ("halcyr_rec_" + std::to_string(std::hash<std::string>{}(
                                 testing::UnitTest::GetInstance()->current_test_info()->name())));
        std::filesystem::create_directories(folder);
    }
    ~RecorderTest() override {
        HyFrame::release();
        std::filesystem::remove_all(folder);
    }

    HyPart& addPart(const char* name, HyGeometry* geometry, const HyVector3& position) {
        auto* part = new HyPart(2);
        part->setName(name);
        if (geometry)
            part->addCollisionGeometry(new HyCollisionGeometry(geometry));
        part->setPosition(position);
        universe.addPart(part);
        return *part;
    }
    HyPart& addGround() {
        HyPart& ground = addPart("ground", new HyPlane, {});
        ground.setControl(HyPart::kControlStatic);
        return ground;
    }
    std::string path(const char* name) const { return (folder / name).string(); }

    HyUniverse& universe;
    MessageCapture messages;
    std::filesystem::path folder;
};

/// Vertical force of the contacts within 1 m of a place in a sample, N.
double supportAt(const GlbReader& file, std::size_t step, double x, double y) {
    const auto& extras = file.json["scenes"][0]["extras"]["forces"];
    const std::string bytes = file.bytes(extras["bufferView"].get<std::size_t>());
    double sum = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 32) {
        std::uint32_t sample = 0;
        float value[7];
        std::memcpy(&sample, bytes.data() + at, 4);
        std::memcpy(value, bytes.data() + at + 4, sizeof value);
        if (sample == step && value[6] == 0 &&
            std::hypot(static_cast<double>(value[0]) - x, static_cast<double>(value[1]) - y) < 1)
            sum += static_cast<double>(value[5]);
    }
    return std::abs(sum); // on the first part, which may be the ground
}

/// No file may grow beyond 100 bytes meanwhile.
bool writeOnFullDisk(const HyRecorder& recorder, const char* path) {
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit full{.rlim_cur = 100, .rlim_max = old.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    const bool isWritten = recorder.write(path);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    return isWritten;
}

} // namespace

// A file is played back beside the run that it was made of: a part that flies and spins fast, one that
// falls and comes to rest, a wheel that turns evenly, one that joins late and one that leaves.
TEST_F(RecorderTest, FileGivesBackThePosesOfTheRun) {
    const HyVector3 origin(1e6, -2e6, 0); // far from the world's own
    addGround();
    HyPart& spinning = addPart("spinning", new HyCapsule(0.2, 0.6), origin + HyVector3(0, 0, 5));
    spinning.setAngularVelocity({3, 11, -2});
    spinning.setLinearVelocity({2, 0, 4});
    HyPart& resting = addPart("resting", new HyBox(1, 0.5, 0.4), origin + HyVector3(3, 0, 0.7));
    HyPart& wheel = addPart("wheel", new HySphere(0.5), origin + HyVector3(0, 9, 4));
    wheel.setAngularVelocity({0, 9, 0}); // by many turns, and the file keeps few keys of it
    addPart("leaving \x80", nullptr, origin + HyVector3(-3, 0, 3));
    HyPart& leaving = **(universe.getParts().end() - 1);

    HyRecorder recorder(&universe, {.origin = origin, .forces = true});
    std::vector<HyTransform> poses[3];
    const auto keep = [&] {
        poses[0].push_back(spinning.getTransform());
        poses[1].push_back(resting.getTransform());
        poses[2].push_back(wheel.getTransform());
    };
    constexpr std::size_t kSteps = 150, kLeaves = 40, kComes = 70, kSwells = 90;
    keep();
    for (std::size_t step = 1; step <= kSteps; ++step) {
        if (step == kLeaves)
            universe.destroyPart(&leaving);
        if (step == kComes)
            addPart("coming", new HySphere(0.3), origin + HyVector3(0, 4, 3));
        if (step == kSwells) // a thing of another shape is another node
            static_cast<HySphere*>((*wheel.getCollisionGeometries().begin())->getGeometry())
                ->setRadius(0.6);
        HyFrame::instance()->step();
        keep();
    }
    EXPECT_EQ(recorder.getSampleCount(), kSteps + 1);
    EXPECT_NEAR(recorder.getDuration(), kSteps * kStep, 1e-9);
    ASSERT_TRUE(recorder.write(path("run.glb").c_str()));

    const GlbReader file(readFile(path("run.glb")));
    const std::size_t nodes[3] = {file.nodeOf("spinning"), file.nodeOf("resting"),
                                  file.nodeOf("wheel")};
    for (std::size_t step = 0; step <= kSteps; ++step) {
        for (int which = 0; which < (step < kSwells ? 3 : 2); ++which) {
            const GlbReader::Pose pose =
                file.poseAt(nodes[which], static_cast<double>(step) * kStep);
            const HyTransform& truth = poses[which][step];
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(pose.position[i],
                            truth.t()[static_cast<int>(i)] - origin[static_cast<int>(i)], 1.2e-4);
            const HyQuaternion q(truth);
            const HyReal truthXyzw[4] = {q.x(), q.y(), q.z(), q.w()};
            HyReal same = 0, opposite = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                same += std::pow(pose.rotation[i] - truthXyzw[i], 2);
                opposite += std::pow(pose.rotation[i] + truthXyzw[i], 2);
            }
            EXPECT_LT(2 * std::sqrt(std::min(same, opposite)), 2e-4) << step; // rad
        }
    }
    const auto isThere = [&](const char* name, std::size_t step) {
        return file.poseAt(file.nodeOf(name), (static_cast<double>(step) + 0.01) * kStep).scale ==
               1;
    };
    EXPECT_TRUE(isThere("leaving ?", 0) && isThere("leaving ?", kLeaves - 1));
    EXPECT_FALSE(isThere("leaving ?", kLeaves));
    EXPECT_FALSE(isThere("coming", 0) || isThere("coming", kComes - 1));
    EXPECT_TRUE(isThere("coming", kComes) && isThere("coming", kSteps));
    EXPECT_TRUE(isThere("spinning", kLeaves));
    EXPECT_TRUE(isThere("wheel", kSwells - 1));
    EXPECT_FALSE(isThere("wheel", kSwells));
    EXPECT_EQ(std::count_if(file.json["nodes"].begin(), file.json["nodes"].end(),
                            [](const auto& node) { return node.value("name", "") == "wheel"; }),
              2);

    const auto& extras = file.json["scenes"][0]["extras"];
    EXPECT_EQ(extras["origin"][0], 1e6);
    EXPECT_NEAR(supportAt(file, 60, 3, 0), 2 * 9.80665, 0.2); // N; it comes to rest
    // What rests for a second needs few keys.
    for (const auto& channel : file.json["animations"][0]["channels"]) {
        if (channel["target"]["node"] == nodes[1]) {
            const auto& sampler =
                file.json["animations"][0]["samplers"][channel["sampler"].get<std::size_t>()];
            EXPECT_LT(file.numbers(sampler["input"]).size(), kSteps / 2);
        }
    }
}

TEST_F(RecorderTest, BytesAreAFunctionOfTheRunAndSteadyStepsMakeNoHeapCall) {
    std::string files[2];
    for (std::string& file : files) {
        HyUniverse& fresh = *new HyUniverse(100, 1000, nullptr);
        HyFrame::instance()->addUniverse(&fresh);
        for (int i = 0; i < 20; ++i) {
            auto* part = new HyPart(1);
            part->setName(std::to_string(i).c_str());
            part->addCollisionGeometry(new HyCollisionGeometry(new HyBox(0.5, 0.5, 0.5)));
            part->setPosition(HyVector3(i, 0, 2));
            part->setAngularVelocity(HyVector3(1, i, 2));
            fresh.addPart(part);
        }
        HyRecorder recorder(&fresh, {.rate = 30});
        HyChannels channels;
        channels.add("height", "m",
                     [&fresh] { return (*fresh.getParts().begin())->getPosition()[2]; });
        recorder.setChannels(&channels);
        for (int step = 0; step < 30; ++step)
            HyFrame::instance()->step();
        const long before = HeapCounter::calls();
        for (int step = 0; step < 100; ++step)
            HyFrame::instance()->step();
        EXPECT_EQ(HeapCounter::calls() - before, 0);
        EXPECT_EQ(recorder.getSampleCount(), 66U);
        ASSERT_TRUE(recorder.write(path("run.glb").c_str()));
        file = readFile(path("run.glb"));
        HyFrame::instance()->removeUniverse(&fresh);
        delete &fresh;
    }
    EXPECT_TRUE(files[0] == files[1]);
    // All boxes share one shape: 24 corners of two vectors.
    const GlbReader file(files[0]);
    EXPECT_EQ(file.json["bufferViews"][0]["byteLength"], 24 * 2 * 12);
}

TEST_F(RecorderTest, BadInputLeavesAValidRecording) {
    HyPart& part = addPart("part", new HySphere(0.5), {0, 0, 1});
    {
        HyRecorder none(nullptr);
        EXPECT_FALSE(none.isRecording() || none.write(path("none.glb").c_str()));
    }
    HyRecorder capped(&universe, {.memoryCap = 1}); // one chunk of 63 samples
    HyRecorder odd(&universe, {.rate = -1, .origin = HyVector3(NAN, 0, 0)});
    for (int step = 0; step < 10; ++step)
        HyFrame::instance()->step();
    odd.pause(true);
    for (int step = 0; step < 80; ++step)
        HyFrame::instance()->step();
    odd.pause(false);
    part.setPosition(HyVector3(1e300, 0, 0)); // no number of the file's
    HyFrame::instance()->step();
    EXPECT_FALSE(capped.isRecording());
    EXPECT_EQ(odd.getSampleCount(), 12U);
    odd.advance(-1);
    universe.destroyPart(&part);
    HyFrame::instance()->step();

    EXPECT_FALSE(odd.write(nullptr));
    EXPECT_FALSE(odd.write(path("no/such/folder.glb").c_str()));
    EXPECT_FALSE(odd.write(folder.string().c_str()));
    EXPECT_FALSE(odd.write("/dev/null"));
    EXPECT_FALSE(writeOnFullDisk(odd, path("full.glb").c_str()));
    HyFrame::release(); // and with it the universe
    EXPECT_FALSE(odd.isRecording());
    EXPECT_TRUE(odd.write(path("odd.glb").c_str()) && capped.write(path("capped.glb").c_str()));
    EXPECT_NEAR(GlbReader(readFile(path("capped.glb"))).poseAt(1, 10).position[2],
                1 - 9.80665 / 2 * std::pow(62 * kStep, 2), 0.2);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2); // no half files

    const std::string text = messages.take();
    for (const char* expected :
         {"HyRecorder: the universe must not be null.", "the recording ends.",
          "HyRecorder: the rate must be finite and not negative.",
          "HyRecorder: the origin must be finite.", "HyRecorder::advance: the time must be",
          "HyRecorder::write: the path must not be null or empty.", "cannot be written",
          "must be a file.", "the pose of \"part\" must be finite"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
}

TEST_F(RecorderTest, ChannelsMakeATableThatReadsBackToTheBit) {
    HyChannels channels;
    HyReal value = 0.1;
    EXPECT_TRUE(channels.add("power, \"net\"", "W", [&] { return value; }));
    EXPECT_TRUE(channels.add("count", nullptr, [&] { return -value; }));
    EXPECT_FALSE(channels.add("count", "1", [&] { return value; }));
    EXPECT_FALSE(channels.add("", "1", [&] { return value; }));
    EXPECT_FALSE(channels.add("nothing", "1", nullptr));
    channels.sample(0);
    value = 1.0 / 3;
    channels.sample(0.25);
    channels.sample(NAN);
    channels.sample(0.1);
    EXPECT_FALSE(channels.add("late", "1", [&] { return value; }));
    EXPECT_EQ(channels.getSampleCount(), 2U);
    EXPECT_TRUE(std::isnan(channels.getValue(2, 0)) && std::isnan(channels.getTime(2)));
    ASSERT_TRUE(channels.writeCsv(path("table.csv").c_str()));
    std::istringstream table(readFile(path("table.csv")));
    std::string title, first, second;
    std::getline(table, title);
    std::getline(table, first);
    std::getline(table, second);
    EXPECT_EQ(title, "time (s),\"power, \"\"net\"\" (W)\",count");
    double time = 0, a = 0, b = 0;
    ASSERT_EQ(std::sscanf(second.c_str(), "%lf,%lf,%lf", &time, &a, &b), 3);
    EXPECT_TRUE(time == 0.25 && a == value && b == -value);
}
