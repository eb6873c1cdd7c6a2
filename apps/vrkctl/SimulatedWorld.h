#pragma once

#include "platform/hid/HidHost.h"
#include "sim/SimulatedBus.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// What the parts of a simulated board keep without VCC, in a file: each store is in it before the board
/// answers the report behind it, so that a command that is killed leaves the memory as a real part would.
class SimulatedMemory {
  public:
    /// Fills the parts from the file, or makes the file if there is none. \throws Fault
    SimulatedMemory(std::filesystem::path path, sim::SimulatedBus& bus, int board);
    ~SimulatedMemory();
    SimulatedMemory(const SimulatedMemory&) = delete;
    SimulatedMemory& operator=(const SimulatedMemory&) = delete;

    /// A part has stored. What cannot be written is told once.
    void stored();

  private:
    bool write();

    std::filesystem::path path_;
    sim::SimulatedBus& bus_;
    int board_;
    int file_ = -1;
    std::size_t length_ = 0; ///< of the file
    bool failed_ = false;
};

/// Simulated boards to which things happen while a command works on them: operations on the simulator from a
/// file, each at its time or behind so many stores.
class SimulatedWorld final : public hid::HidHost {
  public:
    struct Files {
        std::filesystem::path memory;
        std::filesystem::path scenario;
    };

    /// \param board whose memory is kept. \throws CommandError (usage) for a faulty scenario, Fault for a
    /// file that cannot be used
    SimulatedWorld(std::unique_ptr<sim::SimulatedBus> bus, Clock& clock, const Files& files, int board);
    ~SimulatedWorld() override;

    /// The times of the scenario count from here, and nothing happens before.
    void workBegins();

    std::vector<hid::DeviceInfo> list() override;
    hid::Handle open(const std::string& path) override;
    bool write(hid::Handle handle, const hid::Report& report) override;
    hid::ReadResult read(hid::Handle handle, hid::Report& report, Milliseconds timeout) override;
    void close(hid::Handle handle) noexcept override { bus_->close(handle); }
    std::string lastError() const override { return bus_->lastError(); }

  private:
    struct Step {
        std::optional<Milliseconds> at; ///< from the start of the work
        int stores = 0;                 ///< or behind so many
        std::string what;
        std::function<void()> act;
    };
    void readScenario(const std::filesystem::path& path);
    Step parse(const std::string& line);
    /// What is due happens between two transfers, as a hand on the bench would come between them.
    void play();
    /// Time until the next step that waits for its time; nothing if none does.
    std::optional<Milliseconds> untilNext() const;

    std::unique_ptr<sim::SimulatedBus> bus_;
    Clock& clock_;
    std::optional<SimulatedMemory> memory_;
    std::vector<Step> steps_;
    std::optional<Milliseconds> began_;
    int stores_ = 0;
    int board_;
};

} // namespace vrk
