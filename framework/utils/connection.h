#pragma once

#include <memory>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Utils {

/// One slot in one signal. May outlive both. For any thread.
class GENICAM_API IConnection
{
public:
    virtual ~IConnection() = default;

    /// False after disconnect(), and once the signal or the slot's trackable object is gone.
    virtual bool isConnected() const noexcept = 0;
    /// Ends the connection; no call of the slot begins afterwards. Waits for nothing: a call that another thread
    /// has begun may still run. Under the lockable given to connect() no call is running, so that who disconnects
    /// with that lock held is safe from later ones.
    virtual void disconnect() noexcept = 0;
};

/// A copyable handle on a connection; may be empty.
class GENICAM_API Connection : public IConnection
{
public:
    Connection() noexcept = default;
    explicit Connection(std::shared_ptr<IConnection> connection) noexcept : connection_(std::move(connection)) {}

    bool isConnected() const noexcept override { return connection_ && connection_->isConnected(); }
    void disconnect() noexcept override;

private:
    std::shared_ptr<IConnection> connection_;
};

/// Ends its connection at destruction. One object is for one thread at a time.
class GENICAM_API ScopedConnection
{
public:
    ScopedConnection() noexcept = default;
    explicit ScopedConnection(Connection connection) noexcept : connection_(std::move(connection)) {}
    ~ScopedConnection() { connection_.disconnect(); }
    ScopedConnection(ScopedConnection&& other) noexcept : connection_(other.release()) {}
    ScopedConnection& operator=(ScopedConnection&& other) noexcept;
    ScopedConnection(const ScopedConnection&) = delete;
    ScopedConnection& operator=(const ScopedConnection&) = delete;

    /// Takes another connection over; ends the one before, or with `disconnectPrevious` false only lets go of it.
    void set(Connection connection, bool disconnectPrevious = true) noexcept;
    /// Lets go of the connection without ending it.
    Connection release() noexcept;
    bool isConnected() const noexcept { return connection_.isConnected(); }
    void disconnect() noexcept { connection_.disconnect(); }

private:
    Connection connection_;
};

}  // namespace Nivex::DataProcessing::Utils
