#include "runtime/resourcepool.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "gcbase/exception.h"

#include "base/emulation/emulatedbackend.h"

#include "core/ideviceresource.h"
#include "core/ivalue.h"
#include "framework/logcapture.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Properties = std::map<std::string, std::string>;

CInfoBase bagOf(const Properties& properties)
{
    CInfoBase bag;
    for (const auto& [name, value] : properties)
        bag.SetPropertyValue(GenICam::gcstring(name), GenICam::gcstring(value));
    return bag;
}

/// Cameras as the test says, all in use; fails where it says so.
class FakeBackend : public ICameraBackend
{
public:
    explicit FakeBackend(std::vector<Properties> cameras) { plug(std::move(cameras)); }

    void plug(std::vector<Properties> cameras)
    {
        cameras_.clear();
        for (const Properties& camera : cameras)
            cameras_.emplace_back(bagOf(camera));
    }
    std::vector<CDeviceInfo> EnumerateDevices() override
    {
        ++looks;
        const auto found = cameras_;
        if (const auto action = duringLook) action();  // a copy, for the test may replace it meanwhile
        if (isBroken) GENICAM_THROW(RuntimeException, "The network is down.");
        return found;
    }
    bool IsDeviceAccessible(const CDeviceInfo&) override
    {
        if (isBroken) GENICAM_THROW(RuntimeException, "The network is down.");
        return false;
    }
    std::unique_ptr<INivexDevice> CreateDevice(const CDeviceInfo& device) override
    {
        IsDeviceAccessible(device);
        return nullptr;
    }

    std::atomic<int> looks{0};
    bool isBroken = false;
    std::function<void()> duringLook;

private:
    std::vector<CDeviceInfo> cameras_;
};

const Properties left = {
    {"FullName", "A#1"}, {"ModelName", "A"}, {"SerialNumber", "1"}, {"IpAddress", "10.0.0.1"}};
const Properties right = {{"FullName", "A#2"}, {"ModelName", "A"}, {"SerialNumber", "2"}};
const Properties other = {{"FullName", "B#1"}, {"ModelName", "B"}, {"SerialNumber", "1"}};

class ResourcePoolTest : public testing::Test
{
protected:
    using Resources = std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>>;

    Resources query(const Properties& wanted = {})
    {
        return pool.query(deviceType, Core::ResourceInfo(bagOf(wanted)));
    }
    static std::vector<std::string> namesOf(const Resources& resources)
    {
        std::vector<std::string> names;
        for (const auto& [info, resource] : resources) {
            GenICam::gcstring name;
            info.getInfo().GetPropertyValue("FullName", name);
            names.push_back(name.str());
        }
        return names;
    }
    std::shared_ptr<Core::IDeviceResource> camera(const char* fullName)
    {
        const Resources found = query({{"FullName", fullName}});
        return found.size() == 1 ? std::dynamic_pointer_cast<Core::IDeviceResource>(found.begin()->second)
                                 : nullptr;
    }

    const Utils::TypeInfo deviceType = Utils::TypeInfo::get<Core::IDeviceResource>();
    const std::shared_ptr<FakeBackend> first = std::make_shared<FakeBackend>(std::vector{right, left});
    const std::shared_ptr<FakeBackend> second = std::make_shared<FakeBackend>(std::vector{other});
    ResourcePool pool{1, {first, second}};
};

}  // namespace

TEST_F(ResourcePoolTest, GivesCamerasThatHoldAllThatIsWanted)
{
    const struct
    {
        Properties wanted;
        std::vector<std::string> found;
    } cases[] = {
        {{}, {"A#1", "A#2", "B#1"}},
        {{{"ModelName", "A"}}, {"A#1", "A#2"}},
        {{{"SerialNumber", "1"}}, {"A#1", "B#1"}},
        {{{"ModelName", "A"}, {"SerialNumber", "1"}}, {"A#1"}},
        {{{"IpAddress", "10.0.0.1"}}, {"A#1"}},
        {{{"IpAddress", ""}}, {}},  // of no address is not without address
        {{{"ModelName", "a"}}, {}},
        {{{"ModelName", "A"}, {"Colour", "red"}}, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(namesOf(query(c.wanted)), c.found) << testing::PrintToString(c.wanted);
    EXPECT_EQ(first->looks, 1) << "a look takes a second; later queries go by the first";

    EXPECT_THAT(namesOf(pool.query(Utils::TypeInfo::get<Core::IResource>(), {})), testing::SizeIs(3));
    EXPECT_THAT(pool.query(Utils::TypeInfo::get<Core::IValue>(), {}), IsEmpty());
    EXPECT_THAT(pool.query({}, {}), IsEmpty());
    EXPECT_THROW(ResourcePool(1, {first, nullptr}), GenICam::InvalidArgumentException);
}

TEST_F(ResourcePoolTest, ADeviceReservesItsCameraAsLongAsItLives)
{
    ResourcePool emulated(1, {std::make_shared<CEmulatedCameraBackend>(2)});
    const Resources found = emulated.query(deviceType, {});
    ASSERT_EQ(found.size(), 2U);
    auto& reserved = dynamic_cast<Core::IDeviceResource&>(*found.begin()->second);
    auto device = reserved.getDevice();
    ASSERT_TRUE(device);
    EXPECT_EQ(Core::ResourceInfo(device->GetDeviceInfo()).getInfo(), found.begin()->first.getInfo());
    EXPECT_FALSE(reserved.isFree());
    EXPECT_FALSE(reserved.getDevice());
    EXPECT_TRUE(dynamic_cast<Core::IDeviceResource&>(*found.rbegin()->second).isFree());
    device.reset();
    EXPECT_TRUE(reserved.isFree());

    const auto silent = camera("A#1");
    const ScopedLogCapture log;
    first->isBroken = true;
    EXPECT_FALSE(silent->isFree());
    EXPECT_THROW(silent->getDevice(), GenICam::RuntimeException);
    EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("\"A#1\" is free. Message: The network is down.")));
}

TEST_F(ResourcePoolTest, RefreshTellsOfChangesAndKeepsWhatStayed)
{
    int changes = 0;
    std::thread::id teller;
    pool.getResourcesChangedSignal().connect([&] {
        ++changes;
        teller = std::this_thread::get_id();
        EXPECT_EQ(query().size(), 3U) << "the list is the new one, and may be asked for here";
    });
    const auto stays = camera("A#2");
    const auto goes = camera("A#1");
    EXPECT_EQ(changes, 0) << "nobody knew another list before the first query";

    pool.refresh(deviceType);
    EXPECT_EQ(changes, 0);
    Properties named = right;
    named["UserDefinedName"] = "Belt";
    first->plug({named, {{"FullName", "A#3"}}});
    pool.refresh(Utils::TypeInfo::get<Core::IValue>());
    EXPECT_EQ(first->looks, 2);
    std::thread looker([&] {
        const auto self = std::this_thread::get_id();
        pool.refresh(deviceType);
        EXPECT_EQ(teller, self);
    });
    looker.join();
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(namesOf(query()), ElementsAre("A#2", "A#3", "B#1"));
    EXPECT_EQ(camera("A#2"), stays);
    EXPECT_EQ(namesOf(query({{"UserDefinedName", "Belt"}})), std::vector<std::string>{"A#2"});
    EXPECT_FALSE(goes->isFree()) << "it answers, whoever keeps it";
}

TEST_F(ResourcePoolTest, ABackEndThatFailsTakesNothingFromTheOthers)
{
    const ScopedLogCapture log;
    first->isBroken = true;
    EXPECT_THAT(namesOf(query()), ElementsAre("B#1"));
    EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("The network is down.")));
    first->isBroken = false;
    pool.refresh(deviceType);
    EXPECT_EQ(query().size(), 3U);
    first->isBroken = true;
    second->plug({});
    pool.refresh(deviceType);
    EXPECT_THAT(namesOf(query()), ElementsAre("A#1", "A#2")) << "it did not say that they are gone";
}

// A look that found the old cameras ends after a younger one that found the new ones.
TEST_F(ResourcePoolTest, TheYoungestLookCounts)
{
    query();
    std::promise<void> looking;
    std::promise<void> mayEnd;
    first->duringLook = [&] {
        looking.set_value();
        mayEnd.get_future().wait();
    };
    std::thread late([&] { pool.refresh(deviceType); });
    looking.get_future().wait();
    first->duringLook = {};
    first->plug({});
    EXPECT_EQ(query().size(), 3U) << "a query waits for no look";
    pool.refresh(deviceType);
    mayEnd.set_value();
    late.join();
    EXPECT_THAT(namesOf(query()), ElementsAre("B#1"));
}

}  // namespace Nivex::DataProcessing::Runtime
