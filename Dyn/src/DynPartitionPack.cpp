#include <Dyn/DynBody.h>
#include <Dyn/DynPartition.h>
#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitAssoc.h>

#include <algorithm>

namespace {

constexpr int kRowMultiple = 4; ///< the solver works on tiles of this many rows

void consumeImpulses(DynBody* body, KitReal stepSize) {
    body->impulseConsumed = body->impulseAdded;
    if (!body->impulseAdded)
        return;
    body->impulseAdded = false;
    for (int i = 0; i < 3; ++i) {
        body->consumedImpulseLinear[i] = body->impulseLinear[i];
        body->consumedImpulseAngular[i] = body->impulseAngular[i];
        body->kiroBody.force[i] += body->impulseLinear[i] / stepSize;
        body->kiroBody.torque[i] += body->impulseAngular[i] / stepSize;
        body->impulseLinear[i] = body->impulseAngular[i] = 0;
    }
}

void loadBody(DynBody* body, KitReal stepSize, const KitVector4 gravity) {
    DynsBody& solver = body->kiroBody;
    // Without integration the last step's constraint loads are still there, and would act as foreign.
    std::fill_n(solver.cf, 4, 0.0);
    std::fill_n(solver.ct, 4, 0.0);
    if (!DynBodyIsEnabled(body)) // a body force has just put it to sleep or frozen it
        return;
    if (body->constraintList)
        solver.flags |= kDynsBodyHasConstraints;
    else
        solver.flags &= ~kDynsBodyHasConstraints;
    ++body->enabledTime;
    for (int i = 0; i < 3; ++i)
        solver.force[i] += body->mass * gravity[i];
    consumeImpulses(body, stepSize);
}

// The bodies of a primary know their own index. A secondary shares bodies with its primaries and
// with other secondaries, so it looks them up; addresses decide no order of results here.
KitAssocArray fillIndices(DynPartitionOutput* output, int p) {
    const int start = output->bodiesStart[p], n = output->bodiesSize[p];
    KitAssoc* indices = output->indices + start;
    for (int i = 0; i < n; ++i)
        indices[i] = {.p = output->k_bodies[start + i], .idx = i};
    KitAssocArray array{.n = n, .v = indices};
    if (output->partition_type[p] != 0)
        KitAssocArraySort(&array);
    return array;
}

int sumMaxRows(const DynPartitionOutput* output, int p) {
    int rows = 0;
    for (int i = 0; i < output->constraintsSize[p]; ++i)
        rows += output->constraints[output->constraintsStart[p] + i]->bclH.max_rows;
    return (rows + kRowMultiple - 1) / kRowMultiple * kRowMultiple;
}

// What a constraint without rows reports.
void clearResult(DynBaseConstraint* c) {
    for (int slot = 0; slot < c->bclH.n_bodies; ++slot)
        for (int i = 0; i < 4; ++i)
            c->resultForce[slot][i] = c->resultTorque[slot][i] = 0;
    c->bclH.lambda[0] = kDynLambdaEnd;
}

// Constraint i of the list is constraint i of the record, so what counts is that the rows got in.
bool buildRows(DynBaseConstraint* c, const DyncConstraintParameters* bcl_params,
               DynsConstraints* constraints) {
    const int before = constraints->n_constraints;
    return c->bclFunction && c->bclFunction(constraints, c, bcl_params) > 0 &&
           constraints->n_constraints > before;
}

void pushConstraints(DynPartitionOutput* output, int p, const DyncConstraintParameters* bcl_params,
                     DynsConstraints* constraints) {
    DynBaseConstraint** list = output->constraints + output->constraintsStart[p];
    int n = output->constraintsSize[p];
    for (int i = 0; i < n;) {
        DynBaseConstraint* c = list[i];
        --c->bclH.gflag;
        if (buildRows(c, bcl_params, constraints)) {
            ++i;
            continue;
        }
        clearResult(c);
        list[i] = list[--n];
    }
    output->constraintsSize[p] = n;
}

int countLastRows(const DyncConstraintHeader& head) {
    int rows = 0;
    while (rows < kDynsMaxConstraintRows && head.lambda[rows] != kDynLambdaEnd)
        ++rows;
    return rows;
}

} // namespace

int DynPackPartition(DynPartitionOutput* output, int partitionindex, KitReal stepSize,
                     const DynWorldParams* params, const DyncConstraintParameters* bcl_params,
                     DynsConstraints* constraints) {
    const int p = partitionindex, start = output->bodiesStart[p], nBodies = output->bodiesSize[p];
    const bool primary = output->partition_type[p] == 0;
    if (primary)
        for (int i = 0; i < nBodies; ++i)
            loadBody(output->bodies[start + i], stepSize, params->gravity);
    KitAssocArray indices = fillIndices(output, p);
    constraints->partition = p;
    if (output->constraintsSize[p] == 0) {
        DynsConstraintsReset(constraints, 0, 0, nBodies);
        return DynsConstraintsGetNumRows(constraints);
    }
    DynsConstraintsReset(constraints, sumMaxRows(output, p), output->constraintsSize[p], nBodies);
    DynsConstraintsSetIndices(constraints, primary ? nullptr : &indices);
    pushConstraints(output, p, bcl_params, constraints);
    DynsConstraintsSetIndices(constraints, nullptr);
    return DynsConstraintsGetNumRows(constraints);
}

void DynWarmStartPartition(const DynPartitionOutput* output, int partitionindex,
                           DynsConstraints* constraints) {
    DynBaseConstraint* const* list = output->constraints + output->constraintsStart[partitionindex];
    for (int i = 0; i < output->constraintsSize[partitionindex]; ++i) {
        const DyncConstraintHeader& head = list[i]->bclH;
        const int block = constraints->constraint_first_block[i];
        const int rows = constraints->g_block_size[block];
        if (countLastRows(head) == rows)
            std::copy_n(head.lambda, rows,
                        constraints->lambda + constraints->g_block_first_row[block]);
    }
}
