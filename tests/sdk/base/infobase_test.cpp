#include "base/infobase.h"

#include <gtest/gtest.h>

#include "gcbase/exception.h"

using GenICam::gcstring;
using Nivex::CInfoBase;

namespace {

CInfoBase camera(const char* serial, const char* vendor = "Acme")
{
    CInfoBase info;
    info.SetPropertyValue("VendorName", vendor).SetPropertyValue("SerialNumber", serial);
    return info;
}

}  // namespace

// Names come in ascending order; setting twice replaces, and an empty value is a value.
TEST(InfoBase, KeepsPropertiesByName)
{
    CInfoBase info = camera("1");
    info.SetPropertyValue("SerialNumber", "2").SetPropertyValue("UserName", "");
    GenICam::gcstring_vector names = {"left over"};
    EXPECT_EQ(info.GetPropertyNames(names), 3U);
    EXPECT_EQ(names, (GenICam::gcstring_vector{"SerialNumber", "UserName", "VendorName"}));

    gcstring value = "untouched";
    EXPECT_FALSE(info.GetPropertyValue("ModelName", value));
    EXPECT_EQ(value, "untouched");
    EXPECT_TRUE(info.GetPropertyValue("SerialNumber", value));
    EXPECT_EQ(value, "2");
    EXPECT_TRUE(info.GetPropertyAvailable("UserName"));
    EXPECT_FALSE(info.GetPropertyAvailable("username"));
    EXPECT_THROW(info.SetPropertyValue("", "x"), GenICam::InvalidArgumentException);
}

// A filter matches what has all of its properties, whatever else that has.
TEST(InfoBase, FindsSubsets)
{
    CInfoBase filter;
    EXPECT_TRUE(camera("1").IsSubset(filter));
    EXPECT_FALSE(filter.IsSubset(camera("1")));
    filter.SetPropertyValue("SerialNumber", "1");
    EXPECT_TRUE(camera("1").IsSubset(filter));
    EXPECT_FALSE(camera("2").IsSubset(filter));
    filter.SetPropertyValue("ModelName", "");
    EXPECT_FALSE(camera("1").IsSubset(filter));
}

TEST(InfoBase, IsOrderedByNamesAndValues)
{
    EXPECT_TRUE(camera("1") == camera("1"));
    EXPECT_FALSE(camera("1") == camera("2"));
    EXPECT_TRUE(camera("1") < camera("2"));
    EXPECT_FALSE(camera("2") < camera("1"));
    EXPECT_FALSE(camera("1") < camera("1"));
    EXPECT_TRUE(camera("1", "Acme") < camera("1", "Bolt"));
    EXPECT_TRUE(CInfoBase() < camera("1"));
}
