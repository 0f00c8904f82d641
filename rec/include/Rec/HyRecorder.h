#pragma once
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>

#include <cstddef>
#include <memory>

namespace Hy {
class HyChannels;
class HyUniverse;

/// Records a run of a universe and writes it as one animated binary glTF 2.0 file (.glb), which any
/// viewer of glTF plays.
///
/// Every part becomes a node with the shapes of its collision geometries, or, without any, with the box
/// of its mass and inertia; a geometry of the universe itself becomes a node too. Poses are taken at the
/// end of a step, before the first one also at its start. Those between which the motion is straight to
/// 0.1 mm and 0.1 mrad are left out of the file. Parts that come or go are scaled from or to nothing;
/// one whose shapes change goes, and comes as another node.
/// The file's bytes are a function of the run.
///
/// Samples go into memory that is reserved at the start, so that recording makes no heap call while
/// parts and shapes stay as they are. Nothing of the simulation is changed. In the file, x, y and z are
/// those of the universe, turned as a whole so that z, not y, is drawn upwards.
///
/// Belongs to the caller. Dies before or after the universe and the frame; a universe that dies ends
/// the recording and leaves what was recorded.
class HY_API HyRecorder {
public:
    struct Options {
        /// Samples a second of simulated time; 0 takes every step. Negative or not finite: a warning,
        /// and 0.
        HyReal rate = 0;
        /// Point of the universe that becomes the file's origin, m. The file's numbers have 24 bits:
        /// a part 1 km away from it is placed to 0.03 mm. Not finite: a warning, and the origin.
        HyVector3 origin{};
        /// Memory for samples, bytes; a sample of a moving part takes 32. When it is full, a warning is
        /// given and the recording ends.
        std::size_t memoryCap = std::size_t{256} << 20;
        /// Whether forces of contacts and of joints are recorded, for players that draw them: a scene
        /// extra "forces" of the file (see rec/README.md).
        bool forces = false;
    };

    /// Begins to record. A null universe, or no memory: a warning, and nothing is recorded.
    /// @param universe not owned
    explicit HyRecorder(HyUniverse* universe) : HyRecorder(universe, Options()) {}
    HyRecorder(HyUniverse* universe, const Options& options);
    HyRecorder(const HyRecorder&) = delete;
    HyRecorder& operator=(const HyRecorder&) = delete;
    /// Writes nothing.
    ~HyRecorder();

    /// Scalars that are sampled whenever poses are; not owned, null for none. Must outlive the
    /// recording.
    void setChannels(HyChannels* channels);

    /// Stops the clock of the recording, or lets it go on: steps in between are left out.
    void pause(bool on);
    [[nodiscard]] bool isPaused() const;
    /// Ends the recording for good.
    void stop();
    /// Whether steps are still recorded; pausing does not count.
    [[nodiscard]] bool isRecording() const;
    /// Lets the recording's clock go on and takes a sample if one is due: for a universe that is stepped
    /// without HyFrame::step(), which calls this at the end of each step.
    /// @param dt s; negative or not finite: a warning, and nothing happens; nor does it for 0, once there
    ///           is a first sample
    void advance(HyReal dt);

    /// Recorded time, s.
    [[nodiscard]] HyReal getDuration() const;
    /// Samples taken so far, the first at time 0.
    [[nodiscard]] std::size_t getSampleCount() const;
    /// Bytes of Options::memoryCap in use.
    [[nodiscard]] std::size_t getUsedMemory() const;

    /// Writes what is recorded so far; the recording goes on. The file appears whole or not at all: a
    /// path that cannot be written, or a full disk, gives a warning and false, and an older file of that
    /// name stays. A run beyond the 4 GiB of the format is refused
    /// in the same way.
    /// @param path null is warned of
    bool write(const char* path) const;

private:
    struct Run;
    std::unique_ptr<Run> mRun;
};

} // namespace Hy
