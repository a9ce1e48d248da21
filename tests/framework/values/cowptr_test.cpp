#include "utils/cowptr.h"

#include <functional>
#include <thread>
#include <vector>

#include "framework/refusal.h"

namespace {

using namespace Nivex::DataProcessing::Utils;
using GenICam::BadAllocException;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

/// Counts its copies and its living objects.
struct Counted
{
    explicit Counted(int number = 0) : value(number) { ++alive; }
    Counted(const Counted& other) : value(other.value)
    {
        ++copies;
        ++alive;
    }
    ~Counted() { --alive; }

    int value;
    static inline std::atomic<int> copies{0};
    static inline std::atomic<int> alive{0};
};
using Pointer = COWPtr<Counted>;

class COWPtrTest : public testing::Test
{
protected:
    void SetUp() override { Counted::copies = 0; }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};

TEST_F(COWPtrTest, ReadingSharersNeverCopies)
{
    Pointer first = Pointer::make(7);
    Pointer second = first;
    const Pointer third = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second->value + (*third).value + third.get()->value, 21);
    EXPECT_TRUE(second == third);
    EXPECT_FALSE(second.isUnique());
    EXPECT_EQ(Counted::copies, 0);
    EXPECT_EQ(Counted::alive, 1);
}

TEST_F(COWPtrTest, WritingCopiesOnceAndOnlyIfShared)
{
    Pointer first = Pointer::make(1);
    first.write().value = 2;
    EXPECT_EQ(Counted::copies, 0);
    Pointer second = first;
    second.write().value = 3;
    second.write().value = 4;
    first.write().value = 5;
    EXPECT_EQ(Counted::copies, 1);
    EXPECT_EQ(first->value, 5);
    EXPECT_EQ(second->value, 4);
    first = second;
    second.reset();
    EXPECT_TRUE(first.isUnique());
    first = *&first;
    EXPECT_EQ(first->value, 4);
}

TEST_F(COWPtrTest, AConstObjectIsCopiedByItsOnlyUser)
{
    Pointer pointer{static_cast<const Counted*>(new Counted(1))};
    EXPECT_TRUE(pointer.isConst());
    pointer.write().value = 2;
    EXPECT_FALSE(pointer.isConst());
    pointer.write().value = 3;
    EXPECT_EQ(Counted::copies, 1);
    EXPECT_EQ(pointer->value, 3);
}

TEST_F(COWPtrTest, EmptyPointersRefuseAccess)
{
    Pointer empty;
    EXPECT_EQ(refusal<RuntimeException>([&] { static_cast<void>(*empty); }), "Cannot dereference a nullptr.");
    EXPECT_EQ(refusal<RuntimeException>([&] { empty.write(); }), "Cannot dereference a nullptr.");
    EXPECT_EQ(refusal<RuntimeException>([&] { static_cast<void>(empty->value); }),
              "Cannot access nullptr object.");
    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_FALSE(empty.isUnique());
    Counted* const none = nullptr;
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { Pointer{none}; }), "No object passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { Pointer{static_cast<const Counted*>(none)}; }),
              "No object passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { Pointer{std::unique_ptr<Pointer::Wrapper>()}; }),
              "No object passed.");
}

/// A wrapper whose clone is what the test says.
struct OddWrapper : Pointer::Wrapper
{
    using MakeClone = std::function<std::unique_ptr<IObjectWrapper>()>;
    explicit OddWrapper(MakeClone clone) : makeClone(std::move(clone)) {}

    bool isConst() const override { return true; }
    const Counted* getConstPointer() const override { return &object; }
    Counted* getPointer() override { return nullptr; }
    std::unique_ptr<IObjectWrapper> clone() const override { return makeClone(); }

    Counted object{1};
    MakeClone makeClone;
};

TEST_F(COWPtrTest, RefusesUnusableClonesAndStaysAsItWas)
{
    using Wrapper = COWPtrBase::IObjectWrapper;
    const auto noClone = []() -> std::unique_ptr<Wrapper> { return nullptr; };
    const auto emptyClone = []() -> std::unique_ptr<Wrapper> {
        return std::make_unique<COWPtrBase::ObjectWrapper<Counted>>(nullptr);
    };
    const auto constClone = [=]() -> std::unique_ptr<Wrapper> { return std::make_unique<OddWrapper>(noClone); };
    const auto otherClone = []() -> std::unique_ptr<Wrapper> {
        return std::make_unique<COWPtrBase::ObjectWrapper<int>>(new int(1));
    };
    const auto refusalOfWrite = [](const OddWrapper::MakeClone& clone) {
        Pointer pointer(std::unique_ptr<Pointer::Wrapper>(std::make_unique<OddWrapper>(clone)));
        std::string text = refusal<RuntimeException>([&] { pointer.write(); });
        EXPECT_EQ(pointer->value, 1);
        return text;
    };
    EXPECT_EQ(refusalOfWrite(constClone), "Cloned object is const but must not be.");
    EXPECT_EQ(refusalOfWrite(otherClone), "Cannot cast pointer of cloned object to COW pointer.");
    EXPECT_EQ(refusalOfWrite(emptyClone), "Could not get pointer of cloned object.");
    Pointer pointer(std::unique_ptr<Pointer::Wrapper>(std::make_unique<OddWrapper>(noClone)));
    EXPECT_EQ(refusal<BadAllocException>([&] { pointer.write(); }), "Could not clone object.");
}

struct CloneOnly
{
    CloneOnly() = default;
    CloneOnly(const CloneOnly&) = delete;
    int generation = 0;
};
struct NextGeneration
{
    std::unique_ptr<CloneOnly> operator()(const CloneOnly& object) const
    {
        auto clone = std::make_unique<CloneOnly>();
        clone->generation = object.generation + 1;
        return clone;
    }
};

TEST_F(COWPtrTest, UsesTheGivenClonerAlsoForCopiesOfCopies)
{
    COWPtr<CloneOnly> first(new CloneOnly, std::default_delete<CloneOnly>(), NextGeneration());
    COWPtr<CloneOnly> second = first;
    second.write();
    const COWPtr<CloneOnly> third = second;
    EXPECT_EQ(second.write().generation, 2);
    EXPECT_EQ(first->generation, 0);
}

TEST_F(COWPtrTest, SharersOnManyThreadsWriteToTheirOwn)
{
    const Pointer origin = Pointer::make(1);
    std::vector<std::thread> threads;
    std::atomic<int> sum{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&sum, copy = origin]() mutable {
            for (int i = 0; i < 1000; ++i) {
                Pointer other = copy;
                other.write().value += 1;
                copy = std::move(other);
            }
            sum += copy->value;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 4 * 1001);
    EXPECT_EQ(origin->value, 1);
}

/// The last sharer writes in place, and what the others read before must be over by then; a race detector's case.
TEST_F(COWPtrTest, TheLastSharerWritesBehindTheOthersReads)
{
    for (int i = 0; i < 200; ++i) {
        Pointer mine = Pointer::make(i);
        std::thread reader([other = mine, i]() mutable {
            EXPECT_EQ(other->value, i);
            other.reset();
        });
        while (!mine.isUnique())
            std::this_thread::yield();
        mine.write().value = -1;
        reader.join();
    }
    EXPECT_EQ(Counted::copies, 0);
}

}  // namespace
