// An independent reader of register descriptions parses ours and reaches the parameters through it.
#include <gtest/gtest.h>

// The library's headers use old-style casts in their macros.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <arv.h>

#include "fakenode.h"
#include "parameteradapter/anythingtonodemapadapterremote.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

/// A device of the library whose memory is that of a remote adapter.
struct MemoryDevice
{
    ArvDevice parent;
    CAnythingToNodeMapAdapterRemote* adapter;
};

gboolean readMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError**)
{
    reinterpret_cast<MemoryDevice*>(device)->adapter->Read(buffer, static_cast<std::int64_t>(address), size);
    return TRUE;
}

gboolean writeMemory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError**)
{
    reinterpret_cast<MemoryDevice*>(device)->adapter->Write(buffer, static_cast<std::int64_t>(address), size);
    return TRUE;
}

void initClass(gpointer deviceClass, gpointer)
{
    static_cast<ArvDeviceClass*>(deviceClass)->read_memory = readMemory;
    static_cast<ArvDeviceClass*>(deviceClass)->write_memory = writeMemory;
}

GType memoryDeviceType()
{
    static const GType type =
        g_type_register_static_simple(ARV_TYPE_DEVICE, "StageletMemoryDevice", sizeof(ArvDeviceClass), initClass,
                                      sizeof(MemoryDevice), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

class IndependentReader : public testing::Test
{
protected:
    void SetUp() override
    {
        conditional = addAll(remote, node);
        remote.connect(text, "ParameterPort", "");

        auto* memory = static_cast<MemoryDevice*>(g_object_new(memoryDeviceType(), nullptr));
        memory->adapter = &remote;
        device = &memory->parent;
        genicam = arv_gc_new(device, text.c_str(), text.size());
        ASSERT_TRUE(genicam);
    }
    void TearDown() override
    {
        if (genicam) g_object_unref(genicam);
        g_object_unref(device);
    }

    template <typename Interface>
    Interface* find(const char* name)
    {
        return reinterpret_cast<Interface*>(arv_gc_get_node(genicam, name));
    }

    std::vector<std::string> availableEntries()
    {
        guint count = 0;
        const char** entries =
            arv_gc_enumeration_dup_available_string_values(find<ArvGcEnumeration>("Mode"), &count, nullptr);
        const std::vector<std::string> found(entries, entries + count);
        g_free(entries);
        return found;
    }

    FakeNode node;
    CAnythingToNodeMapAdapterRemote remote;
    std::shared_ptr<EnumEntryParameterPort<Mode>> conditional;
    GenICam::gcstring text;
    ArvDevice* device = nullptr;
    ArvGc* genicam = nullptr;
};

TEST_F(IndependentReader, FindsTheFeaturesInTheirOrder)
{
    std::vector<std::string> found;
    for (const GSList* item = arv_gc_category_get_features(find<ArvGcCategory>("Root")); item; item = item->next) {
        found.emplace_back(static_cast<const char*>(item->data));
    }
    EXPECT_EQ(found, std::vector<std::string>(std::begin(allFeatures), std::end(allFeatures)));
    EXPECT_STREQ(arv_gc_feature_node_get_tooltip(find<ArvGcFeatureNode>("Gain")), "Tip");
    EXPECT_STREQ(arv_gc_feature_node_get_description(find<ArvGcFeatureNode>("Gain")), "Text");
    EXPECT_EQ(arv_gc_feature_node_get_visibility(find<ArvGcFeatureNode>("Gain")), ARV_GC_VISIBILITY_BEGINNER);
}

TEST_F(IndependentReader, AgreesOnValuesAndLimits)
{
    GError* error = nullptr;
    auto* gain = find<ArvGcInteger>("Gain");
    node.gain = -5;
    EXPECT_EQ(arv_gc_integer_get_value(gain, &error), -5);
    EXPECT_EQ(arv_gc_integer_get_min(gain, &error), -10);
    EXPECT_EQ(arv_gc_integer_get_max(gain, &error), 90);
    EXPECT_EQ(arv_gc_integer_get_inc(gain, &error), 5);
    EXPECT_STREQ(arv_gc_integer_get_unit(gain), "dB");
    arv_gc_integer_set_value(gain, 35, &error);
    EXPECT_EQ(node.gain, 35);

    auto* factor = find<ArvGcFloat>("Factor");
    EXPECT_EQ(arv_gc_float_get_value(factor, &error), 0.5);
    EXPECT_EQ(arv_gc_float_get_min(factor, &error), -1.5);
    EXPECT_EQ(arv_gc_float_get_max(factor, &error), 1e9);
    arv_gc_float_set_value(factor, 2.5, &error);
    EXPECT_EQ(node.factor, 2.5);

    EXPECT_STREQ(arv_gc_string_get_value(find<ArvGcString>("Text"), &error), "initial");
    EXPECT_EQ(arv_gc_string_get_max_length(find<ArvGcString>("Text"), &error), 20);
    arv_gc_string_set_value(find<ArvGcString>("Text"), "changed", &error);
    EXPECT_EQ(node.text, "changed");

    arv_gc_boolean_set_value(find<ArvGcBoolean>("Flag"), TRUE, &error);
    EXPECT_TRUE(node.flag);
    EXPECT_FALSE(arv_gc_feature_node_is_locked(find<ArvGcFeatureNode>("Flag"), &error));
    arv_gc_command_execute(find<ArvGcCommand>("Go"), &error);
    EXPECT_EQ(node.executed, 1);
    ASSERT_EQ(error, nullptr) << error->message;
}

TEST_F(IndependentReader, AgreesOnEntriesAndTheirAvailability)
{
    GError* error = nullptr;
    EXPECT_EQ(availableEntries(), (std::vector<std::string>{"A", "B"}));
    arv_gc_enumeration_set_string_value(find<ArvGcEnumeration>("Mode"), "B", &error);
    EXPECT_EQ(node.mode, Mode::B);
    EXPECT_STREQ(arv_gc_enumeration_get_string_value(find<ArvGcEnumeration>("Mode"), &error), "B");
    ASSERT_EQ(error, nullptr) << error->message;
    conditional->available = false;
    EXPECT_EQ(availableEntries(), (std::vector<std::string>{"A"}));
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test
#pragma GCC diagnostic pop
