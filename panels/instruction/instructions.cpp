#include "panels/instruction/instructions.h"

#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {
constexpr const char* kChoice = "1/0";

// The transfer of a wiper to its data register shows the bits of the opposite transfer: the table is what the
// users' documents say, and the byte sent comes from the nibble alone.
constexpr std::array<InstructionRow, kInstructions> kTable = {{
    {"Read WCR",
     "Read",
     "WCR",
     0x9,
     false,
     true,
     "Read Wiper Counter Register",
     {"1", "0", "0", "1", "0", "0", kChoice, kChoice},
     "Read the contents of the Wiper Counter Register pointed to by P1 - P0",
     "read wiper register of pot %P"},
    {"Write WCR",
     "Write",
     "WCR",
     0xA,
     false,
     true,
     "Write Wiper Counter Register",
     {"1", "0", "1", "0", "0", "0", kChoice, kChoice},
     "Write new value the to Wiper Counter Register pointed to by P1 - P0",
     "write wiper register of pot %P"},
    {"Read Data",
     "Read",
     "Data",
     0xB,
     true,
     true,
     "Read Data Register",
     {"1", "0", "1", "1", kChoice, kChoice, kChoice, kChoice},
     "Read the contents of the Data Register pointed to by P1 - P0 and R1 -R0.",
     "read data register %R of pot %P"},
    {"Write  Data",
     "Write",
     "Data",
     0xC,
     true,
     true,
     "Write Data Register",
     {"1", "1", "0", "0", kChoice, kChoice, kChoice, kChoice},
     "Write a new value to the Data Register pointed to by P1 - P0 and R1 - R0.",
     "write data register %R of pot %P"},
    {"XFER Data to WCR",
     "XFER",
     "Data",
     0xD,
     true,
     true,
     "XFR Data Register to Wiper Counter Register",
     {"1", "1", "0", "1", kChoice, kChoice, kChoice, kChoice},
     "Transfer the contents of the Data Register pointed to by P1 - P0 and R1 - R0 to its associated Wiper "
     "Counter Register.",
     "transfer data register %R of pot %P to its wiper register"},
    {"XFER WCR to Data",
     "XFER",
     "WCR",
     0xE,
     true,
     true,
     "XFR Wiper Counter Register to Data Register",
     {"1", "1", "0", "1", kChoice, kChoice, kChoice, kChoice},
     "Transfer the contents of the Wiper Counter Register pointed to by P1 - P0 to its associated Data "
     "Register Pointed to by R1 - R0.",
     "transfer wiper register of pot %P to its data register %R"},
    {"Global Data To WCR",
     "XFERG",
     "Data",
     0x1,
     true,
     false,
     "Global XFR Data Register to Wiper Counter Register",
     {"0", "0", "0", "1", kChoice, kChoice, "0", "0"},
     "Global Transfer the contents of the Data Register pointed by R1 - R0 to all four associated Wiper "
     "Counter Registers.",
     "transfer data register %R of every pot to its wiper register"},
    {"Global WCR to Data",
     "XFERG",
     "WCR",
     0x8,
     true,
     false,
     "Global XFR Wiper Counter Register to Data Register",
     {"1", "0", "0", "0", kChoice, kChoice, "0", "0"},
     "Global Transfer the contents of all four Wiper Counter Registers to their associated Data Register "
     "Pointed to by R1 - R0.",
     "transfer wiper register of every pot to its data register %R"},
    {"Inc / Dec WCR",
     "INC",
     "",
     0x2,
     false,
     true,
     "Increment /Decrement Wiper Counter Register",
     {"0", "0", "1", "0", "0", "0", kChoice, kChoice},
     "Enable Increment / decrement of the Wiper Counter Register pointed to by P1 - P0.",
     "step wiper register of pot %P"},
}};
} // namespace

const std::array<InstructionRow, kInstructions>& instructionTable() {
    return kTable;
}

const InstructionRow& instructionRow(InstructionKind kind) {
    return kTable.at(static_cast<std::size_t>(kind));
}

std::uint8_t instructionByte(InstructionKind kind, const RegisterPlace& place) {
    const InstructionRow& row = instructionRow(kind);
    return static_cast<std::uint8_t>(row.nibble * 16 + (row.usesRegister ? (place.reg & 3) * 4 : 0) +
                                     (row.usesPot ? place.pot & 3 : 0));
}

std::optional<InstructionKind> instructionOf(std::uint8_t byte) {
    const auto found = std::find_if(kTable.begin(), kTable.end(),
                                    [byte](const InstructionRow& row) { return row.nibble == byte >> 4; });
    if (found == kTable.end())
        return std::nullopt;
    return static_cast<InstructionKind>(found - kTable.begin());
}

std::optional<InstructionEffect> instructionEffect(std::uint8_t byte) {
    const auto kind = instructionOf(byte);
    if (!kind)
        return std::nullopt;
    return InstructionEffect{*kind, {.pot = byte & 3, .reg = (byte >> 2) & 3}};
}

bool InstructionEffect::intoWiper() const {
    using enum InstructionKind;
    return kind == WriteWiper || kind == DataToWiper || kind == AllDataToWiper;
}

bool InstructionEffect::intoData() const {
    using enum InstructionKind;
    return kind == WriteData || kind == WiperToData || kind == AllWiperToData;
}

bool InstructionEffect::transfers() const {
    using enum InstructionKind;
    return kind == DataToWiper || kind == WiperToData || kind == AllDataToWiper || kind == AllWiperToData;
}

bool InstructionEffect::accessesWiper() const {
    using enum InstructionKind;
    return intoWiper() || kind == ReadWiper || kind == Step;
}

std::string instructionWords(std::uint8_t byte) {
    const auto kind = instructionOf(byte);
    if (!kind)
        return {};
    std::string words = instructionRow(*kind).words;
    const auto put = [&words](const char* place, int value) {
        if (const auto at = words.find(place); at != std::string::npos)
            words.replace(at, 2, decimalText(value));
    };
    put("%R", (byte >> 2) & 3);
    put("%P", byte & 3);
    return words;
}

void publish(SharedValues& values, InstructionFields& fields) {
    values.scalar("instructionNibble", fields.instructionNibble);
    values.scalar("regField", fields.regField);
    values.scalar("potField", fields.potField);
}

void publish(SharedValues& values, InstructionChoice& choice, const std::string& panel) {
    values.scalar("instructionClass", choice.instructionClass, panel);
    values.scalar("registerKind", choice.registerKind, panel);
    values.scalar("transferSource", choice.transferSource, panel);
}

} // namespace vrk
