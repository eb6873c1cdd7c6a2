#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "link/frmMainF340.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace vrk {

namespace {

/// Asks one board for its firmware version, whatever the others do: no bench is loaded, as that speaks to the
/// first board. \return nothing when it does not answer.
std::optional<std::string> askVersion(hid::HidHost& host, const std::string& path) {
    const hid::Handle handle = host.open(path);
    hid::Report report{};
    report[report::kIdByte] = report::kReportId;
    report[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::FirmwareVersion);
    const bool answered = handle != hid::kNoHandle && host.write(handle, report) &&
                          host.read(handle, report, modHID::kReplyTimeout) == hid::ReadResult::Arrived;
    host.close(handle);
    return answered ? std::optional(firmwareVersion(report)) : std::nullopt;
}

} // namespace

ExitCode listBoards(const Options& options) {
    TerminalDialogs dialogs;
    Session session(options, dialogs, DefaultTime::VirtualIfPossible);
    const auto boards = session.boards();
    bool allAnswer = true;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t number = 0; number < boards.size(); ++number) {
        const std::string& path = boards[number].path;
        std::string firmware;
        if (const auto version = askVersion(session.wire(), path)) {
            firmware = *version;
        } else {
            allAnswer = false;
            const std::string why = session.wire().lastError();
            firmware = "unknown, the board does not answer" + (why.empty() ? "" : ": " + why);
        }
        list.push_back({{"board", number}, {"path", path}, {"firmware", firmware}});
        if (!options.json)
            putf("%zu  %s  firmware %s\n", number, path.c_str(), firmware.c_str());
    }
    if (options.json)
        put(list.dump(2) + "\n");
    if (boards.empty())
        throw CommandError(ExitCode::NoBoard, "no evaluation board is plugged in");
    return allAnswer ? ExitCode::Done : ExitCode::LinkLost;
}

} // namespace vrk
