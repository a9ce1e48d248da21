#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "utils/log.h"

/// Keeps what is logged while it lives, of all severities, away from stderr. Not nestable.
class ScopedLogCapture
{
public:
    struct Line
    {
        int severity;
        std::string category;
        std::string format;
        std::string message;
    };

    ScopedLogCapture() : sink_(std::make_shared<Sink>()), level_(Nivex::DataProcessing::Utils::getLogLevel())
    {
        Nivex::DataProcessing::Utils::setLogSink(sink_);
        Nivex::DataProcessing::Utils::setLogLevel(Nivex::DataProcessing::Utils::SeverityTrace);
    }
    ~ScopedLogCapture()
    {
        Nivex::DataProcessing::Utils::setLogSink(nullptr);
        Nivex::DataProcessing::Utils::setLogLevel(level_);
    }
    ScopedLogCapture(const ScopedLogCapture&) = delete;
    ScopedLogCapture& operator=(const ScopedLogCapture&) = delete;

    std::vector<Line> lines() const
    {
        const std::lock_guard lock(sink_->mutex);
        return sink_->lines;
    }
    /// The messages of one channel, or of all.
    std::vector<std::string> messages(const std::string& category = "") const
    {
        std::vector<std::string> messages;
        for (const Line& line : lines()) {
            if (category.empty() || line.category == category) messages.push_back(line.message);
        }
        return messages;
    }
    void clear()
    {
        const std::lock_guard lock(sink_->mutex);
        sink_->lines.clear();
    }

private:
    struct Sink : Nivex::DataProcessing::Utils::ILogSink
    {
        void write(const Nivex::DataProcessing::Utils::LogEntry& entry) override
        {
            const std::lock_guard lock(mutex);
            lines.push_back({entry.severity, std::string(entry.category), std::string(entry.format),
                             std::string(entry.message)});
        }

        std::mutex mutex;
        std::vector<Line> lines;
    };

    std::shared_ptr<Sink> sink_;
    int level_;
};
