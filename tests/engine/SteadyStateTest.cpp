#include "EngineFixture.h"
#include "support/HeapCounter.h"

namespace {

class SteadyStateTest : public EngineFixture {
protected:
    void SetUp() override {
        HeapCounter::watchMemoryTable(true);
        EngineFixture::SetUp();
    }
    void TearDown() override {
        EngineFixture::TearDown();
        HeapCounter::watchMemoryTable(false);
    }
};

} // namespace

// Neither through the table of memory functions nor by operator new, in any thread.
TEST_F(SteadyStateTest, AStepMakesNoHeapCall) {
    for (const int threads : {1, 2}) {
        start(threads);
        std::vector<Hy::HyPart*> parts;
        for (int i = 0; i < 200; ++i)
            parts.push_back(&addPart(1 + i));
        for (int i = 0; i < 20; ++i) {
            parts[0]->addForce(Hy::HyVector3(1, 0, 0));
            frame->step();
        }
        const long before = HeapCounter::calls();
        ASSERT_GT(before, 0) << "the counters count";
        for (int i = 0; i < 20; ++i) {
            parts[0]->addForce(Hy::HyVector3(1, 0, 0));
            frame->step();
        }
        EXPECT_EQ(HeapCounter::calls() - before, 0) << threads << " threads";
    }
}
