#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "gcbase/exception.h"

/// The text of the failure E that `call` raises; otherwise says what came instead.
template <typename E, typename Call>
std::string refusal(const Call& call)
{
    try {
        call();
    } catch (const GenICam::GenericException& e) {
        return typeid(e) == typeid(E) ? e.GetDescription() : std::string("another type: ") + e.what();
    } catch (const std::exception& e) {
        return typeid(e) == typeid(E) ? e.what() : std::string("another type: ") + e.what();
    }
    return "no exception";
}
