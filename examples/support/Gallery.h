#pragma once
#include <Hy/Hy.h>
#include <Kit/KitProfile.h>
#include <Rec/HyChannels.h>
#include <Rec/HyRecorder.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

/// What an example shows of its run. With the arguments "--gallery FOLDER" the run is recorded, and at
/// the end FOLDER holds NAME.glb, NAME.csv, NAME.json (expected against measured) and NAME.trace.json.
/// Without them nothing happens.
class Gallery {
public:
    /// Takes its arguments away from the program's.
    Gallery(int& argc, char** argv) {
        for (int i = 1; i + 1 < argc; ++i) {
            if (std::strcmp(argv[i], "--gallery") != 0)
                continue;
            const char* slash = std::strrchr(argv[0], '/');
            mPath = std::string(argv[i + 1]) + '/' + (slash ? slash + 1 : argv[0]);
            std::rotate(argv + i, argv + i + 2, argv + argc + 1);
            argc -= 2;
        }
        KitProfileSetEnabled(isWanted());
    }
    Gallery(const Gallery&) = delete;
    Gallery& operator=(const Gallery&) = delete;
    ~Gallery() {
        if (!mRecorder)
            return;
        KitProfileSetEnabled(false);
        mRecorder->write((mPath + ".glb").c_str());
        if (channels.getChannelCount() > 0)
            channels.writeCsv((mPath + ".csv").c_str());
        KitProfileWriteTrace((mPath + ".trace.json").c_str());
        writeFacts();
    }

    [[nodiscard]] bool isWanted() const { return !mPath.empty(); }
    /// Records a universe from its next step on; channels are added before it.
    void watch(Hy::HyUniverse& universe,
               const Hy::HyRecorder::Options& options = {.rate = 60, .forces = true}) {
        if (!isWanted())
            return;
        mRecorder = std::make_unique<Hy::HyRecorder>(&universe, options);
        mRecorder->setChannels(&channels);
    }
    /// Gives a part that has no shape one to be seen by, which neither collides nor weighs.
    static void dress(Hy::HyPart& part, Hy::HyGeometry* shape,
                      const Hy::HyVector3& place = Hy::HyVector3()) {
        auto* seen = new Hy::HyCollisionGeometry(shape);
        seen->setTransformRelative(Hy::HyTransform(place));
        seen->setCollisionEnabled(false);
        seen->setMassEnabled(false);
        part.addCollisionGeometry(seen);
    }
    /// Ends the recording, for a part of a run that is not to be shown.
    void stop() {
        if (mRecorder)
            mRecorder->stop();
    }
    void expect(const char* name, const char* unit, double expected, double measured) {
        mFacts += std::string(mFacts.empty() ? "" : ",\n") + "  {\"name\": \"" + name +
                  "\", \"unit\": \"" + unit + "\", \"expected\": " + number(expected) +
                  ", \"measured\": " + number(measured) + '}';
    }
    void measure(const char* name, const char* unit, double measured) {
        expect(name, unit, std::numeric_limits<double>::quiet_NaN(), measured);
    }

    Hy::HyChannels channels;

private:
    static std::string number(double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", value);
        return std::isfinite(value) ? text : "null";
    }
    void writeFacts() const {
        const std::string path = mPath + ".json";
        std::FILE* file = std::fopen(path.c_str(), "w");
        if (!file) {
            std::fprintf(stderr, "%s cannot be written\n", path.c_str());
            return;
        }
        std::fprintf(file, "[\n%s\n]\n", mFacts.c_str());
        std::fclose(file);
    }

    std::string mPath; ///< without suffix; empty: not wanted
    std::string mFacts;
    std::unique_ptr<Hy::HyRecorder> mRecorder;
};
