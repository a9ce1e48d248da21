#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

// What the tests of node maps share: a device of plain bytes, and a map over it from a few elements.
namespace GenApiTest {

using GenApi::NodeMapPtr;
using GenICam::gcstring;

/// A device of 4096 bytes that counts what is asked of it.
class ByteDevice : public GenApi::CPortImpl
{
public:
    GenApi::EAccessMode GetAccessMode() const override { return mode; }

    void Read(void* buffer, int64_t address, int64_t length) override
    {
        ++reads;
        if (onAccess) onAccess();
        std::copy_n(bytes.begin() + Offset(address, length), length, static_cast<uint8_t*>(buffer));
    }

    void Write(const void* buffer, int64_t address, int64_t length) override
    {
        ++writes;
        if (onAccess) onAccess();
        std::copy_n(static_cast<const uint8_t*>(buffer), length, bytes.begin() + Offset(address, length));
    }

    void Put(int64_t address, std::initializer_list<int> content)
    {
        for (const int byte : content)
            bytes.at(static_cast<std::size_t>(address++)) = static_cast<uint8_t>(byte);
    }
    std::vector<int> Bytes(int64_t address, int64_t length) const
    {
        return {bytes.begin() + address, bytes.begin() + address + length};
    }

    std::vector<uint8_t> bytes = std::vector<uint8_t>(4096);
    GenApi::EAccessMode mode = GenApi::RW;
    int reads = 0;
    int writes = 0;
    std::function<void()> onAccess;

private:
    int64_t Offset(int64_t address, int64_t length) const
    {
        if (address < 0 || length < 0 || address + length > static_cast<int64_t>(bytes.size()))
            throw std::out_of_range("no such address");
        return address;
    }
};

inline std::string Description(const std::string& nodes)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" SchemaMajorVersion="1" SchemaMinorVersion="1">
)" + nodes +
           "\n</RegisterDescription>\n";
}

inline NodeMapPtr MakeMap(const std::string& description)
{
    return GenApi::CNodeMapFactory(GenApi::ContentType_Xml, description.data(), description.size())
        .CreateNodeMap();
}

/// `<KIND Name="NAME">CONTENT</KIND>`.
inline std::string Node(const std::string& kind, const std::string& name, const std::string& content)
{
    return "<" + kind + " Name=\"" + name + "\">" + content + "</" + kind + ">\n";
}

/// A register on the port Device.
inline std::string Reg(const std::string& kind, const std::string& name, int64_t address, int64_t length = 8,
                       const std::string& further = "<AccessMode>RW</AccessMode>")
{
    return Node(kind, name,
                "<Address>" + std::to_string(address) + "</Address><Length>" + std::to_string(length) +
                    "</Length><pPort>Device</pPort>" + further);
}

/// A map with a port Device that is connected to a ByteDevice.
struct World
{
    explicit World(const std::string& nodes) : map(MakeMap(Description(nodes + R"(<Port Name="Device"/>)")))
    {
        EXPECT_TRUE(map->Connect(&device));
    }

    /// The interface of a node; raises if the node does not have it.
    template <typename Interface>
    Interface& Get(const char* name) const
    {
        return dynamic_cast<Interface&>(*map->GetNode(name));
    }
    GenApi::IInteger& Integer(const char* name) const { return Get<GenApi::IInteger>(name); }
    GenApi::IValue& Value(const char* name) const { return Get<GenApi::IValue>(name); }

    ByteDevice device;
    NodeMapPtr map;
};

/// Expects `action` to raise exactly a `Failure` whose text holds `part`.
template <typename Failure>
void ExpectFailure(const std::function<void()>& action, const std::string& part)
{
    try {
        action();
        ADD_FAILURE() << "nothing was raised; expected: " << part;
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.GetDescription()).find(part), std::string::npos) << failure.what();
    }
}

}  // namespace GenApiTest
