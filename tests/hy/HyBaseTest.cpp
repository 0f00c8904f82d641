#include <Hy/HyBase.h>

#include <gtest/gtest.h>

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

} // namespace
} // namespace Hy
