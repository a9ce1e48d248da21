#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/emulation/featuretable.h"

namespace Nivex::Emulation {

/// The memory of a camera: registers with the values of the tables, which refuse what their rows don't allow.
/// Not synchronised. Elements beyond a row's count may not be asked for.
class RegisterBank
{
public:
    RegisterBank() { LoadDefaults(); }

    /// All as in the tables, but for read-only registers and DeviceUserID, which keep their content after
    /// the first time.
    void LoadDefaults();

    /// @name The camera's own access, unchecked
    std::int64_t Integer(Register reg, std::size_t element = 0) const;
    double Float(Register reg, std::size_t element = 0) const;
    bool IsOn(Register reg, std::size_t element = 0) const { return Integer(reg, element) != 0; }
    std::string Text(Register reg) const;
    void SetInteger(Register reg, std::int64_t value, std::size_t element = 0);
    void SetFloat(Register reg, double value, std::size_t element = 0);
    void SetText(Register reg, std::string_view value);
    void Add(Register reg, std::int64_t count) { SetInteger(reg, Integer(reg) + count); }

    /// @name Access from outside
    /// RuntimeException if bytes are asked for where no register is.
    void Read(void* buffer, std::int64_t address, std::int64_t length) const;
    /// RuntimeException if the register there can't be written while a stream is up.
    void CheckUnlocked(std::int64_t address) const;
    /// Takes one whole register and tells which row it belongs to. Raises RuntimeException, and changes nothing,
    /// for an address between registers, a read-only one, or a value that the row does not allow.
    Register Write(const void* buffer, std::int64_t address, std::int64_t length);

    /// Counts the writes from outside and the loading of defaults.
    std::uint64_t Revision() const { return revision_; }

private:
    std::size_t Offset(Register reg, std::size_t element) const;
    void SetInitial(Register reg);

    std::vector<std::byte> memory_;
    std::uint64_t revision_ = 0;
};

}  // namespace Nivex::Emulation
