#pragma once

#include <type_traits>

#include "genapi/nodemap.h"

namespace GenApi {

/// One operation under way. It ends with Finish, or by an exception through its destructor.
class CNodeMap::Operation
{
public:
    explicit Operation(const CNodeMap& map) : map_(map), outerSteps_(map.Enter()) {}
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

    /// Unlocks, then calls the callbacks; all of them run, the first one's exception is raised afterwards.
    void Finish();

private:
    const CNodeMap& map_;
    const int outerSteps_;
    bool finished_ = false;
};

template <typename Body>
auto CNodeMap::Operate(Body&& body) const -> decltype(body())
{
    Operation operation(*this);
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
        operation.Finish();
    } else {
        auto result = body();
        operation.Finish();
        return result;
    }
}

}  // namespace GenApi
