#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "link/frmMainF340.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace vrk {

namespace {

/// One board as it was found.
struct Board {
    std::string path;
    std::optional<std::string> firmware{}; ///< nothing: it did not tell
    bool opened = false;
    std::string why{}; ///< it did not tell
};

/// Asks one board for its firmware version, whatever the others do: no bench is loaded, as that speaks to the
/// first board.
Board ask(hid::HidHost& host, const std::string& path) {
    Board board{.path = path};
    const hid::Handle handle = host.open(path);
    board.opened = handle != hid::kNoHandle;
    hid::Report report{};
    report[report::kIdByte] = report::kReportId;
    report[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::FirmwareVersion);
    if (board.opened && host.write(handle, report) &&
        host.read(handle, report, modHID::kReplyTimeout) == hid::ReadResult::Arrived)
        board.firmware = firmwareVersion(report);
    else
        board.why = host.lastError();
    if (board.why.empty())
        board.why = "no reply within 6 seconds";
    host.close(handle);
    return board;
}

nlohmann::ordered_json json(const Board& board, std::size_t number) {
    nlohmann::ordered_json entry = {{"board", number}, {"path", board.path}};
    entry["firmware"] = board.firmware ? nlohmann::ordered_json(*board.firmware) : nullptr;
    if (!board.firmware)
        entry["error"] = board.why;
    return entry;
}

} // namespace

ExitCode listBoards(const Options& options) {
    TerminalDialogs dialogs;
    Session session(options, dialogs, DefaultTime::VirtualIfPossible);
    const auto found = session.boards();
    ExitCode code = ExitCode::Done;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t number = 0; number < found.size() && !interrupt::requested(); ++number) {
        const Board board = ask(session.wire(), found[number].path);
        list.push_back(json(board, number));
        const std::string trouble = (board.opened ? "does not answer: " : "cannot be used: ") + board.why;
        if (!options.json)
            put(std::to_string(number) + "  " + board.path + "  " +
                (board.firmware ? "firmware " + *board.firmware : trouble) + "\n");
        if (board.firmware)
            continue;
        tell("board " + std::to_string(number) + " " + trouble + "; \"vrkctl doctor\" says how to mend it");
        // A link that broke outranks a board that was never opened.
        if (board.opened || code != ExitCode::LinkLost)
            code = board.opened ? ExitCode::LinkLost : ExitCode::NoBoard;
    }
    if (options.json)
        put(list.dump(2) + "\n");
    if (found.empty())
        throw CommandError(ExitCode::NoBoard, kNoBoardText);
    return interrupt::requested().value_or(code);
}

} // namespace vrk
