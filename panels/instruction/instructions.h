#pragma once

#include "platform/controls/SharedValues.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vrk {

/// What an instruction does, in the order of the part's table.
enum class InstructionKind {
    ReadWiper,
    WriteWiper,
    ReadData,
    WriteData,
    DataToWiper,
    WiperToData,
    AllDataToWiper,
    AllWiperToData,
    Step
};

/// One instruction of the quad parts: four pots, each with a wiper counter register (WCR) and four data
/// registers. The byte is the nibble, two bits of register and two of pot, most significant first.
struct InstructionRow {
    const char* caption;
    const char* group;  ///< "Read", "Write", "XFER", "XFERG", "INC"
    const char* target; ///< of a read or write: "WCR" or "Data"; of a transfer its source
    std::uint8_t nibble;
    bool usesRegister;
    bool usesPot;
    const char* name;                ///< as the table on the panel shows it
    std::array<const char*, 8> bits; ///< the same: I3 to I0, R1, R0, P1, P0; "1/0" is the user's choice
    const char* operation;           ///< the same
    const char* words;               ///< what it does; %R and %P stand for register and pot
};

inline constexpr int kInstructions = 9;
/// In the order of InstructionKind.
const std::array<InstructionRow, kInstructions>& instructionTable();
const InstructionRow& instructionRow(InstructionKind kind);

/// \param reg and \param pot 0 to 3; what the instruction does not use is left out.
struct RegisterPlace {
    int pot = 0;
    int reg = 0;
};
std::uint8_t instructionByte(InstructionKind kind, const RegisterPlace& place);
/// The row that a byte's upper half stands for; nothing if there is none.
std::optional<InstructionKind> instructionOf(std::uint8_t byte);
/// What a byte does, and to which registers; nothing for a byte that is no instruction.
struct InstructionEffect {
    InstructionKind kind = InstructionKind::ReadWiper;
    RegisterPlace place{};

    bool allPots() const { return !instructionRow(kind).usesPot; }
    bool intoWiper() const;
    bool intoData() const;
    /// From one register of a pot to another.
    bool transfers() const;
    /// Reads, changes or steps the wiper's register; as a transfer's source it is left as it was.
    bool accessesWiper() const;
};
std::optional<InstructionEffect> instructionEffect(std::uint8_t byte);
/// "read data register 1 of pot 2"; empty for a byte that is no instruction.
std::string instructionWords(std::uint8_t byte);

/// The bits of the instruction byte, as they stand in its place. Both instruction panels compose the same.
struct InstructionFields {
    std::uint8_t instructionNibble = 0; ///< 0 to 15
    std::uint8_t regField = 0;          ///< register times 4
    std::uint8_t potField = 0;
};
/// What the chosen instruction is; each panel has its own, which outlives it.
struct InstructionChoice {
    std::string instructionClass; ///< the row's group; empty: none chosen
    std::string registerKind;
    std::string transferSource;
};
void publish(SharedValues& values, InstructionFields& fields);
/// \param panel whose choice it is.
void publish(SharedValues& values, InstructionChoice& choice, const std::string& panel);

} // namespace vrk
