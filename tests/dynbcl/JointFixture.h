#pragma once
#include <Dync/DyncConstraintParameters.h>
#include <Dync/DyncJoints.h>
#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitMemory.h>
#include <Kit/KitQuaternion.h>

#include <Eigen/Dense>

#include <algorithm>
#include <memory>
#include <random>

/// Two bodies at any pose with any velocity, and the rows that a builder makes of a joint between
/// them. Either slot may be left to the world.
class JointFixture {
public:
    explicit JointFixture(unsigned seed) : random(seed), rows(DynsConstraintsCreate()) {
        DynsConstraintsResize(rows, 4, 2, 48, &KitMemoryAPI);
        DyncSetDefaultConstraintParameters(&params);
        DyncUpdateConstraintParameters(&params, 0, 0, 0, 0, 0.01);
        for (int i = 0; i < 2; ++i) {
            body[i] = DynsBody{};
            body[i].localIndex = i;
            body[i].localPartition = 0;
            randomVector(body[i].vel, 1);
            randomVector(body[i].velrot, 1);
        }
        placeBodies(1);
    }
    ~JointFixture() { DynsConstraintsDestroy(rows, &KitMemoryAPI); }
    JointFixture(const JointFixture&) = delete;
    JointFixture& operator=(const JointFixture&) = delete;

    /// A record with its frames anywhere, turned against each other by about `turn` rad and
    /// `shift` m apart.
    template <typename Record>
    std::unique_ptr<Record> make(int tag, int maxRows, double turn, double shift,
                                 bool world0 = false, bool world1 = false) {
        auto joint = std::make_unique<Record>();
        DyncConstraintHeader& head = joint->bclH;
        head.tag = tag;
        head.n_bodies = 2;
        head.max_rows = maxRows;
        std::fill(head.lower, head.lower + kDynsMaxConstraintRows, -kKitInfinity);
        std::fill(head.upper, head.upper + kDynsMaxConstraintRows, kKitInfinity);
        const bool world[2] = {world0, world1};
        KitMatrix4 frame;
        randomTransform(frame, 1);
        for (int i = 0; i < 2; ++i) {
            KitMatrix4 apart, w;
            randomTransform(apart, turn);
            randomVector(apart[3], shift);
            KitMatrix4TMCompound(w, apart, frame);
            if (world[i]) {
                KitMatrix4Copy(head.ref[i], w);
                continue;
            }
            KitMatrix4TMCompoundInverseSecond(head.ref[i], w, body[i].tm);
            head.b[i] = &body[i];
            head.r[i] = &body[i].tm;
            head.velocity[i] = &body[i].vel;
            head.q[i] = body[i].qrot;
        }
        return joint;
    }

    /// Rows pushed by a builder into an empty list.
    int build(DyncAddConstraintFn builder, DynBaseConstraint& joint) {
        DynsConstraintsReset(rows, 48, 4, 2);
        rows->partition = 0;
        return builder(rows, &joint, &params);
    }

    /// J v of a row at the bodies' present velocities, over the blocks that were pushed.
    [[nodiscard]] double rate(int row) const {
        double sum = 0;
        for (int b = 0; b < rows->n_g_blocks; ++b)
            for (int k = 0; k < 3; ++k) {
                sum += rows->G[b][row][k] * rows->g_bodies[b]->vel[k];
                sum += rows->G[b][row][3 + k] * rows->g_bodies[b]->velrot[k];
            }
        return sum;
    }

    /// Moves both bodies by their velocities for h seconds.
    void move(double h) {
        for (DynsBody& b : body) {
            for (int k = 0; k < 3; ++k)
                b.tm[3][k] += h * b.vel[k];
            KitQuaternionFiniteRotation(b.qrot, b.velrot, h);
            DynsBody* one = &b;
            body_update_rotation(&one, 1);
        }
    }

    void randomVector(KitReal* v, double size) {
        std::normal_distribution<double> gauss(0, size);
        for (int k = 0; k < 3; ++k)
            v[k] = gauss(random);
    }

    void randomTransform(KitMatrix4 tm, double size) {
        DynsBody b{};
        b.qrot[0] = 1;
        KitVector3 w;
        randomVector(w, size);
        KitQuaternionFiniteRotation(b.qrot, w, 1);
        DynsBody* one = &b;
        body_update_rotation(&one, 1);
        randomVector(b.tm[3], size);
        b.tm[3][3] = 1;
        KitMatrix4Copy(tm, b.tm);
    }

    std::mt19937_64 random;
    DynsBody body[2];
    DynsConstraints* rows;
    DyncConstraintParameters params{};

private:
    void placeBodies(double size) {
        for (DynsBody& b : body) {
            b.qrot[0] = 1;
            KitVector3 w;
            randomVector(w, size);
            KitQuaternionFiniteRotation(b.qrot, w, 1);
            randomVector(b.tm[3], size);
            b.tm[3][3] = 1;
            DynsBody* one = &b;
            body_update_rotation(&one, 1);
        }
    }
};
