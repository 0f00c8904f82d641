#include <Hy/HyProducerPart.h>

#include <Hy/HyConsumerPart.h>
#include <Hy/HyEulerAngles.h>
#include <Hy/HyMappingPartID.h>
#include <Hy/HyPart.h>
#include <Hy/HyVector3.h>

#include "FrameFixture.h"

namespace Hy::ICD {
namespace {

struct Consumer : HyConsumerPart {
    void partAdded(unsigned id) override { log += "+" + std::to_string(id); }
    void partRemoved(unsigned id) override { log += "-" + std::to_string(id); }
    void partUpdated(unsigned id, const HyVector3& position, const HyVector3& orientation,
                     const HyVector3& linearVelocity, const HyVector3& angularVelocity) override {
        log += " " + std::to_string(id);
        last = {position, orientation, linearVelocity, angularVelocity};
        if (onUpdate)
            onUpdate();
    }
    std::string take() { return std::exchange(log, {}); }
    std::string log;
    std::vector<HyVector3> last;
    std::function<void()> onUpdate;
};

class HyProducerPartTest : public FrameFixture {
protected:
    HyProducerPart& addProducer(HyConsumerPart* consumer) {
        auto* producer = new HyProducerPart(&frame->getUniverse(), &mapping);
        producer->registerConsumer(consumer);
        frame->addStepper(producer);
        return *producer;
    }
    HyPart* addPart() {
        auto* part = new HyPart(1);
        frame->getUniverse().addPart(part);
        return part;
    }
    HyMappingPartIDMap mapping;
    Consumer first, second;
};

TEST_F(HyProducerPartTest, TellsOfPartsUnderOneNumberEach) {
    addPart();
    HyPart* part = addPart();
    addProducer(&first);
    addProducer(&second); // which shares the mapping
    part->setAngularVelocity(0, 0, 0.25);
    part->setLinearVelocity(3, 0, 0);
    frame->step();
    EXPECT_EQ(first.take(), " 0 1");
    EXPECT_EQ(second.take(), " 0 1");
    const HyEulerAngles angles = part->getOrientationEulerAngles();
    EXPECT_NE(angles.getThird(), 0);
    const std::vector<HyVector3> expected = {
        part->getPosition(), HyVector3(angles.getFirst(), angles.getSecond(), angles.getThird()),
        part->getLinearVelocity(), part->getAngularVelocity()};
    EXPECT_EQ(first.last, expected) << "after the step";

    delete part;
    EXPECT_EQ(first.take(), "-1");
    addPart(); // perhaps at the address of the one that is gone
    EXPECT_EQ(first.take(), "+2");
    frame->step();
    EXPECT_EQ(first.take(), " 0 2");
}

TEST_F(HyProducerPartTest, ConsumersMayLeaveInACall) {
    addPart();
    addPart();
    HyProducerPart& producer = addProducer(&first);
    producer.registerConsumer(&second);
    first.onUpdate = [&] {
        producer.unRegisterConsumer(&first);
        producer.unRegisterConsumer(&second);
    };
    frame->step();
    EXPECT_EQ(first.take() + second.take(), " 0 1 0 1");
    frame->step();
    EXPECT_EQ(first.take() + second.take(), "");

    first.onUpdate = [&] {
        frame->getUniverse().destroyPart(*frame->getUniverse().getParts().begin());
    };
    producer.registerConsumer(&first);
    frame->step();
    EXPECT_EQ(first.take(), " 0-0 1-1");
}

TEST_F(HyProducerPartTest, TellsNothingWithoutItsUniverse) {
    auto* universe = new HyUniverse(10, 10, nullptr);
    frame->addUniverse(universe);
    universe->addPart(new HyPart(1));
    HyProducerPart producer(universe, &mapping);
    producer.registerConsumer(&first);
    producer.registerConsumer(&first);
    producer.postUpdate();
    EXPECT_EQ(first.take(), " 0");
    delete universe;
    first.take();
    producer.postUpdate();
    EXPECT_EQ(first.take(), "");

    HyProducerPart none(nullptr, &mapping);
    EXPECT_TRUE(warned("HyProducerPart::HyProducerPart: "));
    none.registerConsumer(nullptr);
    EXPECT_TRUE(warned("HyProducerPart::registerConsumer: "));
    none.postUpdate();
    const unsigned nobody = mapping.map(nullptr);
    EXPECT_EQ(nobody, ~0U);
}

TEST_F(HyProducerPartTest, PrinterWritesWhatItReceives) {
    HyConsumerPartPrinter printer;
    testing::internal::CaptureStdout();
    printer.partAdded(7);
    printer.partUpdated(7, {1, 2, 3}, {0.5, 0, 0}, {4, 5, 6}, {7, 8, 9});
    printer.partRemoved(7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Part 7 added.\nPart 7 updated.\nPosition X:1.000000 Y:2.000000 Z:3.000000\n"
              "Orientation X:0.500000 Y:0.000000 Z:0.000000\n"
              "linearVelocity X:4.000000 Y:5.000000 Z:6.000000\n"
              "angularVelocity X:7.000000 Y:8.000000 Z:9.000000\nPart 7 removed.\n");
}

} // namespace
} // namespace Hy::ICD
