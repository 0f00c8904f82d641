#include <Hy/Find.h>
#include <Hy/HyBallAndSocket.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyFrame.h>
#include <Hy/HyPart.h>
#include <Hy/HySphere.h>
#include <Hy/HyUniverse.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

namespace Hy {
namespace {

TEST(FindTest, FindsTheOldestPartOfTheFirstUniverseThatHasTheName) {
    HyFrame::release();
    EXPECT_EQ(Find::part("arm"), nullptr); // and makes no frame
    EXPECT_EQ(HyFrame::currentInstance(), nullptr);

    HyFrame* frame = HyFrame::instance();
    HyUniverse& first = frame->getUniverse();
    auto* second = new HyUniverse(10, 10, nullptr);
    frame->addUniverse(second);
    HyBase::resetHyBaseCounter();
    HyPart *oldest = new HyPart, *older = new HyPart, *younger = new HyPart;
    oldest->setName("arm");
    older->setName("arm");
    younger->setName("arm");
    second->addPart(oldest);
    first.addPart(younger);
    first.addPart(older);
    auto* unnamed = new HyPart;
    second->addPart(unnamed);
    auto* joint = new HyBallAndSocket;
    joint->setName("arm");
    second->addConstraint(joint);

    EXPECT_EQ(Find::part("arm"), older);
    EXPECT_EQ(Find::part("arm", second), oldest);
    EXPECT_EQ(Find::part("Arm"), nullptr);
    EXPECT_EQ(Find::part("default_HyPart_" + std::to_string(unnamed->getCreationIndex())), unnamed);

    EXPECT_EQ(Find::constraint("arm"), joint);
    EXPECT_EQ(Find::constraint("arm", &first), nullptr);

    auto* extension = new HyDynamicsExtension;
    extension->setName("arm");
    second->addExtension(extension);
    auto* geometry = new HyCollisionGeometry(new HySphere(1));
    geometry->setName("arm");
    oldest->addCollisionGeometry(geometry);
    EXPECT_EQ(Find::extension("arm"), extension);
    EXPECT_EQ(Find::collisionGeometry("arm", second), geometry);

    MessageCapture messages;
    EXPECT_EQ(Find::part("arm", nullptr), nullptr);
    EXPECT_EQ(messages.take(), "HyWarning{0}: Find::part: universe must not be null.\n");
    HyFrame::release();
}

} // namespace
} // namespace Hy
