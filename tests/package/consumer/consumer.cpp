// An outside project: drops a part for one second and compares with the recurrence of the integrator.
// The library must be of the version that is given.
#include <Hy/Hy.h>

#include <cmath>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2 || Hy::HyGetVersion().toString() != argv[1])
        return 1;
    Hy::HyFrame* frame = Hy::HyFrame::instance();
    Hy::HyUniverse& universe = frame->getUniverse();
    auto* part = new Hy::HyPart(2.0);
    universe.addPart(part);
    double expected = 0, speed = 0;
    for (int i = 0; i < 60; ++i) {
        frame->step();
        speed -= frame->getTimeStep() * 9.80665;
        expected += frame->getTimeStep() * speed;
    }
    const double height = part->getPosition()[2];
    Hy::HyFrame::release();
    std::printf("fell to %.6f m, expected %.6f m\n", height, expected);
    return std::abs(height - expected) < 1e-9 ? 0 : 1;
}
