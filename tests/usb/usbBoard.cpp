// The simulated board's firmware behind a gadget on the kernel's USB stack: the host sees a real board.
//
// usage: usb_board GADGET UDC NODE PART
//   GADGET  the gadget's folder in configfs, its HID function in place
//   UDC     name of the USB device controller to plug it into
//   NODE    the gadget side of its HID function, /dev/hidgN
//   PART    what is in the socket; "none" makes a device that only takes reports
//
// Commands come on stdin, a line each, and each is answered by a line on stdout.

#include "link/reportLayout.h"
#include "platform/hid/WireLog.h"
#include "sim/Board.h"
#include "sim/Firmware.h"
#include "sim/PartCatalogue.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace vrk {
namespace {

constexpr int kPatience = 1000; // ms until a report that the host does not fetch is dropped

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

class UsbBoard {
  public:
    UsbBoard(std::string gadget, std::string controller, std::string node, const std::string& part)
        : gadget_(std::move(gadget)), controller_(std::move(controller)), node_(std::move(node)) {
        if (part == "none")
            silent_ = true;
        else
            board_.socket(sim::makePart(part));
    }
    ~UsbBoard() { closeNode(); }
    UsbBoard(const UsbBoard&) = delete;
    UsbBoard& operator=(const UsbBoard&) = delete;

    /// -1 while unplugged.
    int fileDescriptor() const { return descriptor_; }

    /// \return the answer.
    std::string command(const std::string& line) {
        std::istringstream words(line);
        std::string verb;
        words >> verb;
        if (verb == "plug")
            plug();
        else if (verb == "unplug")
            unplug();
        else if (verb == "unplugAt")
            words >> unplugAt_.emplace();
        else if (verb == "silent")
            silent_ = true;
        else if (verb == "answer")
            silent_ = false;
        else if (verb == "stale")
            send(stale());
        else if (verb == "wiper")
            return "wiper " + std::to_string(board_.part()->state().wipers.at(0));
        else if (verb == "count")
            return "count " + std::to_string(taken_);
        else
            throw std::invalid_argument("no command: " + line);
        return verb + " done";
    }

    /// Takes all reports that are there.
    void serve() {
        hid::Report report{};
        while (descriptor_ >= 0) {
            const ssize_t count = read(descriptor_, report.data(), report.size());
            if (count < 0 && (errno == EAGAIN || errno == ESHUTDOWN))
                return;
            if (count < 0)
                fail("read " + node_);
            if (count != hid::kReportSize)
                throw std::runtime_error("a report of " + std::to_string(count) + " bytes");
            ++taken_;
            if (unplugAt_ == report[report::kCommandByte]) {
                unplugAt_.reset();
                unplug();
            } else if (!silent_) {
                if (const auto reply = firmware_.handle(report))
                    send(*reply);
            }
        }
    }

  private:
    void plug() {
        bind(controller_);
        // Without waiting, as a read that waits is not woken when the board is unplugged.
        descriptor_ = open(node_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (descriptor_ < 0)
            fail("open " + node_);
        firmware_.reset();
        board_.powerUp();
    }

    void unplug() {
        // A descriptor kept over a plug would go on taking reports.
        closeNode();
        bind("");
        board_.powerDown();
    }

    void bind(const std::string& controller) {
        std::ofstream file(gadget_ + "/UDC");
        if (!(file << controller << std::endl))
            fail("write " + gadget_ + "/UDC");
    }

    void closeNode() {
        if (descriptor_ >= 0)
            close(descriptor_);
        descriptor_ = -1;
    }

    void send(const hid::Report& report) {
        pollfd ready{descriptor_, POLLOUT, 0};
        while (poll(&ready, 1, kPatience) > 0) {
            const ssize_t count = write(descriptor_, report.data(), report.size());
            if (count == hid::kReportSize)
                return;
            if (count >= 0 || errno != EAGAIN)
                break;
        }
        std::cerr << "usb_board: the host does not fetch " << hid::reportText(report) << std::endl;
    }

    /// A report that nobody asked for: a register's value that the board never gives.
    static hid::Report stale() {
        hid::Report report{};
        report[report::kIdByte] = report::kReportId;
        report.back() = report[report::kFirstData] = report[report::kFirstData + 1] = 0xEE;
        return report;
    }

    std::string gadget_;
    std::string controller_;
    std::string node_;
    sim::Faults faults_;
    sim::Board board_{1, faults_};
    sim::Firmware firmware_{board_, faults_};
    int descriptor_ = -1;
    bool silent_ = false;
    std::optional<int> unplugAt_; ///< instead of the reply to this command
    int taken_ = 0;
};

int run(UsbBoard& board) {
    std::string input;
    while (true) {
        pollfd both[] = {{STDIN_FILENO, POLLIN, 0}, {board.fileDescriptor(), POLLIN, 0}};
        if (poll(both, 2, -1) < 0 && errno != EINTR)
            fail("poll");
        board.serve();
        if (both[0].revents == 0)
            continue;
        char bytes[256];
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0)
            return 0;
        input.append(bytes, static_cast<std::size_t>(count));
        for (std::size_t end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
            std::cout << board.command(input.substr(0, end)) << std::endl;
            input.erase(0, end + 1);
        }
    }
}

} // namespace
} // namespace vrk

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: usb_board GADGET UDC NODE PART\n";
        return 2;
    }
    try {
        vrk::UsbBoard board(argv[1], argv[2], argv[3], argv[4]);
        return vrk::run(board);
    } catch (const std::exception& error) {
        std::cerr << "usb_board: " << error.what() << std::endl;
        return 1;
    }
}
