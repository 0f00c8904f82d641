#include <Hy/HyBase.h>
#include <Hy/HyNameValidation.h>
#include <Hy/HyPointer.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Hy {
namespace {

constexpr int kAnimalId = 9001, kDogId = 9002;

class Animal : public HyClass<kAnimalId, HyBase> {
public:
    explicit Animal(int legCount) : legs(legCount) {}
    const char* getClassName() const override { return "Animal"; }
    int legs;
};

class Dog : public HyClass<kDogId, Animal> {
public:
    Dog() : HyClass(4) {}
    const char* getClassName() const override { return "Dog"; }
};

/// Writes down whose turn it was, then does what it is told to.
struct Recorder : HyBase::Subscriber {
    Recorder(std::string& recorderLog, char recorderName) : log(recorderLog), name(recorderName) {}
    void notify(int event, HyBase* object) override {
        log += name;
        lastEvent = event;
        if (then)
            then(object);
    }
    std::string& log;
    char name;
    int lastEvent = -1;
    std::function<void(HyBase*)> then;
};

TEST(HyBaseTest, KnowsItsClassAndThoseAboveIt) {
    const Dog dog;
    const HyBase& base = dog;
    EXPECT_EQ(std::vector<int>(Dog::getIDVector().begin(), Dog::getIDVector().end()),
              (std::vector<int>{kDogId, kAnimalId, 257}));
    for (const int id : Dog::getIDVector()) {
        EXPECT_TRUE(base.isOfClassType(id)) << id;
        EXPECT_EQ(base.isOfExactClassType(id), id == kDogId) << id;
    }
    const Animal animal(3);
    EXPECT_FALSE(animal.isOfClassType(kDogId));
    EXPECT_EQ(dog.legs, 4);
}

TEST(HyBaseTest, NamesItselfWhenFirstAsked) {
    HyBase::resetHyBaseCounter();
    std::vector<std::unique_ptr<Dog>> dogs;
    for (int i = 0; i < 8; ++i)
        dogs.push_back(std::make_unique<Dog>());
    EXPECT_FALSE(dogs[7]->hasName());
    EXPECT_EQ(dogs[7]->getName(), "default_Dog_7");
    EXPECT_TRUE(dogs[7]->hasName());

    // Indices repeat, serials do not.
    HyBase::resetHyBaseCounter();
    const Dog twin;
    EXPECT_EQ(twin.getCreationIndex(), dogs[0]->getCreationIndex());
    EXPECT_TRUE(HyCreationOrder()(dogs[7].get(), &twin));
    EXPECT_FALSE(HyCreationOrder()(&twin, dogs[7].get()));
    EXPECT_TRUE(HyCreationOrder()(nullptr, dogs[0].get()));
}

TEST(HyBaseTest, CutsCombinedNames) {
    const std::string a(300, 'a'), b(300, 'b');
    struct Case {
        const char* what;
        std::string a, b;
        int number;
        std::string name;
    };
    const Case cases[] = {
        {"short", "arm", "left", 12, "arm_left_12"},
        {"negative number", "arm", "left", -2, "arm_left_-2"},
        {"first part", a, "b", 1, a.substr(0, 197) + "_b_1"},
        {"two parts", a, b, 123456, a.substr(0, 197) + "_" + b.substr(0, 50) + "_" + "123456"},
        {"whole", a, b, 1234567, a.substr(0, 197) + "_" + b.substr(0, 50) + "_" + "123456"},
    };
    HyBase object;
    for (const Case& c : cases) {
        object.setCombinedName(c.a.c_str(), c.b.c_str(), c.number);
        EXPECT_EQ(object.getName(), c.name) << c.what;
    }
    MessageCapture messages;
    object.setCombinedName(nullptr, "b");
    EXPECT_NE(messages.take().find("HyBase::setCombinedName: "), std::string::npos);
    EXPECT_EQ(object.getName(), std::begin(cases)[4].name);
}

TEST(HyBaseTest, ReplacesRestrictedCharactersInNames) {
    MessageCapture messages;
    HyBase object;
    object.setName("left/arm:2");
    EXPECT_EQ(object.getName(), "left_arm_2");
    EXPECT_EQ(messages.take(),
              "HyWarning{2}: Replaced invalid character '/' with '_'. Replaced invalid character "
              "':' with '_'. Complete name was: left/arm:2 New name is: left_arm_2.");
    object.setName("\\:;*?!\"%&$/<>|^'");
    EXPECT_EQ(object.getName(), std::string(16, '_'));
    messages.take();

    EXPECT_TRUE(HyNameValidation::setIsEnabled(false));
    object.setName("left/arm:2");
    EXPECT_EQ(object.getName(), "left/arm:2");
    EXPECT_FALSE(HyNameValidation::setIsEnabled(true));
    object.setName(nullptr);
    EXPECT_FALSE(object.hasName());
    EXPECT_EQ(messages.take(), "");
}

TEST(HyBaseTest, TellsOfItsEndTheFilteredListFirst) {
    std::string log;
    Recorder a(log, 'a'), b(log, 'b'), c(log, 'c'), creation(log, 'x');
    {
        HyBase object;
        object.addSubscriber(&a);
        object.addSubscriber(HyBase::kEventDestroy, &b);
        object.addSubscriber(HyBase::kEventCreate, &creation);
        object.addSubscriber(HyBase::kEventDestroy, &c);
        object.addSubscriber(HyBase::kEventDestroy, &b);
        EXPECT_TRUE(object.isSubscribed(&a));
        EXPECT_TRUE(object.isSubscribed(&creation));
        EXPECT_FALSE(object.isSubscribed(HyBase::kEventDestroy, &a));
        EXPECT_FALSE(object.isSubscribed(HyBase::kEventDestroy, &creation));
    }
    EXPECT_EQ(log, "bcba");
    EXPECT_EQ(a.lastEvent, HyBase::kEventDestroy);
}

TEST(HyBaseTest, RemovesOneSubscriptionAtATime) {
    std::string log;
    Recorder a(log, 'a');
    {
        HyBase object;
        for (int i = 0; i < 3; ++i) {
            object.addSubscriber(&a);
            object.addSubscriber(HyBase::kEventDestroy, &a);
        }
        object.removeSubscriber(&a);                        // one of each list
        object.removeSubscriber(HyBase::kEventDestroy, &a); // one of this list
    }
    EXPECT_EQ(log, "aaa");
}

// Whatever a subscriber does to the list, each of the others that stay is told once.
TEST(HyBaseTest, ListMayChangeWhileItsEndIsTold) {
    std::string log;
    Recorder a(log, 'a'), b(log, 'b'), c(log, 'c'), d(log, 'd'), late(log, 'x');
    auto gone = std::make_unique<Recorder>(log, 'g');
    a.then = [&](HyBase* object) { object->removeSubscriber(&a); };
    b.then = [&](HyBase* object) {
        object->removeSubscriber(&a); // was told already
        object->removeSubscriber(gone.get());
        gone.reset();
        object->addSubscriber(HyBase::kEventDestroy, &late);
        object->addSubscriber(&late);
    };
    c.then = [&](HyBase* object) { object->removeSubscriber(&c); };
    {
        HyBase object;
        for (HyBase::Subscriber* s :
             std::initializer_list<HyBase::Subscriber*>{&a, &a, &b, gone.get(), &c})
            object.addSubscriber(HyBase::kEventDestroy, s);
        object.addSubscriber(&d);
    }
    EXPECT_EQ(log, "aabcd");
}

TEST(HyBaseTest, TellsTheConstructorSubscriberOfEachObject) {
    std::string log;
    Recorder a(log, 'a');
    HyBase* created = nullptr;
    a.then = [&](HyBase* object) { created = object; };
    HyBase::setConstructorSubscriber(&a);
    EXPECT_EQ(HyBase::getConstructorSubscriber(), &a);
    const Dog dog;
    HyBase::setConstructorSubscriber(nullptr);
    const Dog other;
    EXPECT_EQ(log, "a");
    EXPECT_EQ(created, &dog);
    EXPECT_EQ(a.lastEvent, HyBase::kEventCreate);
}

TEST(HyBaseTest, TakesSubscribersFromAnyThread) {
    constexpr int kThreads = 4, kCount = 2000;
    HyBase object;
    std::string log;
    Recorder shared(log, 's');
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < kCount; ++n) {
                object.addSubscriber(&shared);
                object.addSubscriber(HyBase::kEventDestroy, &shared);
                object.removeSubscriber(&shared);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(object.isSubscribed(&shared));
}

TEST(HyPointerTest, BecomesNullWithItsTarget) {
    auto dog = std::make_unique<Dog>();
    Dog other;
    HyPointer<Animal> moved(dog.get()), kept(dog.get()), copy(kept);
    EXPECT_EQ(copy->legs, 4);
    {
        HyPointer<Animal> passing(dog.get());
        EXPECT_TRUE(passing.valid());
    }
    moved.changeTo(&other);
    dog.reset();
    EXPECT_TRUE(kept.isNull());
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(moved.get(), &other);
    kept = moved;
    EXPECT_EQ(kept.get(), &other);
    kept = kept.get();
    kept.clear();
    EXPECT_FALSE(other.isSubscribed(&kept));
    EXPECT_TRUE(other.isSubscribed(&moved));
    moved.clear(); // before its target, which is older
}

TEST(HyPointerTest, RefusesObjectsOfAnotherClass) {
    MessageCapture messages;
    Dog dog;
    Animal animal(2);
    HyPointer<Dog> pointer(&dog);
    pointer = static_cast<HyBase*>(&animal);
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: HyPointer::operator=: the object must be of the pointer's class.\n");
    EXPECT_EQ(pointer.get(), &dog);
    pointer = static_cast<HyBase*>(nullptr);
    EXPECT_TRUE(pointer.isNull());
    pointer = static_cast<HyBase*>(&dog);
    EXPECT_EQ(pointer.get(), &dog);
}

} // namespace
} // namespace Hy
