#include "RunDocument.h"

#include "GlbDocument.h"
#include "KeyThinning.h"

#include <Hy/HyQuaternion.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

namespace Hy {

namespace {

/// m
constexpr double kPositionTolerance = 1e-4;
/// A turn by a small angle moves the quaternion by half of it: 0.1 mrad.
constexpr double kQuaternionTolerance = 0.5e-4;

/// Linear factors; the first is for what stands still.
constexpr float kColours[][3] = {
    {0.42F, 0.43F, 0.45F}, {0.80F, 0.30F, 0.12F}, {0.10F, 0.35F, 0.62F}, {0.90F, 0.62F, 0.12F},
    {0.16F, 0.50F, 0.28F}, {0.55F, 0.20F, 0.45F}, {0.12F, 0.55F, 0.58F}, {0.75F, 0.18F, 0.22F},
    {0.45F, 0.55F, 0.14F}, {0.30F, 0.28F, 0.60F}, {0.80F, 0.48F, 0.35F},
};

double lerp(float a, float b, double t) {
    return static_cast<double>(a) + t * (static_cast<double>(b) - static_cast<double>(a));
}

/// Where the run goes on: a ball about the positions of all samples.
struct Reach {
    HyVector3 centre{};
    HyReal radius = 5; ///< m, of the smallest ground that looks like one
};

Reach reachOf(const RunContents& run) {
    HyVector3 low, high;
    bool isFirst = true;
    for (const RunActor& actor : run.actors) {
        if (actor.isStatic)
            continue;
        for (const RunSample& sample : actor.track.read(run.chunks)) {
            for (int i = 0; i < 3; ++i) {
                const auto value = static_cast<HyReal>(sample.value[i]);
                low[i] = isFirst ? value : std::min(low[i], value);
                high[i] = isFirst ? value : std::max(high[i], value);
            }
            isFirst = false;
        }
    }
    Reach reach;
    reach.centre = (low + high) * 0.5;
    reach.radius = std::clamp((high - low).norm() / 2, reach.radius, 500.0);
    return reach;
}

/// Writes one run into a document, thing by thing.
class RunWriter {
public:
    explicit RunWriter(const RunContents& run);
    std::string write();

private:
    void addActor(const RunActor& actor);
    RunShape shapeToDraw(const RunShape& shape, const RunSample& pose) const;
    std::size_t addMesh(const RunActor& actor, const RunSample& pose, std::size_t colour);
    std::string addPrimitive(const RunShape& shape, std::size_t colour);
    void animate(std::size_t node, const RunActor& actor, const std::vector<RunSample>& samples);
    void addChannel(std::size_t node, const char* path, std::size_t times, std::size_t values,
                    const char* interpolation);
    std::size_t addTimes(const std::vector<std::uint32_t>& frames);
    std::string materials() const;
    std::string forces();

    const RunContents& mRun;
    Reach mReach;
    GlbDocument mDocument;
    JsonList mNodes, mMeshes, mChannels, mSamplers, mChildren;
    std::map<std::string, std::string> mShapeAttributes; ///< accessors of a shape by its numbers
    std::map<std::string, std::size_t> mMeshIndices;     ///< by primitives
    std::map<std::vector<std::uint32_t>, std::size_t> mTimeAccessors;
    std::size_t mColour = 0;
};

std::string numbersOf(const RunShape& shape) {
    std::string key(reinterpret_cast<const char*>(&shape.kind), sizeof shape.kind);
    key.append(reinterpret_cast<const char*>(shape.size.v), sizeof shape.size.v);
    key.append(reinterpret_cast<const char*>(shape.place.m), sizeof shape.place.m);
    return key;
}

RunWriter::RunWriter(const RunContents& run) : mRun(run), mReach(reachOf(run)) {}

/// A plane is drawn about the point of it that is nearest to the run.
RunShape RunWriter::shapeToDraw(const RunShape& shape, const RunSample& pose) const {
    RunShape drawn = shape;
    if (shape.kind == RunShape::Kind::plane) {
        const float* const p = pose.value;
        const HyTransform node(HyQuaternion(static_cast<HyReal>(p[6]), static_cast<HyReal>(p[3]),
                                            static_cast<HyReal>(p[4]), static_cast<HyReal>(p[5])),
                               HyVector3(static_cast<HyReal>(p[0]), static_cast<HyReal>(p[1]),
                                         static_cast<HyReal>(p[2])));
        const HyVector3 nearest = (shape.place * node).inverseTransform(mReach.centre);
        drawn.size = HyVector3(nearest[0], nearest[1], 4 * mReach.radius);
    }
    return drawn;
}

std::size_t RunWriter::addTimes(const std::vector<std::uint32_t>& frames) {
    const auto [known, isNew] = mTimeAccessors.try_emplace(frames, 0);
    if (isNew) {
        std::vector<float> seconds;
        for (const std::uint32_t frame : frames)
            seconds.push_back(static_cast<float>(mRun.times[frame]));
        known->second = mDocument.addTimes(seconds);
    }
    return known->second;
}

void RunWriter::addChannel(std::size_t node, const char* path, std::size_t times,
                           std::size_t values, const char* interpolation) {
    mChannels.add("{\"sampler\":" + std::to_string(mSamplers.size()) +
                  ",\"target\":{\"node\":" + std::to_string(node) + ",\"path\":\"" + path + "\"}}");
    mSamplers.add("{\"input\":" + std::to_string(times) + ",\"output\":" + std::to_string(values) +
                  ",\"interpolation\":\"" + interpolation + "\"}");
}

std::string RunWriter::addPrimitive(const RunShape& shape, std::size_t colour) {
    const auto [known, isNew] = mShapeAttributes.try_emplace(numbersOf(shape));
    if (isNew) {
        const RunMesh mesh = tessellate(shape);
        const std::size_t positions = mDocument.addCorners(mesh.positions, true);
        const std::size_t normals = mDocument.addCorners(mesh.normals, false);
        const std::size_t indices = mDocument.addIndices(mesh.indices, mesh.positions.size() / 3);
        known->second = "{\"attributes\":{\"POSITION\":" + std::to_string(positions) +
                        ",\"NORMAL\":" + std::to_string(normals) +
                        "},\"indices\":" + std::to_string(indices) + ",\"material\":";
    }
    return known->second + std::to_string(colour) + '}';
}

std::size_t RunWriter::addMesh(const RunActor& actor, const RunSample& pose, std::size_t colour) {
    JsonList primitives;
    for (const RunShape& shape : actor.shapes)
        primitives.add(addPrimitive(shapeToDraw(shape, pose), colour));
    const auto [known, isNew] = mMeshIndices.try_emplace(primitives.text(), mMeshes.size());
    if (isNew)
        mMeshes.add("{\"primitives\":" + primitives.text() + '}');
    return known->second;
}

/// Frames of keys that stay; two whose times are one number in the file do not both.
template <class Passes>
std::vector<std::size_t> keysOf(const std::vector<RunSample>& samples,
                                const std::vector<double>& times, Passes passes) {
    const auto timeOf = [&](std::size_t i) { return times[samples[i].frame]; };
    std::vector<std::size_t> kept =
        thinKeys(samples.size(), [&](std::size_t first, std::size_t last, std::size_t i) {
            const double t = (timeOf(i) - timeOf(first)) / (timeOf(last) - timeOf(first));
            return passes(samples[first].value, samples[last].value, samples[i].value, t);
        });
    kept.erase(std::unique(kept.begin(), kept.end(),
                           [&](std::size_t a, std::size_t b) {
                               return static_cast<float>(timeOf(a)) ==
                                      static_cast<float>(timeOf(b));
                           }),
               kept.end());
    return kept;
}

bool passesPosition(const float* a, const float* b, const float* middle, double t) {
    double square = 0;
    for (int i = 0; i < 3; ++i) {
        const double error = lerp(a[i], b[i], t) - static_cast<double>(middle[i]);
        square += error * error;
    }
    return square <= kPositionTolerance * kPositionTolerance;
}

/// Quaternions of one sign. The spherical way between two is compared by components: a product of
/// nearly equal ones tells nothing of small angles.
bool passesRotation(const float* a, const float* b, const float* middle, double t) {
    double dot = 0;
    for (int i = 3; i < 7; ++i)
        dot += static_cast<double>(a[i]) * static_cast<double>(b[i]);
    if (dot < 0) // a turn by more than half: players take the other way
        return false;
    const double angle = std::acos(std::min(dot, 1.0));
    const double sine = std::sin(angle);
    const double weightA = sine < 1e-6 ? 1 - t : std::sin((1 - t) * angle) / sine;
    const double weightB = sine < 1e-6 ? t : std::sin(t * angle) / sine;
    double square = 0;
    for (int i = 3; i < 7; ++i) {
        const double error = weightA * static_cast<double>(a[i]) +
                             weightB * static_cast<double>(b[i]) - static_cast<double>(middle[i]);
        square += error * error;
    }
    return square <= kQuaternionTolerance * kQuaternionTolerance;
}

/// Each quaternion on the side of the one before it, so that players turn the shorter way.
void alignSigns(std::vector<RunSample>& samples) {
    for (std::size_t i = 1; i < samples.size(); ++i) {
        float dot = 0;
        for (int c = 3; c < 7; ++c)
            dot += samples[i - 1].value[c] * samples[i].value[c];
        for (int c = 3; dot < 0 && c < 7; ++c)
            samples[i].value[c] = -samples[i].value[c];
    }
}

std::int16_t asShort(float component) {
    return static_cast<std::int16_t>(std::lround(std::clamp(component, -1.0F, 1.0F) * 32767.0F));
}

bool isConstant(const std::vector<RunSample>& samples, int begin, int end) {
    return std::all_of(samples.begin(), samples.end(), [&](const RunSample& sample) {
        return std::equal(sample.value + begin, sample.value + end, samples[0].value + begin);
    });
}

void RunWriter::animate(std::size_t node, const RunActor& actor,
                        const std::vector<RunSample>& samples) {
    const auto framesOf = [&](const std::vector<std::size_t>& kept) {
        std::vector<std::uint32_t> frames;
        for (const std::size_t i : kept)
            frames.push_back(samples[i].frame);
        return frames;
    };
    if (!isConstant(samples, 0, 3)) {
        const std::vector<std::size_t> kept = keysOf(samples, mRun.times, passesPosition);
        std::vector<float> values;
        for (const std::size_t i : kept)
            values.insert(values.end(), samples[i].value, samples[i].value + 3);
        const std::size_t times = addTimes(framesOf(kept));
        addChannel(node, "translation", times, mDocument.addVectors(values), "LINEAR");
    }
    if (!isConstant(samples, 3, 7)) {
        const std::vector<std::size_t> kept = keysOf(samples, mRun.times, passesRotation);
        std::vector<std::int16_t> values;
        for (const std::size_t i : kept)
            for (int c = 3; c < 7; ++c)
                values.push_back(asShort(samples[i].value[c]));
        const std::size_t times = addTimes(framesOf(kept));
        addChannel(node, "rotation", times, mDocument.addRotations(values), "LINEAR");
    }
    const std::uint32_t appeared = samples.front().frame;
    std::vector<std::uint32_t> frames;
    std::vector<float> scales;
    const auto addScale = [&](std::uint32_t frame, float scale) {
        // Of two whose times are one number in the file, the later stays.
        if (!frames.empty() && static_cast<float>(mRun.times[frames.back()]) ==
                                   static_cast<float>(mRun.times[frame])) {
            frames.pop_back();
            scales.resize(scales.size() - 3);
        }
        frames.push_back(frame);
        scales.insert(scales.end(), 3, scale);
    };
    if (appeared > 0) {
        addScale(0, 0);
        addScale(appeared, 1);
    }
    if (actor.gone < mRun.times.size()) {
        if (appeared == 0)
            addScale(0, 1);
        addScale(actor.gone, 0);
    }
    if (!frames.empty()) {
        const std::size_t times = addTimes(frames);
        addChannel(node, "scale", times, mDocument.addVectors(scales), "STEP");
    }
}

void RunWriter::addActor(const RunActor& actor) {
    std::vector<RunSample> samples = actor.track.read(mRun.chunks);
    if (samples.empty())
        return;
    alignSigns(samples);
    const std::size_t node = mNodes.size() + 1; // after the root
    const std::size_t colour = actor.isStatic ? 0 : 1 + mColour++ % (std::size(kColours) - 1);
    std::string text = "{\"name\":" + jsonText(actor.name);
    if (!actor.shapes.empty())
        text += ",\"mesh\":" + std::to_string(addMesh(actor, samples.front(), colour));
    const std::span<const float> pose(samples.front().value);
    text += ",\"translation\":" + jsonNumbers(pose.first(3)) +
            ",\"rotation\":" + jsonNumbers(pose.subspan(3, 4)) + '}';
    mNodes.add(text);
    mChildren.add(std::to_string(node));
    animate(node, actor, samples);
}

std::string RunWriter::materials() const {
    JsonList list;
    for (const auto& colour : kColours) {
        const float rgba[4] = {colour[0], colour[1], colour[2], 1};
        list.add("{\"pbrMetallicRoughness\":{\"baseColorFactor\":" + jsonNumbers(rgba) +
                 ",\"metallicFactor\":0,\"roughnessFactor\":0.6}}");
    }
    return list.text();
}

/// Forces as an extra: 32 bytes each, the number of the sample and then floats: point, force, kind.
std::string RunWriter::forces() {
    std::string bytes;
    for (const RunSample& force : mRun.forces.read(mRun.chunks))
        bytes.append(reinterpret_cast<const char*>(&force), sizeof force);
    if (bytes.empty())
        return {};
    std::string seconds(reinterpret_cast<const char*>(mRun.times.data()),
                        mRun.times.size() * sizeof mRun.times[0]);
    const std::size_t data = mDocument.addExtraView(std::move(bytes));
    const std::size_t times = mDocument.addExtraView(std::move(seconds));
    return ",\"forces\":{\"bufferView\":" + std::to_string(data) +
           ",\"timesBufferView\":" + std::to_string(times) + '}';
}

std::string RunWriter::write() {
    for (const RunActor& actor : mRun.actors)
        addActor(actor);

    // The root turns the universe's z upwards, which is y here.
    constexpr double kHalfRoot = 0.70710678118654752;
    std::string root = "{\"name\":\"universe\",\"rotation\":[" + jsonNumber(-kHalfRoot) + ",0,0," +
                       jsonNumber(kHalfRoot) + ']';
    if (!mChildren.empty())
        root += ",\"children\":" + mChildren.text();
    JsonList nodes;
    nodes.add(root + '}');
    if (!mNodes.empty()) {
        const std::string others = mNodes.text();
        nodes.add(std::string_view(others).substr(1, others.size() - 2));
    }

    JsonList origin;
    for (int i = 0; i < 3; ++i)
        origin.add(jsonNumber(mRun.origin[i]));
    const double duration = mRun.times.empty() ? 0 : mRun.times.back();
    std::string members =
        "\"scene\":0,\"scenes\":[{\"nodes\":[0],\"extras\":{\"origin\":" + origin.text() +
        ",\"duration\":" + jsonNumber(duration) + (mRun.withForces ? forces() : std::string()) +
        "}}],\"nodes\":" + nodes.text() + ',';
    if (!mMeshes.empty())
        members += "\"meshes\":" + mMeshes.text() + ",\"materials\":" + materials() + ',';
    if (!mChannels.empty())
        members += "\"animations\":[{\"name\":\"run\",\"channels\":" + mChannels.text() +
                   ",\"samplers\":" + mSamplers.text() + "}],";
    return mDocument.assemble(members);
}

} // namespace

std::string makeRunDocument(const RunContents& run) {
    return RunWriter(run).write();
}

} // namespace Hy
