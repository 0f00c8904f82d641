#pragma once
#include "LcpOracle.h"

#include <Dyns/DynsParameters.h>

#include <Eigen/Dense>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

/// The published lookup2 hash, byte by byte as in its paper.
inline std::uint32_t lookup2(const unsigned char* k, std::uint32_t length, std::uint32_t seed) {
    std::uint32_t a = 0x9e3779b9, b = 0x9e3779b9, c = seed, left = length;
    const auto mix = [&] {
        a -= b;
        a -= c;
        a ^= (c >> 13); // clang-format off
        b -= c; b -= a; b ^= (a << 8);
        c -= a; c -= b; c ^= (b >> 13);
        a -= b; a -= c; a ^= (c >> 12);
        b -= c; b -= a; b ^= (a << 16);
        c -= a; c -= b; c ^= (b >> 5);
        a -= b; a -= c; a ^= (c >> 3);
        b -= c; b -= a; b ^= (a << 10);
        c -= a; c -= b; c ^= (b >> 15); // clang-format on
    };
    const auto byte = [&k](int i, int shift) { return static_cast<std::uint32_t>(k[i]) << shift; };
    for (; left >= 12; left -= 12, k += 12) {
        a += byte(0, 0) + byte(1, 8) + byte(2, 16) + byte(3, 24);
        b += byte(4, 0) + byte(5, 8) + byte(6, 16) + byte(7, 24);
        c += byte(8, 0) + byte(9, 8) + byte(10, 16) + byte(11, 24);
        mix();
    }
    c += length;
    for (int i = static_cast<int>(left) - 1; i >= 0; --i)
        if (i >= 8)
            c += byte(i, 8 * (i - 7)); // the lowest byte is the length's
        else
            (i >= 4 ? b : a) += byte(i, 8 * (i % 4));
    mix();
    return c;
}

/// Block principal pivoting step by step on a dense matrix: what the solver's index sets, counts and
/// points are measured against.
class PivotReference {
public:
    PivotReference(const BoxedLcp& lcp, const DynsLCPSolverParameters& parameters)
        : p(lcp), settings(parameters), index(static_cast<std::size_t>(lcp.size()), 0) {}

    int solve() {
        const double tol = settings.tolerance;
        for (std::size_t i = 0; i < index.size(); ++i)
            if (std::abs(p.lower[at(i)]) < tol && std::abs(p.upper[at(i)]) < tol)
                index[i] = 48;
        std::set<std::uint32_t> keys = {hash()};
        int it = 0, countdown = 0;
        bool single = false, recent = false;
        while (it < settings.max_iterations) {
            solvePoint();
            const int changed = update(single);
            converged = changed == 0;
            bool leave = converged, skip = false;
            if (settings.cycle_detection != 0) {
                const std::uint32_t key = hash();
                if (keys.count(key) == 0) {
                    keys.insert(key);
                } else if (single) {
                    ++giveUps;
                    it = -it;
                    leave = true;
                } else {
                    ++cycles;
                    single = recent = skip = true;
                    keys.clear();
                    countdown += 1;
                }
            }
            if (recent && !skip)
                ++countdown;
            if (countdown > 5) {
                ++returns;
                recent = single = false;
                keys.clear();
                countdown = 0;
            }
            if (settings.max_block_iterations < it)
                single = true;
            ++it;
            if (leave)
                break;
        }
        return it == settings.max_iterations ? -it : it;
    }

    const BoxedLcp& p;
    DynsLCPSolverParameters settings;
    std::vector<int> index;
    Eigen::VectorXd z, w;
    bool converged = false;
    int cycles = 0, giveUps = 0, returns = 0; ///< how often each turn of the method was taken

private:
    static Eigen::Index at(std::size_t i) { return static_cast<Eigen::Index>(i); }
    [[nodiscard]] std::uint32_t hash() const {
        std::vector<unsigned char> bytes(4 * index.size());
        std::memcpy(bytes.data(), index.data(), bytes.size());
        return lookup2(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 0);
    }
    void solvePoint() {
        std::vector<Eigen::Index> freeRows;
        z = Eigen::VectorXd::Zero(p.size());
        for (std::size_t i = 0; i < index.size(); ++i) {
            if (index[i] == 0)
                freeRows.push_back(at(i));
            if ((index[i] & 6) != 0)
                z[at(i)] = (index[i] & 2) != 0 ? p.lower[at(i)] : p.upper[at(i)];
        }
        const Eigen::VectorXd rest = p.b - p.A * z;
        const Eigen::MatrixXd block = p.A(freeRows, freeRows);
        const Eigen::VectorXd right = rest(freeRows);
        const Eigen::VectorXd x = block.llt().solve(right);
        z(freeRows) = x;
        w = p.A * z - p.b;
    }
    int update(bool single) {
        int changed = 0;
        for (std::size_t i = 0; i < index.size(); ++i) {
            if ((index[i] & 16) != 0)
                continue;
            const double zi = z[at(i)], wi = w[at(i)], tol = settings.tolerance;
            int next = zi < p.lower[at(i)] - tol ? 2 : zi > p.upper[at(i)] + tol ? 4 : 0;
            if (index[i] == 2 && wi > -tol)
                next += 2;
            if (index[i] == 4 && wi < tol)
                next += 4;
            if (next == index[i])
                continue;
            index[i] = next;
            ++changed;
            if (single)
                break;
        }
        return changed;
    }
};
