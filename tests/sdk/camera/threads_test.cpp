// What several threads do with a camera at once. Order is forced by gates where a claim depends on it; the rest
// runs freely and is judged by what must hold in any order, and by the thread sanitizer.
#include <atomic>
#include <future>
#include <thread>

#include "sdk/camera/cameraworld.h"

using namespace CameraTest;

namespace {

constexpr EGrabLoop ownLoop = EGrabLoop::ProvidedByInstantCamera;

/// Something that happens once.
class Gate
{
public:
    void Open() { promise_.set_value(); }
    void Wait() const { future_.wait(); }

private:
    std::promise<void> promise_;
    std::shared_future<void> future_ = promise_.get_future().share();
};

/// A world whose image handler waits in its first call until it is let go.
struct BusyWorld : World
{
    BusyWorld()
    {
        handler.onImage = [this](const CGrabResultPtr&) {
            if (handled++ > 0) return;
            entered.Open();
            letGo.Wait();
        };
        Register(handler);
        camera.StartGrabbing(EGrabStrategy::OneByOne, ownLoop);
        device->PushFrame();
        entered.Wait();
    }
    ~BusyWorld()
    {
        camera.DetachDevice();
        camera.DeregisterImageEventHandler(&handler);
    }

    Gate entered;
    Gate letGo;
    ImageHandler handler;
    std::atomic<int> handled = 0;
};

// A caller may hold a lock that the handler is waiting for, when he stops and when he starts again; the handler
// gets the next result only after it is through with the one before.
TEST(CameraThreads, StoppingAndStartingDoNotWaitForHandlers)
{
    BusyWorld world;
    world.camera.StopGrabbing();
    EXPECT_FALSE(world.camera.IsGrabbing());
    world.camera.StartGrabbing(1, EGrabStrategy::OneByOne, ownLoop);
    EXPECT_TRUE(world.device->PushFrame());
    EXPECT_EQ(world.Get("NumReadyBuffers"), 1);
    EXPECT_EQ(world.handled, 1);
    world.letGo.Open();
    world.camera.Close();
    EXPECT_EQ(world.handled + world.camera.GetNumberOfDiscardedResults(), 2U);
}

// What must not go on before the handler has ended does not.
TEST(CameraThreads, OthersWaitForTheHandler)
{
    const std::pair<const char*, std::function<void(BusyWorld&)>> operations[] = {
        {"Close", [](BusyWorld& world) { world.camera.Close(); }},
        {"DetachDevice", [](BusyWorld& world) { world.camera.DetachDevice(); }},
        {"WaitForGrabLoop",
         [](BusyWorld& world) {
             world.camera.StopGrabbing();
             world.camera.WaitForGrabLoop();
         }},
        {"Deregister", [](BusyWorld& world) { world.camera.DeregisterImageEventHandler(&world.handler); }},
    };
    for (const auto& [name, operation] : operations) {
        SCOPED_TRACE(name);
        BusyWorld world;
        const std::future<void> done = std::async(std::launch::async, [&, run = &operation] { (*run)(world); });
        // Long enough for what does not wait to be caught at it.
        EXPECT_EQ(done.wait_for(20ms), std::future_status::timeout);
        // Nothing of the camera is locked meanwhile.
        EXPECT_TRUE(world.camera.IsNivexDeviceAttached());
        EXPECT_NO_THROW(world.camera.StopGrabbing());
        world.letGo.Open();
        done.wait();
        EXPECT_EQ(world.handled, 1);
    }
}

// The handler of an image may itself stop, and start anew.
TEST(CameraThreads, AHandlerMayRestartTheGrabbing)
{
    ImageHandler handler;
    Gate done;
    std::vector<std::uint64_t> numbers;
    World world;
    handler.onImage = [&](const CGrabResultPtr& result) {
        numbers.push_back(result->GetImageNumber());
        world.camera.WaitForGrabLoop();
        world.camera.StopGrabbing();
        if (numbers.size() == 3) return done.Open();
        world.camera.StartGrabbing(EGrabStrategy::OneByOne, ownLoop);
        world.device->PushFrame();
    };
    world.Register(handler);
    world.camera.StartGrabbing(EGrabStrategy::OneByOne, ownLoop);
    world.device->PushFrame();
    done.Wait();
    world.camera.Close();
    EXPECT_EQ(numbers, (std::vector<std::uint64_t>{1, 1, 1}));
}

// Results wake who waits for them; so do the end of the grabbing and the end of the camera's cable.
TEST(CameraThreads, WaitingForAResultEnds)
{
    const std::pair<bool, std::function<void(World&)>> rows[] = {
        {true, [](World& world) { world.device->PushFrame(); }},
        {false, [](World& world) { world.camera.StopGrabbing(); }},
        {false,
         [](World& world) {
             world.camera.StopGrabbing();
             world.camera.StartGrabbing();
         }},
        {false, [](World& world) { world.device->Remove(); }},
    };
    for (const auto& row : rows) {
        World world;
        world.camera.StartGrabbing();
        std::thread other([&] { row.second(world); });
        CGrabResultPtr result;
        // The other may have stopped and started before this waits: then nothing would come.
        const auto timeout = std::chrono::milliseconds(row.first ? 60000 : 200);
        EXPECT_EQ(world.camera.RetrieveResult(timeout, result, ETimeoutHandling::Return), row.first);
        EXPECT_EQ(result.IsValid(), row.first);
        other.join();
    }
}

// The removal is told without the camera's lock, so that another thread can be waited for that uses the camera.
TEST(CameraThreads, ARemovalIsToldWithoutALock)
{
    Steps steps;
    World world;
    steps.onStep = [&](const gcstring& step) {
        if (step == "OnCameraDeviceRemoved") std::thread([&] { world.camera.StopGrabbing(); }).join();
    };
    world.Register(steps);
    world.camera.StartGrabbing();
    world.device->Remove();
    EXPECT_FALSE(world.state->isStreaming);
    world.camera.DeregisterConfiguration(&steps);
}

/// Runs `work` over and over on a thread, until it is destroyed.
class Repeated
{
public:
    explicit Repeated(std::function<void()> work)
        : thread_([this, work = std::move(work)] {
              while (!ends_) {
                  work();
                  std::this_thread::yield();  // a lock that is free for moments only would starve others
              }
          })
    {}
    ~Repeated()
    {
        ends_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

/// Holds some results for a while, and drops them on whatever thread comes by.
class Hoard
{
public:
    void Add(const CGrabResultPtr& result)
    {
        CGrabResultPtr oldest;
        const std::lock_guard lock(mutex_);
        kept_.push_back(result);
        if (kept_.size() < 8) return;
        oldest = kept_.front();
        kept_.pop_front();
    }
    void Clear()
    {
        std::deque<CGrabResultPtr> all;
        const std::lock_guard lock(mutex_);
        all.swap(kept_);
    }

private:
    std::mutex mutex_;
    std::deque<CGrabResultPtr> kept_;
};

// Frames without end, stops and starts at any moment, results that are released late: each frame that got a buffer
// is handled, skipped or discarded, exactly, and everything that was in use is free at the end.
TEST(CameraThreads, EveryFrameIsAccountedFor)
{
    for (const EGrabLoop loop : {EGrabLoop::ProvidedByInstantCamera, EGrabLoop::ProvidedByUser}) {
        for (const EGrabStrategy strategy : {EGrabStrategy::OneByOne, EGrabStrategy::LatestImageOnly}) {
            Hoard hoard;
            ImageHandler handler;
            std::atomic<std::uint64_t> handled = 0;
            std::atomic<std::uint64_t> skipped = 0;
            std::uint64_t taken = 0;
            handler.onSkipped = [&](std::size_t count) { skipped += count; };
            handler.onImage = [&](const CGrabResultPtr& result) {
                EXPECT_EQ(*static_cast<std::uint8_t*>(result->GetBuffer()), result->GetBlockID() % 256);
                ++handled;
                hoard.Add(result);
            };
            World world;
            world.Register(handler);
            world.camera.Open();
            {
                const Repeated pushing([&] { taken += world.device->PushFrame() ? 1 : 0; });
                const Repeated releasing([&] { hoard.Clear(); });
                const Repeated fetching([&] {
                    if (loop == EGrabLoop::ProvidedByUser) world.Take();
                });
                for (int i = 0; i < 100; ++i) {
                    world.camera.StartGrabbing(strategy, loop);
                    const std::uint64_t before = handled;
                    while (handled < before + 3)
                        std::this_thread::yield();
                    world.camera.StopGrabbing();
                }
            }
            world.camera.WaitForGrabLoop();
            EXPECT_EQ(taken, handled + skipped + world.camera.GetNumberOfDiscardedResults());
            hoard.Clear();
            world.camera.Close();
        }
    }
}

// The cable is pulled at any moment, while others start, stop, write parameters, send events and close.
TEST(CameraThreads, ARemovalMayComeAtAnyTime)
{
    for (int round = 0; round < 100; ++round) {
        Hoard hoard;
        std::atomic<int> removals = 0;
        ImageHandler images;
        images.onImage = [&](const CGrabResultPtr& result) { hoard.Add(result); };
        EventHandler events;
        Steps steps;
        steps.onStep = [&](const gcstring& step) { removals += step == "OnCameraDeviceRemoved" ? 1 : 0; };
        World world;
        events.onEvent = [&](std::intptr_t, GenApi::INode*) { world.camera.GetNodeMap(); };
        world.Register(images);
        world.Register(steps);
        world.camera.RegisterCameraEventHandler(&events, "EventData", 0, ERegistrationMode::Append,
                                                ECleanup::None);
        world.camera.Open();
        const auto tolerant = [](const auto& action) {
            try {
                action();
            } catch (const GenICam::GenericException&) {
                std::this_thread::yield();
            }
        };
        {
            const Repeated pushing([&] { world.device->PushFrame(); });
            const Repeated sending([&] { world.device->PushEvent(0xA001, 1); });
            const Repeated writing(
                [&] { tolerant([&] { CIntegerParameter(world.camera.GetNodeMap(), "Gain").SetValue(1); }); });
            const Repeated running([&] {
                tolerant([&] { world.camera.StartGrabbing(EGrabStrategy::OneByOne, ownLoop); });
                tolerant([&] { world.camera.StopGrabbing(); });
                if (round % 2 == 0) tolerant([&] { world.camera.Close(); });
            });
            for (int i = 0; i < round; ++i)
                std::this_thread::yield();
            std::thread([&] { world.device->Remove(); }).join();
        }
        EXPECT_FALSE(world.camera.IsGrabbing());
        EXPECT_LE(removals, 1);
        EXPECT_NO_THROW(world.camera.StopGrabbing());
        EXPECT_NO_THROW(world.camera.DetachDevice());
        EXPECT_FALSE(world.state->isAlive);
    }
}

// Handlers come and go while they are called; each that has gone is called no more.
TEST(CameraThreads, HandlersAreDeregisteredWhileTheyRun)
{
    World world;
    world.camera.StartGrabbing(EGrabStrategy::OneByOne, ownLoop);
    const Repeated pushing([&] { world.device->PushFrame(); });
    for (int i = 0; i < 200; ++i) {
        Gate called;
        std::atomic<int> calls = 0;
        auto handler = std::make_unique<ImageHandler>();
        handler->onImage = [&](const CGrabResultPtr&) {
            if (++calls == 1) called.Open();
        };
        world.Register(*handler);
        called.Wait();
        EXPECT_TRUE(world.camera.DeregisterImageEventHandler(handler.get()));
        handler.reset();
    }
    world.camera.StopGrabbing();
}

}  // namespace
