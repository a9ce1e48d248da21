#include "utils/typeinfo.h"

#include <gmock/gmock.h>

#include "core/values.h"
#include "framework/logcapture.h"
#include "framework/refusal.h"
#include "utils/signal.h"
#include "utils/typeregistrar.h"

namespace TypeInfoTest {

template <typename T, int n>
struct Numbered
{};
template <typename... T>
struct Pack
{};

struct Left
{
    virtual ~Left() = default;
    int left = 1;
};
struct Right
{
    virtual ~Right() = default;
    int right = 2;
};
struct Both : Left, Right
{
    int both = 3;
};
struct Unregistered
{};
struct NeverRegistered
{};
struct Uncopyable
{
    Uncopyable() = default;
    Uncopyable(const Uncopyable&) = delete;
};

}  // namespace TypeInfoTest

namespace {

using namespace Nivex::DataProcessing;
using namespace TypeInfoTest;
using Core::Array;
using Core::IArray;
using Core::Image;
using Core::Integer;
using Core::IValue;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Utils::COWPtr;
using Utils::TypeInfo;
using Utils::TypeRegistrar;

template <typename T>
std::string identifier()
{
    int length = -1;
    TypeInfo::getTypeIdentifier<T>(nullptr, &length);
    std::string buffer(static_cast<std::size_t>(length) + 2, '#');
    TypeInfo::getTypeIdentifier<T>(buffer.data(), &length);
    EXPECT_EQ(buffer.substr(static_cast<std::size_t>(length)), std::string("\0#", 2))
        << "zero byte, nothing behind it";
    return buffer.substr(0, static_cast<std::size_t>(length));
}

TEST(TypeIdentifier, IsSpelledAlikeByAllCompilers)
{
    const std::string core = "Nivex::DataProcessing::Core::";
    const std::string cow = "Nivex::DataProcessing::Utils::COWPtr<";
    const std::pair<std::string, std::string> cases[] = {
        {identifier<Image>(), core + "Image"},
        {identifier<COWPtr<Integer>>(), cow + core + "Integer>"},
        {identifier<COWPtr<Array<Integer>>>(), cow + core + "Array<" + core + "Integer> >"},
        {identifier<std::vector<Core::String>>(),
         "std::vector<" + core + "String, std::allocator<" + core + "String> >"},
        {identifier<Utils::Signal<void(), Utils::VoidCombiner>>(),
         "Nivex::DataProcessing::Utils::Signal<void(), Nivex::DataProcessing::Utils::VoidCombiner>"},
        {identifier<Pack<void(int, unsigned long), bool>>(),
         "TypeInfoTest::Pack<void(int, long unsigned int), bool>"},
        {identifier<Pack<>>(), "TypeInfoTest::Pack<>"},
        {identifier<long>(), "long int"},
        {identifier<std::string>(),
         "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"},
        {identifier<Numbered<Pack<int>, 3>>(), "TypeInfoTest::Numbered<TypeInfoTest::Pack<int>, 3>"},
    };
    for (const auto& [spelled, expected] : cases)
        EXPECT_EQ(spelled, expected);
}

TEST(TypeConversion, FollowsBasesAndSharedForms)
{
    const auto image = TypeInfo::get<Image>();
    const auto sharedImage = TypeInfo::get<COWPtr<Image>>();
    const auto images = TypeInfo::get<Array<Image>>();
    const auto value = TypeInfo::get<IValue>();
    const std::tuple<TypeInfo, TypeInfo, bool> cases[] = {
        {image, image, true},
        {image, sharedImage, true},
        {sharedImage, image, true},
        {sharedImage, sharedImage, true},
        {image, value, true},
        {sharedImage, value, true},
        {value, image, false},
        {image, TypeInfo::get<Integer>(), false},
        {sharedImage, TypeInfo::get<COWPtr<Integer>>(), false},
        {images, TypeInfo::get<IArray>(), true},
        {images, value, true},
        {images, image, false},
        {images, TypeInfo::get<Array<Integer>>(), false},
        {image, TypeInfo(), false},
        {TypeInfo(), image, false},
        {TypeInfo(), TypeInfo(), false},
    };
    for (const auto& [from, to, converts] : cases)
        EXPECT_EQ(from.canConvert(to), converts) << from.getName() << " to " << to.getName();
    EXPECT_FALSE(image == sharedImage);
    EXPECT_TRUE(
        image ==
        TypeInfo(TypeInfo::getTypeRegistration().getEntry("Nivex::DataProcessing::Core::Image")->getData()));
}

TEST(TypeRegistration, KnowsATypeWhileItsRegistrarLives)
{
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(TypeInfo::get<Unregistered>(false).isValid());
        EXPECT_EQ(refusal<RuntimeException>([] { TypeInfo::get<Unregistered>(); }),
                  "The requested type is not registered.");
        TypeInfo kept;
        {
            const TypeRegistrar<Unregistered> registrar;
            {
                const TypeRegistrar<Unregistered> second;
                kept = TypeInfo::get<Unregistered>();
            }
            EXPECT_EQ(TypeInfo::get<Unregistered>(), kept);
            EXPECT_EQ(kept.getData()->getSize(), sizeof(Unregistered));
            EXPECT_THAT(TypeInfo::getTypeRegistration().getTypes(), testing::Contains(kept));
        }
        EXPECT_FALSE(kept.getData()->isRegistered());
        EXPECT_EQ(kept.getData()->getFactory(), nullptr);
        EXPECT_EQ(kept.getName(), "TypeInfoTest::Unregistered");
    }
}

TEST(TypeRegistration, ConvertsAddressesToBases)
{
    const TypeRegistrar<Left> left;
    const TypeRegistrar<Right> right;
    const TypeRegistrar<Both, Left, Right> both;
    const Utils::Variant variant{Both()};
    ASSERT_NE(variant.tryGet<Right>(), nullptr);
    EXPECT_EQ(variant.tryGet<Right>()->right, 2);
    EXPECT_EQ(variant.tryGet<Left>()->left, 1);
    EXPECT_EQ(variant.tryGet<Right>(), static_cast<const Right*>(variant.tryGet<Both>()));
    EXPECT_EQ(variant.tryGet<Integer>(), nullptr);
}

TEST(TypeRegistration, HasSharedFormsAndFactoriesForValuesOnly)
{
    const TypeRegistrar<Uncopyable> uncopyable;
    EXPECT_EQ(TypeInfo::get<Uncopyable>().getData()->getFactory(), nullptr);
    EXPECT_FALSE(TypeInfo::get<COWPtr<Uncopyable>>(false).isValid());
    EXPECT_EQ(Utils::Variant::makeDefault(TypeInfo::get<Integer>()).getValue<Integer>().getSigned(), 0);
    EXPECT_EQ(refusal<InvalidArgumentException>([] { Utils::Variant::makeDefault(TypeInfo::get<IValue>()); }),
              "Type \"Nivex::DataProcessing::Core::IValue\" has no default value.");
}

TEST(TypeRegistration, RefusesWithoutLettingGo)
{
    const int owner = 0;
    TypeInfo::ITypeInfoData* data = TypeInfo::createTypeInfoData("A::Name", 4, nullptr, &owner);
    EXPECT_EQ(refusal<InvalidArgumentException>([] { TypeInfo::addBaseType<Both, Left>(nullptr); }),
              "No type info data passed.");
    EXPECT_EQ(refusal<RuntimeException>([&] { TypeInfo::addBaseType<Both, Left>(data); }),
              "Base type is not registered.");
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { data->addBase(data, nullptr); }),
              "Type \"A::Name\" cannot have itself as a base.");
    TypeInfo::destroyTypeInfoData(data, &owner);
    EXPECT_EQ(TypeInfo::createTypeInfoData("", 4, nullptr, &owner), nullptr);
    EXPECT_EQ(TypeInfo::getTypeRegistration().getEntry(""), nullptr);
}

TEST(TypeRegistration, LogsWhatARegistrarCatches)
{
    const ScopedLogCapture log;
    const TypeRegistrar<Both, Left> registrar;
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].severity, 4);
    EXPECT_EQ(log.lines()[0].category, "nivex.dataprocessing.utils.TypeInfo");
    EXPECT_EQ(
        log.lines()[0].message,
        GenICam::formatText("TypeInfo %p: Exception caught while registering a type. Message: Base type is not "
                            "registered.",
                            static_cast<const void*>(&registrar)));
}

TEST(TypeProperties, AreFoundByPath)
{
    const auto circle = TypeInfo::get<Core::CircleF>();
    EXPECT_EQ(circle.getProperty("Center.X")->getType(), TypeInfo::get<Core::Float>());
    EXPECT_EQ(TypeInfo::get<COWPtr<Core::CircleF>>().getProperty("Radius"), circle.getProperty("Radius"));
    for (const char* wrong : {"", ".", "Center.", ".X", "Center.Z", "Radius.X", "center"}) {
        EXPECT_EQ(circle.getProperty(wrong, false), nullptr) << wrong;
    }
    EXPECT_EQ(refusal<InvalidArgumentException>([&] { circle.getProperty("Middle"); }),
              "Type \"Nivex::DataProcessing::Core::CircleF\" has no property \"Middle\".");
}

TEST(TypeProperties, PathsSplitAtTheFirstDot)
{
    for (const std::array<const char*, 3> c : {std::array{"A", "A", ""}, {"A.B.C", "A", "B.C"}, {".", "", ""}}) {
        std::string_view head = "?";
        std::string_view rest = "?";
        EXPECT_EQ(TypeInfo::splitPath(c[0], head, rest), std::string_view(c[0]) != "A") << c[0];
        EXPECT_EQ(head, c[1]) << c[0];
        EXPECT_EQ(rest, c[2]) << c[0];
    }
}

}  // namespace
