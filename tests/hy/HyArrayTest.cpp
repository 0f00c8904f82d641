#include <Hy/HyArray.h>
#include <Hy/HyFixedArray.h>
#include <Hy/HyMemoryPool.h>
#include <Hy/SortedVector.h>
#include "../kit/KitTestSupport.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <csignal>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Hy {
namespace {
/// Counts its live objects, and is too long to live inside std::string.
struct Tracked {
    static inline int live = 0;
    std::string text;

    explicit Tracked(int i) : text(std::to_string(i) + " and a tail beyond any small buffer") {
        ++live;
    }
    Tracked() : Tracked(0) {}
    Tracked(const Tracked& other) : text(other.text) { ++live; }
    Tracked& operator=(const Tracked&) = default;
    ~Tracked() { --live; }
    bool operator==(const Tracked&) const = default;
};

TEST(HyArrayTest, GrowsByHalfPlusOne) {
    HyArray<int> array;
    const std::size_t capacities[] = {1, 2, 4, 4, 7, 7, 7, 11};
    for (const std::size_t capacity : capacities) {
        array.push_back(1);
        EXPECT_EQ(array.capacity(), capacity);
    }
    array.clear();
    EXPECT_EQ(array.capacity(), 11u);
    array.resize(4);
    array.resize(12); // 4 + max(4, 8)
    EXPECT_EQ(array.capacity(), 12u);
    array.resize(13); // 12 + max(12, 1)
    EXPECT_EQ(array.capacity(), 24u);
    EXPECT_EQ(array.back(), 0);
    array.reserve(30);
    EXPECT_EQ(array.capacity(), 30u);
    array.clearMemoryBlock();
    EXPECT_EQ(array.capacity(), 0u);
}

TEST(HyArrayTest, TakesElementsOfItsOwn) {
    for (int n = 1; n < 9; ++n) { // full at 1, 2, 4 and 7
        HyArray<Tracked> array;
        for (int i = 0; i < n; ++i)
            array.push_back(Tracked(i));
        array.push_back(array[0]);
        EXPECT_EQ(array.back(), Tracked(0));
        array.insert(array.begin(), array.back());
        array.insert(array.begin() + 1, 20, array[static_cast<std::size_t>(n)]);
        EXPECT_EQ(array[20], Tracked(n - 1));
        array.resize(100, array[static_cast<std::size_t>(n)]);
        EXPECT_EQ(array[99], Tracked(n - 1));
        const std::size_t copies = array.eraseAll(array[99]);
        EXPECT_EQ(array.size(), 100 - copies);
        EXPECT_EQ(std::find(array.begin(), array.end(), Tracked(n - 1)), array.end());
    }
    EXPECT_EQ(Tracked::live, 0);
}

// Beside std::vector on random calls: same elements, every object destroyed, no block left.
TEST(HyArrayTest, AgreesWithAVector) {
    const unsigned seed = 99;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&random](std::size_t n) {
        return static_cast<std::ptrdiff_t>(random() % static_cast<unsigned>(n));
    };
    const CountingAllocator allocator;
    {
        HyArray<Tracked> array;
        std::vector<Tracked> vector;
        for (int i = 0; i < 3000; ++i) {
            const Tracked value(static_cast<int>(random() % 20));
            const auto at = below(vector.size() + 1),
                       to = at + below(vector.size() + 1 - static_cast<std::size_t>(at));
            switch (random() % 9) {
            case 0:
                EXPECT_EQ(array.insert(array.begin() + at, value) - array.data(), at);
                vector.insert(vector.begin() + at, value);
                break;
            case 1: {
                const Tracked two[] = {value, Tracked(-1)};
                array.insert(array.begin() + at, two, two + 2);
                vector.insert(vector.begin() + at, two, two + 2);
                break;
            }
            case 2:
                EXPECT_EQ(array.erase(array.begin() + at, array.begin() + to) - array.data(), at);
                vector.erase(vector.begin() + at, vector.begin() + to);
                break;
            case 3: {
                const auto found = std::find(vector.begin(), vector.end(), value);
                EXPECT_EQ(array.eraseOnce(value), found != vector.end());
                if (found != vector.end())
                    vector.erase(found);
                break;
            }
            case 4: {
                const bool isNew = std::find(vector.begin(), vector.end(), value) == vector.end();
                EXPECT_EQ(array.addUnique(value), isNew);
                if (isNew)
                    vector.push_back(value);
                break;
            }
            case 5:
                EXPECT_EQ(array.eraseAll(value), std::erase(vector, value));
                break;
            case 6: {
                const auto n = static_cast<std::size_t>(below(40));
                array.resize(n);
                vector.resize(n);
                break;
            }
            case 7: {
                HyArray<Tracked> copy(array), other;
                other = copy;
                array = std::move(other);
                break;
            }
            default:
                array.add() = value;
                vector.push_back(value);
            }
            ASSERT_EQ(array.size(), vector.size());
            ASSERT_TRUE(std::equal(array.rbegin(), array.rend(), vector.rbegin()));
        }
    }
    EXPECT_EQ(Tracked::live, 0);
    EXPECT_EQ(allocator.live, 0);
}

TEST(HyArrayDeathTest, RangeErrorsEndTheProcess) {
    const std::string text = "^HyFatalError\\{0\\}: HyArray::isValidIndex : range error\n$";
    HyArray<int> array = {1, 2}, empty;
    EXPECT_EXIT((void)array[2], testing::ExitedWithCode(1), text);
    EXPECT_EXIT((void)array.at(static_cast<std::size_t>(-1)), testing::ExitedWithCode(1), text);
    EXPECT_EXIT((void)empty.front(), testing::ExitedWithCode(1), text);
    EXPECT_EXIT((void)empty.back(), testing::ExitedWithCode(1), text);
    EXPECT_EXIT(empty.pop_back(), testing::ExitedWithCode(1), text);
    EXPECT_EXIT(array.erase(array.end()), testing::ExitedWithCode(1), text);
    EXPECT_EXIT(array.erase(array.end(), array.begin()), testing::ExitedWithCode(1), text);
    EXPECT_EXIT((void)HyFixedArray<int>(array)[2], testing::ExitedWithCode(1),
                "HyFixedArray::isValidIndex : range error\n");
    EXPECT_EXIT(array.reserve(SIZE_MAX / 2), testing::ExitedWithCode(1), "out of memory");
    EXPECT_EXIT( // never reads on
        {
            HySetFatalErrorHandler([](int, const char*, va_list) {});
            (void)array[2];
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(HyFixedArrayTest, ViewsStorageOfOthers) {
    HyArray<int> array = {1, 2, 3};
    const HyFixedArray<int> view(array);
    view[1] = 7;
    EXPECT_EQ(array[1], 7);
    const HyFixedArray<const int> constView(view), fromConst(std::as_const(array));
    EXPECT_EQ(constView.back(), 3);
    EXPECT_EQ(fromConst.begin(), array.data());
    EXPECT_TRUE(HyFixedArray<int>(nullptr, 3).empty());
}

TEST(SortedVectorTest, AgreesWithASet) {
    const unsigned seed = 5;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    SortedVector<int, std::greater<>> vector;
    std::set<int, std::greater<>> set;
    for (int i = 0; i < 2000; ++i) {
        const int value = static_cast<int>(random() % 100);
        if (random() % 2 == 0)
            EXPECT_EQ(vector.insert(value), set.insert(value).second);
        else
            EXPECT_EQ(vector.erase(value), set.erase(value) == 1);
        EXPECT_EQ(vector.contains(value), set.count(value) == 1);
        EXPECT_EQ(vector.find(value) != vector.end(), set.count(value) == 1);
        ASSERT_TRUE(std::equal(vector.begin(), vector.end(), set.begin(), set.end()));
    }
    const SortedVector<int, std::greater<>> copy(vector);
    vector.clear();
    EXPECT_EQ(copy.size(), set.size());
    EXPECT_EQ(copy[0], *set.begin());
}

TEST(HyMemoryPoolTest, ServesElementsOfOneSize) {
    const CountingAllocator allocator;
    {
        HyMemoryPool pool(sizeof(double), 2, 8);
        EXPECT_EQ(pool.getStructSize(), 8);
        double* a = pool.get<double>();
        pool.put(a);
        EXPECT_EQ(pool._get(), a);
        for (int i = 0; i < 10; ++i)
            *pool.get<double>() = i;
    }
    EXPECT_EQ(allocator.live, 0);
}

TEST(HyMemoryPoolDeathTest, RefusesAnotherSize) {
    HyMemoryPool pool(8, 2, 8);
    EXPECT_EXIT((void)pool.get<char>(), testing::ExitedWithCode(1),
                "HyMemoryPool.cpp: [0-9 ]+: HyMemoryPool::get: incorrect struct size.\n");
}
} // namespace
} // namespace Hy
