#include "utils/signal.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>

#include "framework/logcapture.h"
#include "framework/refusal.h"

namespace {

using namespace Nivex::DataProcessing::Utils;
using GenICam::BadAllocException;
using GenICam::InvalidArgumentException;
using Nivex::DataProcessing::Threading::RecursiveMutex;
using testing::ElementsAre;
using VoidSignal = Signal<void(), VoidCombiner>;

class SignalTest : public testing::Test
{
protected:
    /// A slot that notes its number.
    auto note(int number)
    {
        return [this, number] { calls_.push_back(number); };
    }
    std::vector<int> emit()
    {
        calls_.clear();
        signal_();
        return calls_;
    }

    std::vector<int> calls_;
    VoidSignal signal_;
};

TEST_F(SignalTest, CallsSlotsInTheOrderOfConnection)
{
    EXPECT_THAT(emit(), ElementsAre());
    signal_.connect(note(1));
    Connection second = signal_.connect(note(2));
    signal_.connect(note(3));
    EXPECT_THAT(emit(), ElementsAre(1, 2, 3));
    second.disconnect();
    second.disconnect();
    EXPECT_FALSE(second.isConnected());
    EXPECT_THAT(emit(), ElementsAre(1, 3));
}

TEST_F(SignalTest, PassesArgumentsToEachSlot)
{
    Signal<void(const std::string&, int), VoidCombiner> signal;
    std::string text;
    for (int i = 0; i < 2; ++i)
        signal.connect([&](const std::string& part, int count) { text += part + std::to_string(count); });
    signal("ab", 2);
    EXPECT_EQ(text, "ab2ab2");
}

TEST_F(SignalTest, SlotsMayChangeTheListWhileItIsWalked)
{
    Connection self;
    Connection next;
    self = signal_.connect([&] {
        calls_.push_back(1);
        self.disconnect();
        next.disconnect();
        signal_.connect(note(4));
    });
    next = signal_.connect(note(2));
    signal_.connect(note(3));
    EXPECT_THAT(emit(), ElementsAre(1, 3)) << "a slot not yet called is skipped, a new one waits for its turn";
    EXPECT_THAT(emit(), ElementsAre(3, 4));
}

TEST_F(SignalTest, SlotsMayEmitAgain)
{
    signal_.connect([this] {
        calls_.push_back(1);
        if (calls_.size() < 3) signal_();
    });
    EXPECT_THAT(emit(), ElementsAre(1, 1, 1));
}

/// Also shows that no lock of the list is held while slots run.
TEST_F(SignalTest, OtherThreadsMayChangeTheListWhileItIsWalked)
{
    Connection victim;
    signal_.connect([&] {
        std::thread([&] {
            victim.disconnect();
            signal_.connect(note(3));
        }).join();
        calls_.push_back(1);
    });
    victim = signal_.connect(note(2));
    EXPECT_THAT(emit(), ElementsAre(1));
    EXPECT_THAT(emit(), ElementsAre(1, 3));
}

TEST_F(SignalTest, AThrowingSlotStopsNobodyAndLeavesOneLine)
{
    const struct
    {
        std::function<void()> slot;
        const char* tail;
    } cases[] = {
        {[] { GENICAM_THROW(RuntimeException, "100%% broken"); },
         ": Exception caught while invoking a slot. Message: 100% broken"},
        {[] { throw std::out_of_range("gone %s"); }, ": Exception caught while invoking a slot. Message: gone %s"},
        {[] { throw 1; }, ": Unknown exception caught while invoking a slot."},
    };
    for (const auto& c : cases) {
        ScopedLogCapture log;
        const ScopedConnection first(signal_.connect(note(1)));
        const ScopedConnection second(signal_.connect(c.slot));
        const ScopedConnection third(signal_.connect(note(3)));
        EXPECT_THAT(emit(), ElementsAre(1, 3));
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0].severity, 4);
        EXPECT_EQ(log.lines()[0].category, "nivex.dataprocessing.utils.SlotCombiner");
        EXPECT_THAT(log.lines()[0].message, testing::MatchesRegex("SlotCombiner 0x[0-9a-f]+: .*"));
        EXPECT_THAT(log.lines()[0].message, testing::EndsWith(c.tail));
    }
}

TEST_F(SignalTest, RefusesWhatItCannotConnect)
{
    const auto lock = std::make_shared<RecursiveMutex>();
    const auto trackable = std::make_shared<int>();
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { signal_.connect(nullptr, note(1), trackable); }),
              "No lockable passed.");
    EXPECT_EQ(refusal<BadAllocException>([&] { signal_.connect(lock, note(1), nullptr); }),
              "Invalid trackable object passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([] { VoidSignal{nullptr}; }), "No lockable passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([] { ExceptionResult<void>{nullptr}; }),
              "Invalid exception pointer passed.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { signal_.connect({}); }), "No slot passed.");
}

TEST_F(SignalTest, HoldsTheListenersLockDuringItsCall)
{
    const auto lock = std::make_shared<RecursiveMutex>();
    bool free = true;
    signal_.connect(
        lock, [&] { std::thread([&] { free = lock->tryLock(); }).join(); }, lock);
    emit();
    EXPECT_FALSE(free);
    EXPECT_TRUE(lock->tryLock());
    lock->unlock();
}

TEST_F(SignalTest, AConnectionEndsWithItsTrackableAndWithTheSignal)
{
    auto trackable = std::make_shared<int>();
    const Connection tracked = signal_.connect(std::make_shared<RecursiveMutex>(), note(1), trackable);
    const Connection plain = signal_.connect(note(2));
    EXPECT_THAT(emit(), ElementsAre(1, 2));
    EXPECT_EQ(trackable.use_count(), 1);
    trackable.reset();
    EXPECT_FALSE(tracked.isConnected());
    EXPECT_THAT(emit(), ElementsAre(2));

    auto signal = std::make_unique<VoidSignal>();
    Connection connection = signal->connect(note(3));
    signal.reset();
    EXPECT_FALSE(connection.isConnected());
    connection.disconnect();
    EXPECT_TRUE(plain.isConnected());
}

TEST_F(SignalTest, ScopedConnectionsEndWhatTheyHold)
{
    std::optional<ScopedConnection> scoped(signal_.connect(note(1)));
    ScopedConnection other;
    other = std::move(*scoped);
    scoped.reset();
    EXPECT_THAT(emit(), ElementsAre(1));
    other.set(signal_.connect(note(2)));
    EXPECT_THAT(emit(), ElementsAre(2));
    other.set(signal_.connect(note(3)), false);
    EXPECT_THAT(emit(), ElementsAre(2, 3));
    other.release();
    EXPECT_FALSE(other.isConnected());
    EXPECT_THAT(emit(), ElementsAre(2, 3));
}

TEST_F(SignalTest, StandsEmissionsAndChangesOnManyThreads)
{
    std::atomic<int> calls{0};
    std::atomic<bool> stop{false};
    const Connection steady = signal_.connect([&] { ++calls; });
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] {
            while (!stop)
                const ScopedConnection passing(signal_.connect([&] { ++calls; }));
        });
    }
    for (int i = 0; i < 2000; ++i)
        signal_();
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(calls, 2000);
    calls = 0;
    signal_();
    EXPECT_EQ(calls, 1);
}

}  // namespace
