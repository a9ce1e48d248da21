#pragma once

#include <memory>
#include <string>
#include <vector>

#include "runtime/jsondocument.h"

namespace Host {

using Nivex::DataProcessing::Runtime::JsonArray;
using Nivex::DataProcessing::Runtime::JsonObject;
using Nivex::DataProcessing::Runtime::JsonValue;

inline void add(JsonObject& object, std::string name, JsonValue::Data&& value)
{
    object.members.push_back({std::move(name), {}, std::make_shared<JsonValue>(std::move(value))});
}

inline void add(JsonArray& list, JsonValue::Data&& value)
{
    list.items.push_back(std::make_shared<JsonValue>(std::move(value)));
}

inline JsonArray toJsonArray(const std::vector<std::string>& texts)
{
    JsonArray list;
    for (const std::string& text : texts)
        add(list, text);
    return list;
}

}  // namespace Host
