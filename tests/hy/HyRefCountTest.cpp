#include <Hy/HyBaseUserData.h>
#include <Hy/HyRefCount.h>
#include <Hy/HySmartPtr.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <utility>

namespace Hy {
namespace {

constexpr int kShapeId = 9003;

/// Has both roots, as shared geometry does.
class Shape : public HyClass<kShapeId, HyBaseUserData, HyRefCount> {
public:
    ~Shape() override {
        --alive;
        const HySmartPtr<Shape> last(this); // as a destructor may hand itself to somebody
    }
    Shape() { ++alive; }
    static inline int alive = 0;
};

struct EndCounter : HyRefCount::Subscriber {
    void notifyDeleted() override {
        ++count;
        if (object)
            object->removeHyRefCountSubscriber(this);
    }
    int count = 0;
    HyRefCount* object = nullptr;
};

TEST(HyRefCountTest, LivesAsLongAsItIsReferenced) {
    MessageCapture messages;
    auto* shape = new Shape;
    {
        HySmartPtr<Shape> a(shape), b(a), c;
        c = b;
        c = c.get();
        EXPECT_EQ(shape->referenceCount(), 3);
        HySmartPtr<Shape> moved(std::move(b));
        EXPECT_TRUE(!b);
        EXPECT_TRUE(moved == a);
        EXPECT_TRUE(moved == shape);
        EXPECT_EQ(shape->referenceCount(), 3);
        c.release();
        a = nullptr;
        EXPECT_EQ(shape->referenceCount(), 1);
        EXPECT_EQ(Shape::alive, 1);
    }
    EXPECT_EQ(Shape::alive, 0);

    shape = new Shape;
    shape->ref();
    shape->unref_nodelete();
    EXPECT_EQ(shape->referenceCount(), 0);
    EXPECT_EQ(Shape::alive, 1);
    shape->unref(); // nobody has referenced it: below 1 as well
    EXPECT_EQ(Shape::alive, 0);
    EXPECT_EQ(messages.take(), "");
}

TEST(HyRefCountTest, WarnsWhenDeletedWhileReferenced) {
    MessageCapture messages;
    {
        HyRefCount object;
        object.ref();
        object.ref();
    }
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: HyRefCount: deleting still referenced object (refcount = 2)\n"
              "HyWarning{0}: HyRefCount: memory corruption is possible.\n");
}

TEST(HyRefCountTest, TellsOfItsEnd) {
    EndCounter a, twice, removed;
    {
        HyRefCount object;
        a.object = &object;
        object.addHyRefCountSubscriber(&a);
        object.addHyRefCountSubscriber(&twice);
        object.addHyRefCountSubscriber(&removed);
        object.addHyRefCountSubscriber(&twice);
        object.removeHyRefCountSubscriber(&removed);
        const HyRefCount copy(object); // without the subscribers
        EXPECT_EQ(copy.referenceCount(), 0);
    }
    EXPECT_EQ(a.count, 1);
    EXPECT_EQ(twice.count, 2);
    EXPECT_EQ(removed.count, 0);
}

} // namespace
} // namespace Hy
