#pragma once

#include "panels/blocks/PortLines.h"
#include "panels/instruction/StepSequence.h"

#include <functional>
#include <string>

namespace vrk {

/// What an instruction came to.
struct InstructionResult {
    /// As the panel's lamp judges it: on I2C by the bus, on SPI by the link, as that bus acknowledges
    /// nothing.
    bool good = false;
    /// The part was heard: what was read is its register's, what was written has reached it.
    bool answered = false;
    /// The byte read, two hexadecimal digits; as it stood before where none came.
    std::string value{};
};

/// The way of an instruction to a quad part, over the services of the consoles. Both the instruction byte and
/// the data byte are hexadecimal texts, as their fields hold them; no field of an instruction panel is
/// needed.
class InstructionBus {
  public:
    virtual ~InstructionBus() = default;
    InstructionBus(const InstructionBus&) = delete;
    InstructionBus& operator=(const InstructionBus&) = delete;

    virtual InstructionResult read(const std::string& instruction) = 0;
    virtual InstructionResult write(const std::string& instruction, const std::string& data) = 0;
    virtual InstructionResult transfer(const std::string& instruction) = 0;
    /// Whether the last exchange with the board, whoever made it, was good.
    virtual bool lastGood() const = 0;
    /// What went wrong with the last instruction, in words: "bus status 1", "the part did not answer".
    virtual std::string failure() const = 0;

    const PortLines& port() const { return port_; }
    virtual const StepSequence::Wiring& stepWiring() const = 0;

  protected:
    explicit InstructionBus(BenchServices& services) : services_(services), port_(services) {}
    BenchServices& services() const { return services_; }

  private:
    BenchServices& services_;
    PortLines port_;
};

/// I2C: the console must send a register byte with a read and none with a write, as it does while "Two Wire
/// Read" is on and "Random Read/Write" off.
class I2cInstructionBus final : public InstructionBus {
  public:
    /// \param address gives the slave address, hexadecimal, when an exchange begins.
    I2cInstructionBus(BenchServices& services, PanelContext& context, std::function<std::string()> address);

    InstructionResult read(const std::string& instruction) override;
    InstructionResult write(const std::string& instruction, const std::string& data) override;
    InstructionResult transfer(const std::string& instruction) override;
    bool lastGood() const override;
    std::string failure() const override;
    const StepSequence::Wiring& stepWiring() const override { return StepSequence::kI2c; }

  private:
    void setAddress() const;
    InstructionResult send(unsigned count, const std::string& instruction, const std::string& data);
    bool answeredSince(unsigned transfers) const;

    PanelContext& context_;
    std::function<std::string()> address_;
};

/// SPI: ID, instruction, data. The part's output follows its input by a byte, so that the ID comes back in
/// the second place where a part listens, and the byte read in the third.
class SpiInstructionBus final : public InstructionBus {
  public:
    struct Frame {
        std::string id;         ///< hexadecimal
        std::string readLength; ///< bytes, decimal
    };
    SpiInstructionBus(BenchServices& services, PanelContext& context, std::function<Frame()> frame);

    InstructionResult read(const std::string& instruction) override;
    InstructionResult write(const std::string& instruction, const std::string& data) override;
    InstructionResult transfer(const std::string& instruction) override;
    bool lastGood() const override;
    std::string failure() const override { return failure_; }
    const StepSequence::Wiring& stepWiring() const override { return StepSequence::kSpi; }

  private:
    /// \param lastPlace of the bytes that come back, counted from 0: the last that the result needs.
    InstructionResult exchange(const std::string& instruction, int lastPlace);

    PanelContext& context_;
    std::function<Frame()> frame_;
    std::string failure_; ///< of the last exchange
};

} // namespace vrk
