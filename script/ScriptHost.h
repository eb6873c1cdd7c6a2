#pragma once

#include "platform/runtime/Clock.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

/// What a script's run works with, so that a panel, a terminal, a rehearsal and a test can each bring their
/// own.
namespace vrk {

/// The texts and switches of a run. The counters among them are texts that hold decimal numbers: what stands
/// there is what is counted on.
class ScriptFields {
  public:
    enum class Text {
        LastRead,     ///< the sampled value
        IEnableStep,  ///< what switched sampling on
        IDisableStep, ///< and off
        Istart,
        Iend,
        Iexec,       ///< step of the service block that runs
        IdetectStep, ///< line behind which the condition was seen
        IDefault,    ///< the sampled value that means no interrupt
        TotReads,
        RdPass,
        RdFails,
        TotLines,
        Running,
        LoopCount,
        Count
    };
    virtual ~ScriptFields() = default;
    virtual std::string text(Text field) const = 0;
    virtual void setText(Text field, const std::string& text) = 0;
    virtual bool sampling() const = 0;
    virtual void setSampling(bool on) = 0;
    virtual bool abortOnFail() const = 0;
    /// The lamp that changes with each sample.
    virtual void flipSampleLamp() {}
    virtual void darkenSampleLamp() {}

    int number(Text field) const;
    /// Adds 1 to a counter. \return its new value
    int raise(Text field);
};

/// Fields that nobody sees.
class PlainFields final : public ScriptFields {
  public:
    PlainFields();
    std::string text(Text field) const override { return texts_[place(field)]; }
    void setText(Text field, const std::string& text) override { texts_[place(field)] = text; }
    bool sampling() const override { return sampling_; }
    void setSampling(bool on) override { sampling_ = on; }
    bool abortOnFail() const override { return stopOnFail; }

    bool stopOnFail = false;

  private:
    static std::size_t place(Text field) { return static_cast<std::size_t>(field); }

    std::array<std::string, static_cast<std::size_t>(Text::Count)> texts_;
    bool sampling_ = false;
};

/// The bus and the pins as a script drives them.
class ScriptBus {
  public:
    static constexpr int kGood = 8; ///< of a transfer's status
    static constexpr int kRefused = 1;
    /// Boxes of the console that an I2C read is copied through: the bound of what a row can compare.
    static constexpr int kReadBoxes = 32;

    virtual ~ScriptBus() = default;
    /// Slave address of the transfers to come, 8-bit form.
    virtual void setAddress(std::uint8_t address) = 0;
    /// Whether transfers carry a register byte.
    virtual bool sendsRegister() const = 0;
    /// Drains stale replies.
    virtual void purge() = 0;
    /// \return 8 good, 1 refused by the part; others: the link failed
    virtual int writeI2C(std::span<const std::uint8_t> data, std::span<const std::uint8_t> registers) = 0;
    virtual int readI2C(std::span<std::uint8_t> data, std::span<const std::uint8_t> registers) = 0;
    virtual void clearReadBoxes() = 0;
    virtual void showRead(int box, std::uint8_t value) = 0;

    /// Chip select's port out and back, reading on, the count and the bytes into place.
    virtual void prepareSpi(int count, std::span<const std::string> bytes) = 0;
    /// \return false if the link failed
    virtual bool exchangeSpi() = 0;
    /// Text of what came back at one place.
    virtual std::string readBox(int box) = 0;

    /// A byte of the ports' image; the next write of the ports takes it to the pins.
    virtual void setPort(int index, std::uint8_t value) = 0;
    /// The value that is compared for an interrupt. No reading is made: the text is empty.
    virtual std::string sampledValue() { return {}; }
};

/// Time, events and the user.
class ScriptHost {
  public:
    virtual ~ScriptHost() = default;
    virtual Milliseconds now() const = 0;
    /// \throws ProgramEnded
    virtual void letEventsRun() = 0;
    /// A fixed wait in which nothing else happens.
    virtual void hold(Milliseconds duration) = 0;
    /// A wait in which events go on running.
    virtual void wait(Milliseconds duration) = 0;
    /// Returns when something may have happened: for a pause without an end of its own.
    virtual void waitForEvents() = 0;
    /// \return true to go on, false to stop the run
    virtual bool confirm(const std::string& text) = 0;
    virtual void say(const std::string& text) = 0;
    /// Writes the script with what was read beside its file.
    virtual void saveScript() = 0;
};

/// How a run came to its end.
enum class ScriptEnd { Completed, Stopped, StoppedOnFail, LinkLost, Interrupted };
/// "completed", "stopped", "stopped on fail", "link lost", "interrupted"
const char* scriptEndName(ScriptEnd end);

/// Hears what a run does. Rows nest: a row that samples runs the rows of the service block before it ends.
class ScriptObserver {
  public:
    virtual ~ScriptObserver() = default;
    virtual void passBegan(int /*first*/, int /*last*/) {}
    virtual void passEnded(ScriptEnd) {}
    virtual void rowBegan(int /*row*/) {}
    virtual void rowCompared(int /*row*/, bool /*equal*/) {}
    /// The bus transaction failed, the address is none, or a fault broke the row off.
    virtual void rowInError(int /*row*/, const std::string& /*why*/) {}
    virtual void rowEnded(int /*row*/) {}
};

/// May keep a run waiting between its rows.
class ScriptGate {
  public:
    virtual ~ScriptGate() = default;
    virtual void beforeRow(int row) = 0;
    virtual void afterFail(int row) = 0;
};

} // namespace vrk
