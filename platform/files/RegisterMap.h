#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// A value of a field that has a name.
struct FieldChoice {
    std::string name;
    int value = 0;
};

/// Bits of a register that mean one thing.
struct RegisterField {
    std::string name;
    int bitOffset = 0;
    int bitWidth = 1;
    std::vector<FieldChoice> choices{}; ///< empty: the number is all there is to say

    int most() const { return (1 << bitWidth) - 1; }
    int valueIn(int word) const { return (word >> bitOffset) & most(); }
    /// The word with this field set; the other bits stay.
    int put(int word, int value) const {
        return (word & ~(most() << bitOffset)) | ((value & most()) << bitOffset);
    }
    /// nullptr for a value that has no name.
    const FieldChoice* choiceOf(int value) const;
};

enum class RegisterAccess { ReadWrite, ReadOnly, WriteOnly };
/// "read-write" ...
const char* accessText(RegisterAccess access);

/// What a write wears out. Selected: a field of the control register says whether the write is stored.
enum class RegisterStorage { Volatile, NonVolatile, Selected };

struct PartRegister {
    std::string name;
    std::string description{};
    int address = 0; ///< of a part with instructions: the one that reads the register
    int width = 8;   ///< bits
    RegisterAccess access = RegisterAccess::ReadWrite;
    RegisterStorage storage = RegisterStorage::Volatile;
    int resetValue = 0; ///< as read after power-up of a part fresh from the factory
    /// Bytes that lead a read and a write where they are not the address: commands of SPI parts,
    /// instructions.
    int readCommand = 0;
    int writeCommand = 0;
    std::vector<RegisterField> fields{};

    bool readable() const { return access != RegisterAccess::WriteOnly; }
    bool writable() const { return access != RegisterAccess::ReadOnly; }
    int most() const { return (1 << width) - 1; }
    /// Digits of a value in hexadecimal.
    int digits() const { return (width + 3) / 4; }
};

enum class PartBus { I2C, SPI, Pins };

/// How a register is reached. Banks: registers 0 to 3 are the wipers or, by a status register, a bank of data
/// registers. Quad and TenBit: by instructions of one byte.
enum class PartProtocol { None, Registers, Banks, Quad, TenBit };

/// The registers of one kind of part.
struct RegisterMap {
    std::string part; ///< what a product's name begins with
    PartBus bus = PartBus::I2C;
    PartProtocol protocol = PartProtocol::None;
    /// Slave byte or ID with the address pins low, even; none: frames without an ID.
    std::optional<int> address{};
    std::vector<PartRegister> registers{};
    /// The register and its field that say whether a write of a Selected register is stored: 0 it is, 1 it
    /// stays volatile. Empty: there is no such choice.
    std::string controlName{};
    std::string storageFieldName{};

    /// The register of this name, in any case, or else of this hexadecimal address; nullptr if there is none.
    const PartRegister* find(const std::string& nameOrAddress) const;
    const PartRegister* named(const std::string& name) const;
    const PartRegister* at(int number) const; ///< by its address
    const PartRegister* control() const { return named(controlName); }
    /// nullptr where there is no choice.
    const RegisterField* storageField() const;
};

} // namespace vrk
