#pragma once

#include "sim/DataRegisterMemory.h"

#include <cstdint>
#include <optional>

namespace vrk::sim {

/// What a part with data registers does when it is told by instructions: a frame is the address, one
/// instruction, and data behind it one way or the other. Transfers and stores are done when the frame ends.
class InstructionSet {
  public:
    explicit InstructionSet(DataRegisterMemory& registers) : registers_(registers) {}
    InstructionSet(const InstructionSet&) = delete;
    InstructionSet& operator=(const InstructionSet&) = delete;
    virtual ~InstructionSet() = default;

    /// \param reading whether the address carried the read mark. \return false: no such instruction.
    virtual bool begin(std::uint8_t instruction, bool reading) = 0;
    /// The next data byte from the host.
    virtual void take(std::uint8_t data) = 0;
    /// Whether the part now answers.
    virtual bool answers() const = 0;
    /// Byte `place` of its answer; none behind the last.
    virtual std::optional<std::uint8_t> answer(int place) const = 0;
    virtual void end() = 0;

    /// Whether each further clock of the frame steps the wiper that the instruction named.
    virtual bool takesSteps() const { return false; }
    virtual void step(bool /*up*/) {}

  protected:
    DataRegisterMemory& registers() { return registers_; }
    const DataRegisterMemory& registers() const { return registers_; }

  private:
    DataRegisterMemory& registers_;
};

/// Four pots of eight bits: an instruction is operation, register and pot in one byte.
class QuadInstructions final : public InstructionSet {
  public:
    using InstructionSet::InstructionSet;

    bool begin(std::uint8_t instruction, bool reading) override;
    void take(std::uint8_t data) override;
    bool answers() const override;
    std::optional<std::uint8_t> answer(int place) const override;
    void end() override;
    bool takesSteps() const override;
    void step(bool up) override { registers().step(pot_, up); }

  private:
    std::uint8_t operation_ = 0;
    int reg_ = 0;
    int pot_ = 0;
    std::optional<std::uint8_t> data_;
};

/// One pot of ten bits: values are two bytes, bits 9 and 8 in the first. The bytes that write a data register
/// also move it to the wiper, and those that read one also write the wiper: the read mark and the length of
/// the frame tell which.
class TenBitInstructions final : public InstructionSet {
  public:
    using InstructionSet::InstructionSet;

    bool begin(std::uint8_t instruction, bool reading) override;
    void take(std::uint8_t data) override;
    bool answers() const override;
    std::optional<std::uint8_t> answer(int place) const override;
    void end() override;

  private:
    std::uint8_t operation_ = 0;
    int reg_ = 0;
    bool reading_ = false;
    int taken_ = 0;
    int value_ = 0;
};

} // namespace vrk::sim
