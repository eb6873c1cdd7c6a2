#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "platform/runtime/text.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace vrk {

namespace {
/// What the console shows, without its caption: "1.2 - 2008/June/12".
std::string version(const std::string& shown) {
    constexpr std::string_view kCaption = "Firmware Version ";
    return startsWith(shown, kCaption) ? shown.substr(kCaption.size()) : shown;
}
} // namespace

ExitCode listBoards(const Options& options) {
    TerminalDialogs dialogs;
    Session session(options, dialogs, DefaultTime::VirtualIfPossible);
    const auto boards = session.boards();
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t number = 0; number < boards.size(); ++number) {
        Bench& bench = session.bench();
        std::string firmware;
        const Outcome outcome = session.events().deliver([&] {
            // The console alone: it reads the boards and changes nothing on them.
            auto& console = *bench.frmMainF340;
            console.cboEVBinstance.setListIndex(static_cast<int>(number));
            console.cmdFirmwareVersion_Click();
            firmware = version(console.lblFirmwareVersion.caption());
        });
        if (!outcome.done()) {
            const std::string why = session.wire().lastError();
            firmware = "unknown, the board does not answer" + (why.empty() ? "" : ": " + why);
        }
        list.push_back({{"board", number}, {"path", boards[number].path}, {"firmware", firmware}});
        if (!options.json)
            std::printf("%zu  %s  firmware %s\n", number, boards[number].path.c_str(), firmware.c_str());
    }
    if (options.json)
        std::printf("%s\n", list.dump(2).c_str());
    if (boards.empty())
        throw CommandError(ExitCode::NoBoard, "no evaluation board is plugged in");
    return session.events().ended() ? ExitCode::LinkLost : ExitCode::Done;
}

} // namespace vrk
