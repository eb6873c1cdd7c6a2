#include "sim/PartCatalogue.h"

#include "sim/BankPart.h"
#include "sim/InstructionPart.h"
#include "sim/PinParts.h"
#include "sim/RegisterPart.h"
#include "sim/SpiRegisterPart.h"

#include <stdexcept>

namespace vrk::sim {

namespace {

using Model = PartFacts::Model;

constexpr PartFacts kCatalogue[] = {
    // name, model, address, pots, positions, ACR, sockets
    {"KV4071", Model::I2cRegisters, 0x50, 1, 128, 0x02},
    {"KV4074", Model::I2cRegisters, 0xA0, 4, 128, 0x08},
    {"KV4078", Model::I2cRegisters, 0xA0, 4, 256, 0x10},
    {"KV6021", Model::I2cRegisters, 0x50, 1, 128, 0x02},
    {"KV4180", Model::SpiRegisters, {}, 4, 256, 0x10},
    {"KV4184", Model::SpiRegisters, 0x50, 4, 128, 0x08},
    {"Q4422", Model::Banks, 0x50, 4, 256},
    {"Q4410", Model::I2cInstructions, 0x50, 4, 256},
    {"Q4420", Model::SpiInstructions, 0x50, 4, 256},
    {"Q3318", Model::I2cInstructions, 0x50, 1, 1024},
    {"Q3310", Model::SpiInstructions, 0x50, 1, 1024},
    {"UPDN100", Model::UpDown, {}, 1, 101, 0, 2},
    {"PB64", Model::PushButton, {}, 1, 64},
};

InstructionAddress instructionAddress(const PartFacts& facts, std::uint8_t address) {
    return {address, facts.pots > 1 ? Instructions::Quad : Instructions::TenBit};
}

std::unique_ptr<Part> make(const PartFacts& facts, std::optional<std::uint8_t> address, int socket) {
    const RegisterLayout registers{facts.pots, facts.positions, facts.acr};
    switch (facts.model) {
    case Model::I2cRegisters:
        return std::make_unique<RegisterPart>(facts.name, registers, address.value());
    case Model::SpiRegisters:
        return std::make_unique<SpiRegisterPart>(facts.name, registers, address);
    case Model::Banks:
        return std::make_unique<BankPart>(facts.name, address.value());
    case Model::I2cInstructions:
        return std::make_unique<I2cInstructionPart>(facts.name, instructionAddress(facts, address.value()));
    case Model::SpiInstructions:
        return std::make_unique<SpiInstructionPart>(facts.name, instructionAddress(facts, address.value()));
    case Model::UpDown:
        return std::make_unique<UpDownPart>(facts.name, facts.positions - 1,
                                            socket == 0 ? pin::kA0 : pin::kA1);
    case Model::PushButton:
        return std::make_unique<PushButtonPart>(facts.name, facts.positions - 1);
    }
    throw std::logic_error("a part without a model");
}

} // namespace

std::vector<std::string> partNames() {
    std::vector<std::string> names;
    for (const PartFacts& facts : kCatalogue) {
        names.emplace_back(facts.name);
    }
    return names;
}

const PartFacts& partFacts(const std::string& name) {
    std::string known;
    for (const PartFacts& facts : kCatalogue) {
        if (name == facts.name) {
            return facts;
        }
        known += (known.empty() ? "" : ", ") + std::string(facts.name);
    }
    throw std::invalid_argument("unknown part \"" + name + "\": one of " + known);
}

std::unique_ptr<Part> makePart(const std::string& name, std::optional<int> address, int socket) {
    const PartFacts& facts = partFacts(name);
    std::optional<std::uint8_t> chosen = facts.address;
    if (address) {
        if (!facts.address) {
            throw std::invalid_argument(name + " has no address to set");
        }
        if (*address < 0 || *address > 0xFE || *address % 2 != 0) {
            throw std::invalid_argument("an address must be even, from 0 to 254 (FE)");
        }
        chosen = static_cast<std::uint8_t>(*address);
    }
    return make(facts, chosen, socket);
}

} // namespace vrk::sim
