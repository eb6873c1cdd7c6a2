#pragma once

#include "platform/hid/HidHost.h"
#include "platform/runtime/Clock.h"
#include "sim/Board.h"
#include "sim/Faults.h"
#include "sim/Firmware.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk::sim {

/// What an onlooker sees on one board.
struct BoardState {
    double vcc = 0.0;                ///< volts at the socket
    double vminus = 0.0;             ///< volts at the socket, 0 or below
    int code = 0;                    ///< of U5, 00 to 7F
    std::map<std::string, int> sfr;  ///< "80" to "FF", as written: a port's latch, not its pins
    std::map<std::string, int> pins; ///< "P0" to "P4", levels
    struct {
        bool green = false;
        bool red = false;
    } leds;
    bool plugged = true;
    int handles = 0;                ///< open ones that still reach the board
    std::optional<PartState> part;  ///< part #1; none: its socket is empty
    std::optional<PartState> part2; ///< part #2, of a kind that comes in twos
};

/// A USB bus with up to four simulated boards and other HID devices on it, in place of the operating
/// system's. One board with a KV4071 is plugged in at first.
///
/// Keeps the time of a full-speed device on its clock: a write takes 1 ms, the reply is there 1 ms later.
/// Each open handle of a board gets every input report from then on, in a queue of 63 that drops the newest.
///
/// Operations with a board number take 0 up; all of them throw std::invalid_argument, with the values that
/// are allowed, and change nothing then. Faults, prepared replies and held inputs hold for all boards.
class SimulatedBus final : public hid::HidHost {
  public:
    struct Options {
        bool zeroLatency = false;
        std::uint32_t seed = 1; ///< of the noise
    };
    static constexpr int kMostBoards = 4;
    static constexpr int kMostForeign = 16;
    static constexpr int kMostStale = 1000;

    explicit SimulatedBus(Clock& clock) : SimulatedBus(clock, Options{}) {}
    SimulatedBus(Clock& clock, const Options& options);
    ~SimulatedBus() override;

    std::vector<hid::DeviceInfo> list() override;
    hid::Handle open(const std::string& path) override;
    bool write(hid::Handle handle, const hid::Report& report) override;
    /// Takes a report that is there or that comes by the end of the time-out. A reply that is late by a fault
    /// comes just behind its time: with a time-out of 6000 ms one of 5999 ms is in time, one of 6000 ms is
    /// not. Sleeps on the clock meanwhile.
    hid::ReadResult read(hid::Handle handle, hid::Report& report, Milliseconds timeout) override;
    void close(hid::Handle handle) noexcept override;
    std::string lastError() const override { return lastError_; }

    static std::vector<std::string> partNames();
    /// Another part on the board, fresh from the factory; up/down parts come in twos, one for each socket. No
    /// name empties both sockets. \see makePart
    void socket(const std::optional<std::string>& part, std::optional<int> address = std::nullopt,
                int board = 0);
    /// What the parts of a board keep without VCC, as text: a line a part, its name and its cells. A board's
    /// parts take such a text whole, or refuse it when it is none of theirs; it comes into the wipers when
    /// VCC comes.
    std::string memory(int board = 0) const;
    void setMemory(const std::string& text, int board = 0);
    /// Called behind each store of a part in a socket.
    void onStore(std::function<void(int board, int socket)> listener) {
        storeListener_ = std::move(listener);
    }
    /// 0 to 4. Boards that go are unplugged, those that come are new.
    void setBoards(int count);
    int boards() const { return static_cast<int>(boards_.size()); }
    /// Other HID devices: before the first board, between the boards, and so on round.
    void setForeign(int count);
    /// The board loses its power too; what its part and U5 have stored stays.
    void unplug(int board);
    /// Plugs an unplugged board in again, under a new path; handles of before stay dead.
    void plug(int board);
    void fault(const Fault& fault) { faults_.add(fault); }
    /// Input reports that nobody has read yet in the queues of the board's open handles, however many these
    /// hold. \param bytes 64 at most, zero-filled. \param count 1 to kMostStale.
    void stale(const std::vector<std::uint8_t>& bytes, int board = 0, int count = 1);
    /// The next replies to the command are these bytes, zero-filled.
    void reply(int command, const std::vector<std::uint8_t>& bytes, int times = 1);
    /// Holds an analog input, volts or count at the converter's pin; neither gives it back.
    /// \param channel a code of the multiplexer: 00 to 0F, 1E, 1F.
    void input(int channel, std::optional<double> volts, std::optional<int> count);
    BoardState state(int board = 0) const;
    /// No faults, no prepared replies, no held inputs.
    void clear();

  private:
    struct InFlight;
    struct Slot;
    struct Reader {
        Slot* slot = nullptr; ///< none: a foreign device
        int foreign = -1;
        bool dead = false;
        std::deque<hid::Report> queue;
    };

    Slot& slotAt(int board) const;
    void disconnect(Slot& slot);
    std::unique_ptr<Slot> makeSlot(int number);
    void send(Slot& slot, const InFlight& report);
    void deliver(Slot& slot);
    void sleepUntil(Milliseconds time);
    Reader* aliveReader(hid::Handle handle);

    Clock& clock_;
    Options options_;
    Milliseconds latency_;
    Faults faults_;
    std::vector<std::unique_ptr<Slot>> boards_;
    int foreign_ = 0;
    int plugs_ = 0; ///< all there were: makes each plug's path a new one
    std::map<std::uint8_t, double> heldVolts_;
    std::function<void(int, int)> storeListener_;
    std::map<hid::Handle, Reader> readers_;
    hid::Handle lastHandle_ = 0;
    std::string lastError_;
};

} // namespace vrk::sim
