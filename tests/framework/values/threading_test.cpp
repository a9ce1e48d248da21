#include <thread>

#include "framework/refusal.h"
#include "threading/conditionvariable.h"
#include "threading/recursiveclock.h"

namespace {

using namespace Nivex::DataProcessing::Threading;
using GenICam::RuntimeException;

bool isFree(IRecursiveLockable& lockable)
{
    bool free = false;
    std::thread([&] {
        free = lockable.tryLock();
        if (free) lockable.unlock();
    }).join();
    return free;
}

template <typename L>
class LockTest : public testing::Test
{
protected:
    L lockable_;
};
using LockTypes = testing::Types<RecursiveMutex, RecursiveCLock>;
TYPED_TEST_SUITE(LockTest, LockTypes);

TYPED_TEST(LockTest, IsRecursiveForItsOwnerOnly)
{
    this->lockable_.lock();
    EXPECT_TRUE(this->lockable_.tryLock());
    this->lockable_.unlock();
    EXPECT_FALSE(isFree(this->lockable_));
    this->lockable_.unlock();
    EXPECT_TRUE(isFree(this->lockable_));
}

TYPED_TEST(LockTest, IsHeldOnceByAUniqueLock)
{
    {
        UniqueLock<TypeParam> lock(this->lockable_);
        EXPECT_FALSE(isFree(this->lockable_));
        EXPECT_EQ(refusal<RuntimeException>([&] { lock.lock(); }),
                  "Lockable is already owned by this unique lock.");
        lock.unlock();
        EXPECT_TRUE(isFree(this->lockable_));
        EXPECT_EQ(refusal<RuntimeException>([&] { lock.unlock(); }), "Lockable is not owned by this unique lock.");
        lock.lock();
        UniqueLock<TypeParam> taken(std::move(lock));
        EXPECT_FALSE(lock.ownsLock());
        EXPECT_TRUE(taken.ownsLock());
    }
    EXPECT_TRUE(isFree(this->lockable_));
}

TEST(UniqueLockTest, RefusesToWorkWithoutLockable)
{
    UniqueLock<IRecursiveLockable> none;
    UniqueLock<IRecursiveLockable> null{std::shared_ptr<IRecursiveLockable>()};
    for (auto* lock : {&none, &null}) {
        EXPECT_EQ(refusal<RuntimeException>([&] { lock->lock(); }),
                  "No lockable is associated with this unique lock.");
        EXPECT_EQ(refusal<RuntimeException>([&] { lock->unlock(); }),
                  "No lockable is associated with this unique lock.");
        EXPECT_EQ(refusal<RuntimeException>([&] { ConditionVariableAny().wait(*lock); }),
                  "Passed unique lock does not own a lockable.");
    }
    RecursiveMutex mutex;
    UniqueLock deferred(mutex, std::defer_lock);
    EXPECT_EQ(refusal<RuntimeException>([&] { ConditionVariableAny().wait(deferred); }),
              "Lockable is not owned by this unique lock.");
}

TEST(RecursiveCLockTest, SharesOneLockWithItsNodeMaps)
{
    RecursiveCLock lockable;
    const GenApi::AutoLock held(lockable.getLock());
    EXPECT_FALSE(isFree(lockable));
}

/// Two threads hand a number to and fro; each move needs the other's notification.
TYPED_TEST(LockTest, ConditionVariableGivesUpTheLockWhileItWaits)
{
    ConditionVariableAny turnChanged;
    int turn = 0;
    const auto play = [&](int own) {
        UniqueLock<TypeParam> lock(this->lockable_);
        for (int i = 0; i < 100; ++i) {
            turnChanged.wait(lock, [&] { return turn % 2 == own; });
            ++turn;
            turnChanged.notifyAll();
        }
    };
    std::thread other(play, 1);
    play(0);
    other.join();
    EXPECT_EQ(turn, 200);
}

TYPED_TEST(LockTest, ConditionVariableWaitsForATime)
{
    ConditionVariableAny changed;
    UniqueLock<TypeParam> lock(this->lockable_);
    EXPECT_FALSE(changed.waitFor(lock, std::chrono::milliseconds(1), [] { return false; }));
    EXPECT_TRUE(lock.ownsLock());
    EXPECT_FALSE(isFree(this->lockable_));
    bool done = false;
    std::thread other([&] {
        const UniqueLock<TypeParam> otherLock(this->lockable_);
        done = true;
        changed.notifyOne();
    });
    EXPECT_TRUE(changed.waitFor(lock, std::chrono::minutes(1), [&] { return done; }));
    other.join();
}

}  // namespace
