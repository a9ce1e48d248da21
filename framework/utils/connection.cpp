#include "utils/connection.h"

#include <utility>

namespace Nivex::DataProcessing::Utils {

void Connection::disconnect() noexcept
{
    if (connection_) connection_->disconnect();
}

ScopedConnection& ScopedConnection::operator=(ScopedConnection&& other) noexcept
{
    if (this != &other) set(other.release());
    return *this;
}

void ScopedConnection::set(Connection connection, bool disconnectPrevious) noexcept
{
    if (disconnectPrevious) connection_.disconnect();
    connection_ = std::move(connection);
}

Connection ScopedConnection::release() noexcept
{
    return std::exchange(connection_, Connection());
}

}  // namespace Nivex::DataProcessing::Utils
