// The kernels of DynsKernelVariant over a type of vector. The file that includes this has set the
// instructions to be used, and gives Vector, kLanes, load, store, spread (one number to all lanes),
// add, subtract, multiply, multiplyAdd (a b + c) and subtractProduct (c - a b), and kColumnsAtOnce:
// as many columns as the registers hold sums of. It calls no function of the standard library: an
// inline one, compiled with these instructions, might be taken for the whole library.
namespace {

constexpr int kGroups = kDynsPanelRows / kLanes; ///< vectors of a tile's column
/// Sums of one entry, over even and odd p, so that eight chains are in flight.
constexpr int kChains = kGroups == 1 ? 2 : 1;

constexpr std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

constexpr int smaller(int a, int b) {
    return a < b ? a : b;
}

/// Calls f with a count as a constant, of at most Most.
template <int Most, typename F>
inline void withConstant(int count, F f) {
    if constexpr (Most > 0) {
        if (count == Most)
            f(std::integral_constant<int, Most>());
        else
            withConstant<Most - 1>(count, f);
    }
}

template <int Columns, bool Transposed>
inline void subtractTile(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda,
                         const KitReal* B, std::size_t ldb, int k) {
    Vector sums[kChains][Columns][kGroups];
    for (auto& chain : sums)
        for (auto& column : chain)
            for (Vector& sum : column)
                sum = spread(0);
    const auto addProduct = [&](int p, auto& chain) {
        Vector a[kGroups];
        for (int g = 0; g < kGroups; ++g)
            a[g] = load(A + at(p) * lda + g * kLanes);
        for (int j = 0; j < Columns; ++j) {
            const Vector b = spread(Transposed ? B[at(j) * ldb + at(p)] : B[at(p) * ldb + at(j)]);
            for (int g = 0; g < kGroups; ++g)
                chain[j][g] = multiplyAdd(a[g], b, chain[j][g]);
        }
    };
    int p = 0;
    for (; p + kChains <= k; p += kChains)
        for (int q = 0; q < kChains; ++q)
            addProduct(p + q, sums[q]);
    for (; p < k; ++p)
        addProduct(p, sums[0]);
    for (int j = 0; j < Columns; ++j)
        for (int g = 0; g < kGroups; ++g) {
            KitReal* c = C + at(j) * ldc + g * kLanes;
            Vector sum = sums[0][j][g];
            if constexpr (kChains == 2)
                sum = add(sum, sums[1][j][g]);
            store(c, subtract(load(c), sum));
        }
}

template <bool Transposed>
void tile(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda, const KitReal* B,
          std::size_t ldb, int k, int columns) {
    for (int j = 0; j < columns; j += kColumnsAtOnce)
        withConstant<kColumnsAtOnce>(smaller(kColumnsAtOnce, columns - j), [&](auto count) {
            subtractTile<decltype(count)::value, Transposed>(
                C + at(j) * ldc, ldc, A, lda, B + (Transposed ? at(j) * ldb : at(j)), ldb, k);
        });
}

void solveRows(KitReal* C, std::size_t ldc, int rows, const KitReal* L, std::size_t ldl,
               const KitReal* inverse, int columns) {
    withConstant<kDynsPanelRows>(columns, [&](auto count) {
        constexpr int kColumns = decltype(count)::value;
        for (int i = 0; i < rows; i += kLanes) {
            Vector x[kColumns];
            for (int j = 0; j < kColumns; ++j) {
                x[j] = load(C + at(j) * ldc + i);
                for (int p = 0; p < j; ++p)
                    x[j] = subtractProduct(spread(L[at(p) * ldl + at(j)]), x[p], x[j]);
                x[j] = multiply(x[j], spread(inverse[j]));
                store(C + at(j) * ldc + i, x[j]);
            }
        }
    });
}

/// Columns of a panel that a solve takes at once.
constexpr int kSolveColumns = 4;

void forward(const KitReal* L, std::size_t ld, int rows, int pivots, const KitReal* inverse,
             KitReal* y) {
    for (int k = 0; k < pivots; k += kSolveColumns, L += kSolveColumns * ld)
        withConstant<kSolveColumns>(smaller(kSolveColumns, pivots - k), [&](auto count) {
            constexpr int kColumns = decltype(count)::value;
            KitReal x[kColumns];
            Vector wide[kColumns];
            for (int j = 0; j < kColumns; ++j) {
                x[j] = y[k + j];
                for (int p = 0; p < j; ++p)
                    x[j] -= L[at(p) * ld + at(k + j)] * x[p];
                y[k + j] = x[j] *= inverse[k + j];
                wide[j] = spread(x[j]);
            }
            int i = k + kColumns;
            for (; i < rows && i % kLanes != 0; ++i)
                for (int j = 0; j < kColumns; ++j)
                    y[i] -= L[at(j) * ld + at(i)] * x[j];
            for (; i < rows; i += kLanes) {
                Vector sum = load(y + i);
                for (int j = 0; j < kColumns; ++j)
                    sum = subtractProduct(load(L + at(j) * ld + i), wide[j], sum);
                store(y + i, sum);
            }
        });
}

inline KitReal sumOf(const Vector& vector) {
    KitReal lanes[kLanes];
    store(lanes, vector);
    KitReal sum = lanes[0];
    for (int i = 1; i < kLanes; ++i)
        sum += lanes[i];
    return sum;
}

void backward(const KitReal* L, std::size_t ld, int rows, int pivots, const KitReal* inverse,
              KitReal* y) {
    for (int k = (pivots - 1) / kSolveColumns * kSolveColumns; k >= 0; k -= kSolveColumns)
        withConstant<kSolveColumns>(smaller(kSolveColumns, pivots - k), [&](auto count) {
            constexpr int kColumns = decltype(count)::value;
            const KitReal* columns = L + at(k) * ld;
            KitReal x[kColumns] = {};
            Vector sums[kColumns];
            for (Vector& sum : sums)
                sum = spread(0);
            int i = k + kColumns;
            for (; i < rows && i % kLanes != 0; ++i)
                for (int j = 0; j < kColumns; ++j)
                    x[j] += columns[at(j) * ld + at(i)] * y[i];
            for (; i < rows; i += kLanes) {
                const Vector known = load(y + i);
                for (int j = 0; j < kColumns; ++j)
                    sums[j] = multiplyAdd(load(columns + at(j) * ld + i), known, sums[j]);
            }
            for (int j = kColumns - 1; j >= 0; --j) {
                x[j] = y[k + j] - (x[j] + sumOf(sums[j]));
                for (int p = j + 1; p < kColumns; ++p)
                    x[j] -= columns[at(j) * ld + at(k + p)] * y[k + p];
                y[k + j] = x[j] * inverse[k + j];
            }
        });
}

constexpr DynsKernelVariant variantNamed(const char* name) {
    return {name, tile<false>, tile<true>, solveRows, forward, backward};
}

} // namespace
