// The separating-axis test of two boxes over lanes of four, of which three serve: included by one
// source for each set of instructions, which defines Lanes and what is done with them. The matrix
// a_ij is the component along axis i of box 1 of axis j of box 2.

namespace {

constexpr int kThreeLanes = 7;
/// Share by which edges must beat a face, so that rounding never makes edges of faces that lie flat.
constexpr KitReal kEdgeAdvantage = 1e-6;

/// The crossed edges: row i holds the axes e_i x b_j. Along an axis of squared length 1 - a_ij^2 all
/// lengths are scaled by its length, so comparisons square.
struct EdgeRow {
    Lanes scaled;  ///< separation times the axis' length, m
    Lanes length2; ///< squared sine of the edges
    int crossed;   ///< mask of those that are not parallel
};

/// Takes edges one by one where some may win.
void takeEdges(BoxAxis* out, const EdgeRow (&rows)[3], bool penetrating, KitReal best2) noexcept {
    for (int i = 0; i < 3; ++i) {
        KitReal scaled[4], length2[4];
        store(scaled, rows[i].scaled);
        store(length2, rows[i].length2);
        for (int j = 0; j < 3; ++j) {
            if (!(rows[i].crossed >> j & 1))
                continue;
            const KitReal q = scaled[j];
            const bool nearer = penetrating ? q >= 0 || q * q < best2 * length2[j]
                                            : q >= 0 && q * q > best2 * length2[j];
            if (!nearer)
                continue;
            out->separation = q / std::sqrt(length2[j]);
            out->code = 4 * i + j;
            best2 = out->separation * out->separation;
            penetrating = q < 0;
        }
    }
}

bool testEdges(BoxAxis* out, KitReal eps, const lsVec3& r1, Lanes radii2, const lsVec3& t,
               const Lanes (&a)[3], const Lanes (&absA)[3]) noexcept {
    const Lanes zero = spread(0), one = spread(1), s2 = spread(10 * eps * eps);
    const bool penetrating = out->separation < 0;
    const KitReal best2 =
        out->separation * out->separation * (penetrating ? 1 - kEdgeAdvantage : 1 + kEdgeAdvantage);
    const Lanes r2next = rotate1(radii2), r2last = rotate2(radii2);
    EdgeRow rows[3];
    int anyNearer = 0;
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3, i2 = (i + 2) % 3;
        EdgeRow& row = rows[i];
        row.length2 = subtract(one, multiply(a[i], a[i]));
        const Lanes between =
            absolute(subtract(multiply(spread(t[i2]), a[i1]), multiply(spread(t[i1]), a[i2])));
        Lanes extent = add(multiply(spread(r1[i1]), absA[i2]), multiply(spread(r1[i2]), absA[i1]));
        extent = add(extent, multiply(r2next, rotate2(absA[i])));
        extent = add(extent, multiply(r2last, rotate1(absA[i])));
        row.scaled = subtract(between, extent);
        row.crossed = above(row.length2, spread(kBoxParallelSquareSine)) & kThreeLanes;

        const Lanes square = multiply(row.scaled, row.scaled);
        const int apart =
            row.crossed & above(row.scaled, zero) & above(square, multiply(s2, row.length2));
        if (apart != 0) {
            KitReal scaled[4], length2[4];
            store(scaled, row.scaled);
            store(length2, row.length2);
            const int j = apart & 1 ? 0 : apart & 2 ? 1 : 2;
            *out = {.separation = scaled[j] / std::sqrt(length2[j]), .code = 4 * i + j};
            return false;
        }
        const Lanes limit = multiply(spread(best2), row.length2);
        const int open = notBelow(row.scaled, zero);
        anyNearer |=
            row.crossed & (penetrating ? open | above(limit, square) : open & above(square, limit));
    }
    if (anyNearer != 0)
        takeEdges(out, rows, penetrating, best2);
    return true;
}

bool findBoxAxis(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                 const lsTransform& t12) noexcept {
    const lsVec3& t = t12.t();
    const Lanes axes[3] = {load(t12.row[0].v), load(t12.row[1].v), load(t12.row[2].v)};
    Lanes a[3], absA[3];
    transpose(axes, a);
    for (int i = 0; i < 3; ++i)
        absA[i] = absolute(a[i]);
    const Lanes radii1 = loadThree(r1.v), radii2 = loadThree(r2.v);

    Lanes extent = multiply(absolute(axes[0]), spread(r2[0]));
    extent = add(extent, multiply(absolute(axes[1]), spread(r2[1])));
    extent = add(extent, multiply(absolute(axes[2]), spread(r2[2])));
    const Lanes faces1 = subtract(absolute(loadThree(t.v)), add(radii1, extent));

    extent = multiply(absA[0], spread(r1[0]));
    extent = add(extent, multiply(absA[1], spread(r1[1])));
    extent = add(extent, multiply(absA[2], spread(r1[2])));
    Lanes distance = add(multiply(spread(t[0]), a[0]), multiply(spread(t[1]), a[1]));
    distance = add(distance, multiply(spread(t[2]), a[2]));
    const Lanes faces2 = subtract(absolute(distance), add(radii2, extent));

    KitReal separations[8];
    store(separations, faces1);
    store(separations + 4, faces2);
    const Lanes slack = spread(eps);
    const bool apart = ((above(faces1, slack) | above(faces2, slack)) & kThreeLanes) != 0;
    *out = BoxAxis{};
    for (int k = 0; k < 3; ++k)
        if (separations[k] > out->separation)
            *out = {.separation = separations[k], .code = kOverlapFace1 + k};
    for (int k = 0; k < 3; ++k)
        if (separations[4 + k] > out->separation)
            *out = {.separation = separations[4 + k], .code = 4 * k + 3};
    if (apart || out->separation == -kKitInfinity)
        return false;
    return testEdges(out, eps, r1, radii2, t, a, absA);
}

} // namespace
