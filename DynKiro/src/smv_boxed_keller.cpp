#include <Dyns/smv_boxed_keller.h>

#include "dense_ldl.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/smv_matrix.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kPivotsPerRow = 8;
/// The error, in the unit of w, at which the pivoting ends.
constexpr KitReal kTolerance = 1e-12;
constexpr KitReal kMax = kKitInfinity;

KitReal inside(KitReal value, KitReal lower, KitReal upper) {
    if (!std::isfinite(value))
        value = 0;
    return std::min(std::max(value, lower), upper);
}

} // namespace

void smv_boxed_keller_solver::get_initial_index_set() {
    for (int i = 0; i < n; ++i) {
        if (mlcp->l[i] == -kMax)
            mlcp->index[i] = mlcp->u[i] == kMax ? kDynsIndexFree : kDynsIndexUpper;
        else
            mlcp->index[i] = kDynsIndexLower;
    }
}

void smv_boxed_keller_solver::split_index_set() {
    FSZ = TLSZ = TUSZ = 0;
    for (int i = 0; i < n; ++i) {
        if (aside[i])
            continue;
        if (mlcp->index[i] == kDynsIndexFree)
            F[FSZ++] = i;
        else if (mlcp->index[i] == kDynsIndexLower)
            TL[TLSZ++] = i;
        else
            TU[TUSZ++] = i;
    }
}

// A row that depends on the free ones adds nothing that they do not do already.
void smv_boxed_keller_solver::setAside(int row) {
    aside[row] = true;
    if (mlcp->index[row] == kDynsIndexFree)
        mlcp->z[row] = inside(0, mlcp->l[row], mlcp->u[row]);
    else
        mlcp->z[row] = mlcp->index[row] == kDynsIndexLower ? mlcp->l[row] : mlcp->u[row];
}

void smv_boxed_keller_solver::get_initial_point() {
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            B[i * n + j] = i == j;
    get_initial_index_set();
    split_index_set();
    const int free = FSZ;
    for (int k = 0; k < free; ++k)
        if (!do_pivotal(F[k], z_pivot))
            setAside(F[k]);
    split_index_set();
    update_q_vector();
}

/// q1 = B (M z + q) at the point that holds the tight rows at their bounds and the free ones at 0.
void smv_boxed_keller_solver::update_q_vector() {
    KitReal held[kSmvMaxRows] = {};
    for (int i = 0; i < n; ++i)
        if (aside[i])
            held[i] = mlcp->z[i];
    for (int k = 0; k < TLSZ; ++k)
        held[TL[k]] = mlcp->l[TL[k]];
    for (int k = 0; k < TUSZ; ++k)
        held[TU[k]] = mlcp->u[TU[k]];
    KitReal t[kSmvMaxRows];
    for (int i = 0; i < n; ++i) {
        t[i] = mlcp->q[i];
        for (int j = 0; j < n; ++j)
            t[i] += mlcp->M[i * n + j] * held[j];
    }
    for (int i = 0; i < n; ++i) {
        q1[i] = 0;
        for (int j = 0; j < n; ++j)
            q1[i] += B[i * n + j] * t[j];
    }
}

/// The row of greatest violation: the first among equals, a lower one before an upper one.
bool smv_boxed_keller_solver::get_pivot_index() {
    int low = -1, high = -1;
    for (int k = 0; k < TLSZ; ++k)
        if (q1[TL[k]] < (low < 0 ? 0 : q1[low]))
            low = TL[k];
    for (int k = 0; k < TUSZ; ++k)
        if (q1[TU[k]] > (high < 0 ? 0 : q1[high]))
            high = TU[k];
    if (low < 0 && high < 0)
        return false;
    rising = high < 0 || (low >= 0 && -q1[low] >= q1[high]);
    s = rising ? low : high;
    return true;
}

void smv_boxed_keller_solver::get_search_direction() {
    for (int i = 0; i < n; ++i) {
        v[i] = 0;
        for (int j = 0; j < n; ++j)
            v[i] += B[i * n + j] * mlcp->M[j * n + s];
    }
    mss = mlcp->M[s * n + s];
    for (int k = 0; k < FSZ; ++k)
        mss += mlcp->M[s * n + F[k]] * v[F[k]];
    if (mss <= kDynsDependentPivot * mlcp->M[s * n + s])
        mss = 0;
}

// Steps are lengths along the way of z of the driving row: up if it rises, else down.
smv_boxed_keller_solver::Step smv_boxed_keller_solver::get_step_length() {
    r2 = r3 = -1;
    const KitReal direction = rising ? 1 : -1;
    KitReal lowerStep = kMax, upperStep = kMax;
    for (int k = 0; k < FSZ; ++k) {
        const int row = F[k];
        const KitReal rate = direction * v[row];
        if (rate < 0 && mlcp->l[row] != -kMax) {
            const KitReal step = (mlcp->l[row] - q1[row]) / rate;
            if (lowerStep > step)
                lowerStep = step, r2 = row;
        } else if (rate > 0 && mlcp->u[row] != kMax) {
            const KitReal step = (mlcp->u[row] - q1[row]) / rate;
            if (upperStep > step)
                upperStep = step, r3 = row;
        }
    }
    KitReal shortest = mss > 0 ? -direction * q1[s] / mss : kMax;
    Step step = mss > 0 ? Step::kDrivingFree : Step::kNone;
    const bool bounded = mlcp->l[s] != -kMax && mlcp->u[s] != kMax;
    if (bounded && shortest > mlcp->u[s] - mlcp->l[s])
        shortest = mlcp->u[s] - mlcp->l[s], step = Step::kOtherBound;
    if (shortest > lowerStep)
        shortest = lowerStep, step = Step::kBlockedLower;
    if (shortest > upperStep)
        shortest = upperStep, step = Step::kBlockedUpper;
    return step;
}

/// Brings a row into the free set (z_pivot) or takes it out; false if the row depends on the others.
bool smv_boxed_keller_solver::do_pivotal(int row, pivot_type kind) {
    KitReal x[kSmvMaxRows], y[kSmvMaxRows];
    for (int i = 0; i < n; ++i) {
        y[i] = B[row * n + i];
        if (kind == w_pivot) {
            x[i] = B[i * n + row];
            continue;
        }
        x[i] = 0;
        for (int j = 0; j < n; ++j)
            x[i] -= B[i * n + j] * mlcp->M[j * n + row];
    }
    const KitReal smallest = kDynsDependentPivot * mlcp->M[row * n + row];
    if (kind == z_pivot && !(std::abs(x[row]) > smallest))
        return false;
    if (x[row] == 0)
        return false;
    const KitReal scale = 1 / x[row];
    for (int i = 0; i < n; ++i) {
        if (i == row)
            continue;
        const KitReal factor = x[i] * scale;
        for (int j = 0; j < n; ++j)
            B[i * n + j] -= factor * y[j];
    }
    for (int j = 0; j < n; ++j)
        B[row * n + j] = scale * y[j];
    return true;
}

void smv_boxed_keller_solver::do_pivot(Step step) {
    r = -1;
    switch (step) {
    case Step::kDrivingFree:
        if (do_pivotal(s, z_pivot))
            mlcp->index[s] = kDynsIndexFree;
        else
            setAside(s);
        break;
    case Step::kOtherBound: // never pivoted, so that B stays
        mlcp->index[s] = rising ? kDynsIndexUpper : kDynsIndexLower;
        break;
    case Step::kBlockedLower:
        r = r2;
        do_pivotal(r, w_pivot);
        mlcp->index[r] = kDynsIndexLower;
        break;
    case Step::kBlockedUpper:
        r = r3;
        do_pivotal(r, w_pivot);
        mlcp->index[r] = kDynsIndexUpper;
        break;
    case Step::kNone:
        setAside(s);
        break;
    }
}

KitReal smv_boxed_keller_solver::get_error() const {
    KitReal sum = 0;
    for (int k = 0; k < TLSZ; ++k)
        if (q1[TL[k]] < 0)
            sum += q1[TL[k]] * q1[TL[k]];
    for (int k = 0; k < TUSZ; ++k)
        if (q1[TU[k]] > 0)
            sum += q1[TU[k]] * q1[TU[k]];
    return std::sqrt(sum);
}

/// Solves the free rows of the final split afresh, without the updates that led to it.
void smv_boxed_keller_solver::build_solution() {
    KitReal dense[kSmvMaxRows * kSmvMaxRows], x[kSmvMaxRows];
    for (int k = 0; k < TLSZ; ++k)
        mlcp->z[TL[k]] = mlcp->l[TL[k]];
    for (int k = 0; k < TUSZ; ++k)
        mlcp->z[TU[k]] = mlcp->u[TU[k]];
    for (int k = 0; k < FSZ; ++k)
        mlcp->z[F[k]] = 0;
    for (int k = 0; k < FSZ; ++k) {
        const KitReal* row = mlcp->M + F[k] * n;
        x[k] = -mlcp->q[F[k]];
        for (int j = 0; j < n; ++j)
            x[k] -= row[j] * mlcp->z[j];
        for (int l = 0; l <= k; ++l)
            dense[k * FSZ + l] = row[F[l]];
    }
    DynsFactorDenseLdl(dense, FSZ, FSZ);
    DynsSolveDenseLdl(dense, x, FSZ, FSZ);
    for (int k = 0; k < FSZ; ++k)
        mlcp->z[F[k]] = x[k];
    for (int i = 0; i < n; ++i) {
        mlcp->z[i] = inside(mlcp->z[i], mlcp->l[i], mlcp->u[i]);
        mlcp->w[i] = mlcp->q[i];
    }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            mlcp->w[i] += mlcp->M[i * n + j] * mlcp->z[j];
    for (int k = 0; k < FSZ; ++k)
        mlcp->w[F[k]] = 0;
}

bool smv_boxed_keller_solver::solve() {
    get_initial_point();
    const int limit = kPivotsPerRow * n;
    bool done = false;
    while (!done && iterations < limit) {
        if (!get_pivot_index()) {
            done = true;
            break;
        }
        do {
            get_search_direction();
            const Step step = get_step_length();
            do_pivot(step);
            split_index_set();
            update_q_vector();
            ++iterations;
            if (step == Step::kNone)
                KitWarning(1, "Internal solver error: smv_boxed_keller: terminating on a ray\n");
            done = get_error() < kTolerance;
        } while (!done && r >= 0 && iterations < limit);
    }
    build_solution();
    return done;
}

namespace {

bool allFinite(const KitReal* M, int n, const KitReal* b) {
    bool finite = true;
    for (int i = 0; i < n; ++i)
        finite = finite && std::isfinite(b[i]);
    for (int i = 0; i < n * n; ++i)
        finite = finite && std::isfinite(M[i]);
    return finite;
}

/// The problem that is left when the rows with coinciding bounds are fixed.
struct ReducedProblem {
    int rows[kSmvMaxRows];
    int n = 0;
    KitReal M[kSmvMaxRows * kSmvMaxRows];
    KitReal q[kSmvMaxRows], l[kSmvMaxRows], u[kSmvMaxRows], z[kSmvMaxRows], w[kSmvMaxRows];
    int index[kSmvMaxRows];
};

} // namespace

int smv_solve_boxed(const KitReal* M, int n, KitReal* z, const KitReal* b, const KitReal* lower,
                    const KitReal* upper, int* index) {
    ReducedProblem p;
    for (int i = 0; i < n; ++i) {
        if (lower[i] < upper[i]) {
            p.rows[p.n++] = i;
            z[i] = 0;
        } else { // also where the bounds cross or are not numbers
            z[i] = inside(lower[i], lower[i], upper[i]);
            index[i] = kDynsIndexLower;
        }
    }
    if (!allFinite(M, n, b)) {
        KitWarning(1, "Internal solver error: smv boxed keller: problem in picking pivot");
        for (int k = 0; k < p.n; ++k) {
            z[p.rows[k]] = inside(0, lower[p.rows[k]], upper[p.rows[k]]);
            index[p.rows[k]] = kDynsIndexFree;
        }
        return p.n < n ? 1 : 0;
    }
    for (int k = 0; k < p.n; ++k) {
        const int row = p.rows[k];
        p.q[k] = -b[row];
        for (int j = 0; j < n; ++j)
            p.q[k] += M[row * n + j] * z[j];
        for (int j = 0; j < p.n; ++j)
            p.M[k * p.n + j] = M[row * n + p.rows[j]];
        p.l[k] = lower[row];
        p.u[k] = upper[row];
    }
    smv_mlcp problem{p.n, p.M, p.q, p.l, p.u, p.z, p.w, p.index};
    smv_boxed_keller_solver(&problem).solve();
    for (int k = 0; k < p.n; ++k) {
        z[p.rows[k]] = p.z[k];
        index[p.rows[k]] = p.index[k];
    }
    return p.n < n ? 1 : 0;
}

int smv_boxed_keller(LCPMatrix* m, KitReal* z, KitReal* b, KitReal* lower, KitReal* upper,
                     int* index, DynsLCPSolverParameters*, KitMemoryPool*, void*) {
    const auto& matrix = static_cast<const smv_matrix&>(*m);
    int own[kSmvMaxRows] = {};
    return smv_solve_boxed(matrix.M, matrix.n, z, b, lower, upper, index != nullptr ? index : own);
}
