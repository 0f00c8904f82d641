#include <Rec/HyRecorder.h>

#include "RunDocument.h"
#include "RunShape.h"
#include "RunTrack.h"
#include "WholeFile.h"

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyQuaternion.h>
#include <Hy/HyStepperBase.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseObserver.h>
#include <Kit/KitProfile.h>
#include <Rec/HyChannels.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace Hy {

namespace {

/// Room for times is made at the start for the samples of a scene of this many moving parts and more.
constexpr std::size_t kFewParts = 8;

/// Of a step or of a sample's time.
constexpr double kClockTolerance = 1e-6;

/// The file's number for one of the simulation; what does not fit, or is none, becomes infinite.
float toFloat(HyReal value) {
    return std::abs(value) <= static_cast<HyReal>(std::numeric_limits<float>::max())
               ? static_cast<float>(value)
               : std::numeric_limits<float>::infinity();
}

/// False if a number does not fit.
bool toSample(const HyTransform& pose, const HyVector3& origin, RunSample& sample) {
    const HyQuaternion q(pose);
    const HyVector3 p = pose.t() - origin;
    const HyReal values[7] = {p[0], p[1], p[2], q.x(), q.y(), q.z(), q.w()};
    bool fits = true;
    for (int i = 0; i < 7; ++i) {
        sample.value[i] = toFloat(values[i]);
        fits = fits && std::isfinite(sample.value[i]);
    }
    return fits;
}

} // namespace

struct HyRecorder::Run : HyUniverseObserver {
    /// Calls at the end of each step of the frame, which owns it.
    class Stepper : public HyStepperBase {
    public:
        /// After all others.
        explicit Stepper(Run& run) : HyStepperBase(std::numeric_limits<int>::max()), mRun(run) {}
        ~Stepper() override { mRun.stepper = nullptr; }

    private:
        void preUpdateImpl() override { mRun.begin(); }
        void detectCollisionsImpl(HyReal) override {}
        void advanceKinematicsImpl(HyReal) override {}
        void solveDynamicsImpl(HyReal) override {}
        void revertDynamicsImpl() override {}
        void advanceDynamicsImpl(HyReal) override {}
        void postUpdateImpl() override { mRun.advance(HyFrame::currentInstance()->getTimeStep()); }

        Run& mRun;
    };

    /// What an actor shows: one of the two.
    struct Source {
        const HyPart* part = nullptr;
        const HyCollisionGeometry* geometry = nullptr;
        std::size_t actor = 0;
        bool isDescribed = false; ///< its shapes are known

        [[nodiscard]] const void* key() const {
            return part ? static_cast<const void*>(part) : geometry;
        }
    };

    /// As the file tells them apart.
    enum ForceKind : int { kContactForce = 0, kJointForce = 1 };

    Run(HyUniverse& universe, const Options& given);
    ~Run() override { delete stepper; }

    void begin();
    void advance(HyReal dt);
    void sample();
    void end();

    void onUniverseAboutToBeDestroyed() override { end(); }
    void onPartAdded(HyPart* part) override { join({.part = part}); }
    void onPartRemoved(HyPart* part) override { leave(part); }
    void onCollisionGeometryAdded(HyCollisionGeometry* geometry) override;
    void onCollisionGeometryRemoved(HyCollisionGeometry* geometry) override;

    void join(Source source);
    void leave(const void* key);
    void renewShapes();
    bool describe(Source& source);
    [[nodiscard]] bool hasOtherShapes(const Source& source) const;
    bool samplePose(Source& source, std::uint32_t frame);
    bool sampleForces(std::uint32_t frame);
    bool appendForce(std::uint32_t frame, const HyVector3& point, const HyVector3& force,
                     ForceKind kind);
    void warnOfPose(const RunActor& actor);
    void endForWantOfMemory();

    HyUniverse* universe;
    Options options;
    RunChunks chunks;
    Stepper* stepper = nullptr;
    HyChannels* channels = nullptr;
    std::vector<Source> sources; ///< what is there, in the order in which it came
    std::vector<RunActor> actors;
    RunTrack forces;
    std::vector<double> times; ///< of the samples, s
    double clock = 0;          ///< recorded time, s
    double nextSample = 0;     ///< s
    bool isPaused = false;
    bool areShapesStale = false;
    bool hasWarnedOfPose = false;
};

HyRecorder::Run::Run(HyUniverse& observed, const Options& given)
    : universe(&observed), options(given), chunks(given.memoryCap) {
    if (!std::isfinite(options.rate) || options.rate < 0) {
        HyWarning(12, "HyRecorder: the rate must be finite and not negative.\n");
        options.rate = 0;
    }
    if (!std::isfinite(options.origin.norm())) {
        HyWarning(12, "HyRecorder: the origin must be finite.\n");
        options.origin = {};
    }
    if (chunks.isEmpty()) {
        HyWarning(12, "HyRecorder: there is no memory for %zu bytes of samples.\n",
                  options.memoryCap);
        universe = nullptr;
        return;
    }
    times.reserve(options.memoryCap / (kFewParts * sizeof(RunSample)));
    observed.registerObserver(this, true);
    stepper = new Stepper(*this);
    HyFrame::instance()->addStepper(stepper);
}

void HyRecorder::Run::end() {
    if (universe)
        universe->unregisterObserver(this, false);
    universe = nullptr;
    sources.clear();
}

void HyRecorder::Run::join(Source source) {
    source.actor = actors.size();
    RunActor& actor = actors.emplace_back();
    const HyBase* const named =
        source.part ? static_cast<const HyBase*>(source.part) : source.geometry;
    actor.name = named->getName();
    sources.push_back(source);
}

void HyRecorder::Run::leave(const void* key) {
    const auto found = std::find_if(sources.begin(), sources.end(),
                                    [key](const Source& source) { return source.key() == key; });
    if (found == sources.end())
        return;
    actors[found->actor].gone = static_cast<std::uint32_t>(times.size());
    sources.erase(found);
}

void HyRecorder::Run::onCollisionGeometryAdded(HyCollisionGeometry* geometry) {
    if (geometry->getPart() || geometry->getParent())
        areShapesStale = true;
    else
        join({.geometry = geometry});
}

void HyRecorder::Run::onCollisionGeometryRemoved(HyCollisionGeometry* geometry) {
    areShapesStale = true;
    leave(geometry);
}

/// Shapes are looked at when the first sample is taken, by when the scene is complete.
/// @return whether they are others than before
bool HyRecorder::Run::describe(Source& source) {
    RunActor& actor = actors[source.actor];
    std::vector<RunShape> shapes =
        source.part ? describeShapes(*source.part) : describeShapes(*source.geometry);
    const bool isOther = source.isDescribed && shapes != actor.shapes;
    actor.shapes = std::move(shapes);
    // A geometry of the universe itself stands where it was put.
    actor.isStatic = !source.part || source.part->getControl() == HyPart::kControlStatic;
    source.isDescribed = true;
    return isOther;
}

/// Sizes, places and geometries of a recorded thing change without a word to observers.
bool HyRecorder::Run::hasOtherShapes(const Source& source) const {
    const std::vector<RunShape>& shapes = actors[source.actor].shapes;
    return source.isDescribed &&
           !(source.part ? haveShapes(*source.part, shapes) : haveShapes(*source.geometry, shapes));
}

/// A thing whose shapes have changed leaves, and comes as another.
void HyRecorder::Run::renewShapes() {
    areShapesStale = false;
    const std::vector<Source> present = sources;
    for (Source source : present) {
        if (!source.isDescribed)
            continue;
        std::vector<RunShape> before = actors[source.actor].shapes;
        if (describe(source)) {
            actors[source.actor].shapes = std::move(before);
            leave(source.key());
            join({.part = source.part, .geometry = source.geometry});
        }
    }
}

void HyRecorder::Run::begin() {
    if (universe && times.empty() && !isPaused)
        sample();
}

void HyRecorder::Run::advance(HyReal dt) {
    if (!universe || isPaused)
        return;
    if (times.empty()) {
        sample();
        return;
    }
    if (dt == 0) // a second sample of one time has no place in the file
        return;
    clock += dt;
    // Sums of steps miss the time of a sample by rounding only.
    if (options.rate > 0 && clock < nextSample - kClockTolerance * dt)
        return;
    sample();
}

void HyRecorder::Run::sample() {
    const KitProfileScope zone("record");
    if (areShapesStale || std::any_of(sources.begin(), sources.end(), [this](const Source& source) {
            return hasOtherShapes(source);
        }))
        renewShapes();
    const auto frame = static_cast<std::uint32_t>(times.size());
    times.push_back(clock);
    for (Source& source : sources) {
        if (!samplePose(source, frame))
            return endForWantOfMemory();
    }
    if (options.forces && !sampleForces(frame))
        return endForWantOfMemory();
    if (options.rate > 0)
        nextSample = (std::floor(clock * options.rate + kClockTolerance) + 1) / options.rate;
    if (channels)
        channels->sample(clock);
}

/// False when memory is full.
bool HyRecorder::Run::samplePose(Source& source, std::uint32_t frame) {
    if (!source.isDescribed)
        describe(source);
    RunActor& actor = actors[source.actor];
    RunSample pose;
    pose.frame = frame;
    const HyTransform place =
        source.part ? source.part->getTransform() : source.geometry->getTransformAbsolute();
    if (!toSample(place, options.origin, pose)) {
        warnOfPose(actor);
        return true;
    }
    return actor.track.appendPose(chunks, pose);
}

void HyRecorder::Run::warnOfPose(const RunActor& actor) {
    if (!hasWarnedOfPose)
        HyWarning(
            12,
            "HyRecorder: the pose of \"%s\" must be finite: the one before is kept, for others "
            "too without a further warning.\n",
            actor.name.c_str());
    hasWarnedOfPose = true;
}

void HyRecorder::Run::endForWantOfMemory() {
    HyWarning(12, "HyRecorder: its %zu bytes of samples are full: the recording ends.\n",
              chunks.getUsedBytes());
    end();
}

/// False when memory is full. A force that does not fit the file's numbers is left out.
bool HyRecorder::Run::appendForce(std::uint32_t frame, const HyVector3& point,
                                  const HyVector3& force, ForceKind kind) {
    RunSample sample{.frame = frame, .value = {}};
    for (int i = 0; i < 3; ++i) {
        sample.value[i] = toFloat(point[i] - options.origin[i]);
        sample.value[3 + i] = toFloat(force[i]);
    }
    sample.value[6] = static_cast<float>(kind);
    const bool fits = std::all_of(std::begin(sample.value), std::end(sample.value),
                                  [](float number) { return std::isfinite(number); });
    return !fits || forces.append(chunks, sample);
}

/// On the first part of each contact and joint.
bool HyRecorder::Run::sampleForces(std::uint32_t frame) {
    const auto lastContact = universe->dynamicsContactEnd();
    for (auto it = universe->dynamicsContactBegin(); it != lastContact; ++it) {
        HyVector3 point, force;
        (*it)->getPosition(point);
        (*it)->getForce(0, force);
        if (!appendForce(frame, point, force, kContactForce))
            return false;
    }
    const auto lastJoint = universe->enabledConstraintsEnd();
    for (auto it = universe->enabledConstraintsBegin(); it != lastJoint; ++it)
        if (const HyConstraint* joint = *it)
            if (!appendForce(frame, joint->getPartAttachmentPosition(0), joint->getPartForce(0),
                             kJointForce))
                return false;
    return true;
}

HyRecorder::HyRecorder(HyUniverse* universe, const Options& options) {
    if (!universe) {
        HyWarning(12, "HyRecorder: the universe must not be null.\n");
        return;
    }
    mRun = std::make_unique<Run>(*universe, options);
}

HyRecorder::~HyRecorder() = default;

void HyRecorder::setChannels(HyChannels* channels) {
    if (mRun)
        mRun->channels = channels;
}

void HyRecorder::pause(bool on) {
    if (mRun)
        mRun->isPaused = on;
}

bool HyRecorder::isPaused() const {
    return mRun && mRun->isPaused;
}

void HyRecorder::stop() {
    if (mRun)
        mRun->end();
}

bool HyRecorder::isRecording() const {
    return mRun && mRun->universe;
}

void HyRecorder::advance(HyReal dt) {
    if (!std::isfinite(dt) || dt < 0)
        HyWarning(12, "HyRecorder::advance: the time must be finite and not negative.\n");
    else if (mRun)
        mRun->advance(dt);
}

HyReal HyRecorder::getDuration() const {
    return mRun && !mRun->times.empty() ? mRun->times.back() : 0;
}

std::size_t HyRecorder::getSampleCount() const {
    return mRun ? mRun->times.size() : 0;
}

std::size_t HyRecorder::getUsedMemory() const {
    return mRun ? mRun->chunks.getUsedBytes() : 0;
}

bool HyRecorder::write(const char* path) const {
    if (!mRun) {
        HyWarning(12, "HyRecorder::write: there is no recording.\n");
        return false;
    }
    const std::string document = makeRunDocument({.actors = mRun->actors,
                                                  .forces = mRun->forces,
                                                  .withForces = mRun->options.forces,
                                                  .chunks = mRun->chunks,
                                                  .times = mRun->times,
                                                  .origin = mRun->options.origin});
    if (document.empty()) {
        HyWarning(12, "HyRecorder::write: the run must fit into a file of 4 GiB.\n");
        return false;
    }
    return writeWholeFile("HyRecorder::write", path, document);
}

} // namespace Hy
