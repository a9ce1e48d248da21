#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "core/ledger.h"

namespace Nivex::DataProcessing::Runtime {

/// The account of all updates of a run. At every moment `offered == finished + sum(lost) + in flight`.
/// Any thread may call any operation.
class RunLedger
{
public:
    struct Account
    {
        std::uint64_t offered = 0;
        std::uint64_t finished = 0;
        Core::LossCounts lost{};

        std::uint64_t getInFlight() const
        {
            std::uint64_t settled = finished;
            for (const std::uint64_t count : lost)
                settled += count;
            return offered - settled;
        }
    };

    /// Opens the account anew, with a limit of updates that may begin (0: none).
    void reset(std::uint64_t limit)
    {
        std::lock_guard guard(mutex_);
        account_ = {};
        begun_ = 0;
        limit_ = limit;
    }

    /// Counts a new update; false, and nothing counted, when the limit is reached.
    bool tryOffer()
    {
        std::lock_guard guard(mutex_);
        if (limit_ != 0 && begun_ >= limit_) return false;
        ++begun_;
        ++account_.offered;
        return true;
    }

    /// Settles an update: finished, or lost by a cause.
    void settle(std::optional<Core::LossCause> cause)
    {
        std::lock_guard guard(mutex_);
        ++(cause ? account_.lost[static_cast<std::size_t>(*cause)] : account_.finished);
    }

    /// Counts losses of what never became an update; they are offered, but not part of the limit.
    void miss(Core::LossCause cause, std::uint64_t count)
    {
        std::lock_guard guard(mutex_);
        account_.offered += count;
        account_.lost[static_cast<std::size_t>(cause)] += count;
    }

    bool isLimitReached() const
    {
        std::lock_guard guard(mutex_);
        return limit_ != 0 && begun_ >= limit_;
    }

    Account read() const
    {
        std::lock_guard guard(mutex_);
        return account_;
    }

private:
    mutable std::mutex mutex_;  // guards all members
    Account account_;
    std::uint64_t begun_ = 0;
    std::uint64_t limit_ = 0;
};

}  // namespace Nivex::DataProcessing::Runtime
