#include "apps/vrkctl/SimulatedWorld.h"

#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "automation/simOperations.h"
#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace vrk {

SimulatedMemory::SimulatedMemory(std::filesystem::path path, sim::SimulatedBus& bus, int board)
    : path_(std::move(path)), bus_(bus), board_(board) {
    file_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file_ < 0)
        throw fileFault("open", path_.string(), errno);
    try {
        std::string text = readFile(path_);
        length_ = text.size();
        text.erase(text.find_last_not_of(" \n") + 1);
        if (!text.empty())
            bus_.setMemory(text + "\n", board_);
        else if (!write())
            throw fileFault("write", path_.string(), errno);
    } catch (const std::invalid_argument& wrong) {
        ::close(file_);
        throw Fault("Cannot read " + path_.string() + " as the memory of a simulated part: " + wrong.what());
    } catch (const Fault&) {
        ::close(file_);
        throw;
    }
}

SimulatedMemory::~SimulatedMemory() {
    ::close(file_);
}

bool SimulatedMemory::write() {
    // One call: who is killed leaves the memory of before or the new one. A shorter text than the last is
    // filled with line ends for the same reason.
    std::string text = bus_.memory(board_);
    length_ = std::max(length_, text.size());
    text.resize(length_, '\n');
    return ::pwrite(file_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
}

void SimulatedMemory::stored() {
    if (!write() && !std::exchange(failed_, true))
        tellFileFailed(fileFault("write", path_.string(), errno).what());
}

SimulatedWorld::SimulatedWorld(std::unique_ptr<sim::SimulatedBus> bus, Clock& clock, const Files& files,
                               int board)
    : bus_(std::move(bus)), clock_(clock), board_(board) {
    if (!files.scenario.empty())
        readScenario(files.scenario);
    if (!files.memory.empty())
        memory_.emplace(files.memory, *bus_, board);
    bus_->onStore([this](int of, int /*socket*/) {
        ++stores_;
        if (memory_ && of == board_)
            memory_->stored();
    });
}

SimulatedWorld::~SimulatedWorld() {
    bus_->onStore({});
}

void SimulatedWorld::readScenario(const std::filesystem::path& path) {
    std::istringstream lines(readFile(path));
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (trimmed(line).empty())
            continue;
        try {
            steps_.push_back(parse(line));
        } catch (const std::exception& wrong) {
            throw CommandError(ExitCode::Usage, "--scenario: " + path.string() + ":" +
                                                    std::to_string(number) + ": " + wrong.what());
        }
    }
    std::stable_sort(steps_.begin(), steps_.end(), [](const Step& one, const Step& other) {
        return one.at.value_or(Milliseconds{0}) < other.at.value_or(Milliseconds{0});
    });
}

SimulatedWorld::Step SimulatedWorld::parse(const std::string& line) {
    Json operation = Json::parse(line, nullptr, false);
    if (!operation.is_object())
        throw Fault("this is no JSON object");
    const auto whole = [&operation](const char* name) {
        const Json& value = operation[name];
        if (!value.is_number_integer() || value < 0 || value > std::numeric_limits<int>::max())
            throw Fault(std::string("\"") + name + "\" is no whole number from 0 up");
        return value.get<int>();
    };
    if (operation.contains("atMs") == operation.contains("stores"))
        throw Fault("either \"atMs\" or \"stores\" says when");
    Step step;
    step.what = line;
    if (operation.contains("atMs"))
        step.at = Milliseconds{whole("atMs")};
    else
        step.stores = whole("stores");
    operation.erase("atMs");
    operation.erase("stores");
    step.act = [run = prepareSimOperation(*bus_, operation)] { (void)run(); };
    return step;
}

void SimulatedWorld::workBegins() {
    began_ = clock_.now();
}

void SimulatedWorld::play() {
    if (steps_.empty())
        return;
    const auto due = [this](const Step& step) {
        return step.at ? began_ && clock_.now() - *began_ >= *step.at : stores_ >= step.stores;
    };
    for (auto step = steps_.begin(); step != steps_.end();) {
        if (!due(*step)) {
            ++step;
            continue;
        }
        try {
            step->act();
        } catch (const std::exception& wrong) {
            tell("the scenario's " + step->what + " does nothing: " + wrong.what());
        }
        step = steps_.erase(step);
    }
}

std::optional<Milliseconds> SimulatedWorld::untilNext() const {
    std::optional<Milliseconds> least;
    for (const Step& step : steps_)
        if (step.at && began_) {
            const Milliseconds left = std::max(Milliseconds{0}, *step.at - (clock_.now() - *began_));
            least = std::min(least.value_or(left), left);
        }
    return least;
}

std::vector<hid::DeviceInfo> SimulatedWorld::list() {
    play();
    return bus_->list();
}

hid::Handle SimulatedWorld::open(const std::string& path) {
    play();
    return bus_->open(path);
}

bool SimulatedWorld::write(hid::Handle handle, const hid::Report& report) {
    play();
    return bus_->write(handle, report);
}

hid::ReadResult SimulatedWorld::read(hid::Handle handle, hid::Report& report, Milliseconds timeout) {
    play();
    for (Milliseconds left = timeout;;) {
        const Milliseconds part = std::min(left, untilNext().value_or(left));
        const hid::ReadResult result = bus_->read(handle, report, part);
        left -= part;
        if (result != hid::ReadResult::TimedOut || left <= Milliseconds{0})
            return result;
        play();
    }
}

} // namespace vrk
