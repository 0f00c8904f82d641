// Makes a recorded run for the player's tests: two parts that fly and spin, one that comes and one that
// goes, a ground with contacts. Beside it stand the poses of the run itself.
// Usage: halcyr_rec_run FOLDER
#include <Hy/Hy.h>
#include <Rec/HyChannels.h>
#include <Rec/HyRecorder.h>

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <string>
#include <vector>

using namespace Hy;

namespace {

HyPart* addPart(HyUniverse& universe, const char* name, HyGeometry* shape, const HyVector3& at,
                const HyVector3& spin) {
    auto* part = new HyPart(1);
    part->setName(name);
    part->addCollisionGeometry(new HyCollisionGeometry(shape));
    part->setPosition(at);
    part->setAngularVelocity(spin);
    universe.addPart(part);
    return part;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const std::string folder = std::string(argv[1]) + '/';
    HyFrame* frame = HyFrame::instance();
    HyUniverse& universe = frame->getUniverse();
    auto* ground = new HyPart;
    ground->setName("ground");
    ground->setControl(HyPart::kControlStatic);
    ground->addCollisionGeometry(new HyCollisionGeometry(new HyPlane));
    universe.addPart(ground);
    HyPart* const box = addPart(universe, "box", new HyBox(1, 0.6, 0.4), {0, 0, 9}, {1, 5, 0.2});
    HyPart* const capsule =
        addPart(universe, "capsule", new HyCapsule(0.2, 0.8), {2, 1, 8}, {0, -4, 3});
    HyPart* gone = addPart(universe, "gone", new HySphere(0.4), {-2, 0, 6}, {0, 0, 0});
    addPart(universe, "resting", new HyCylinder(0.5, 1), {-3, 2, 0.5}, {0, 0, 0});

    HyRecorder recorder(&universe, {.forces = true});
    HyChannels channels;
    channels.add("height of the box", "m", [box] { return box->getPosition()[2]; });
    channels.add("speed, \"vertical\"", "m/s", [box] { return box->getLinearVelocity()[2]; });
    recorder.setChannels(&channels);
    std::ofstream poses(folder + "poses.json");
    poses << std::setprecision(17) << "[\n";
    const char* separator = "";
    constexpr int kSteps = 70;
    for (int step = 0; step <= kSteps; ++step) {
        if (step > 0) {
            if (step == 30)
                universe.destroyPart(gone);
            if (step == 40)
                addPart(universe, "late", new HySphere(0.3), {3, 0, 5}, {0, 0, 0});
            frame->step();
        }
        for (const HyPart* part : {box, capsule}) {
            const HyVector3 p = part->getPosition();
            const HyQuaternion q = part->getOrientationQuaternion();
            poses << separator << "{\"time\": " << step * frame->getTimeStep() << ", \"name\": \""
                  << part->getName() << "\", \"position\": [" << p[0] << ", " << p[1] << ", "
                  << p[2] << "], \"quaternion\": [" << q.x() << ", " << q.y() << ", " << q.z()
                  << ", " << q.w() << "]}";
            separator = ",\n";
        }
    }
    poses << "\n]\n";
    const bool isWritten = recorder.write((folder + "run.glb").c_str()) &&
                           channels.writeCsv((folder + "run.csv").c_str()) && poses.good();
    HyFrame::release();
    return isWritten ? 0 : 1;
}
