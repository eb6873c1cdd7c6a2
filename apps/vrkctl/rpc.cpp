#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"
#include "automation/StdioTransport.h"
#include "link/reportLayout.h"
#include "platform/files/files.h"
#include "platform/hid/HidapiHost.h"
#include "platform/system/LogindInhibitor.h"

#include <system_error>
#include <unistd.h>

namespace vrk {

namespace {
constexpr const char* kDefaultPart = "KV4071";

/// A bench that nobody said more about works on the board that is plugged in, else on a simulated one.
Options completed(Options options) {
    if (!options.simulate.empty())
        options.simulate = simulatedPart(options.simulate);
    if (!options.simulate.empty() || !options.replay.empty())
        return options;
    hid::HidapiHost host(report::kVendorId, report::kProductId);
    if (options.virtualTime || boardsOf(host).empty())
        options.simulate = kDefaultPart;
    return options;
}
} // namespace

ExitCode serveRpc(const Options& given) {
    const Options options = completed(given);
    ScriptedDialogs dialogs;
    Session session(options, dialogs, DefaultTime::Real);
    Bench& bench = session.bench();
    LogindInhibitor awake("vrkctl");
    bench.runInHome() = {.folder = userDataFolder() / "runs",
                         .keepJournal = false, // a client asks for files that it wants
                         .program = "vrkctl " VRK_VERSION,
                         .part = [&options] { return options.simulate; },
                         .awake = session.virtualClock() == nullptr ? &awake : nullptr};
    // Before the first request is looked at: the start panel's load lets events run.
    bench.start();
    session.workBegins();
    StdioTransport transport({.events = session.events(),
                              .dialogs = dialogs,
                              .clipboard = session.clipboard(),
                              .panels = bench.panels(),
                              .values = bench.sharedValues(),
                              .moduleActions = bench.moduleActions(),
                              .results = bench.context().results,
                              .virtualClock = session.virtualClock(),
                              .simulated = session.simulated(),
                              .wire = &session.wire(),
                              .log = tell},
                             STDIN_FILENO, STDOUT_FILENO, interrupt::descriptor());
    tell("serving " +
         (options.simulate.empty() ? std::string(options.replay.empty() ? "the board" : "a recording")
                                   : "a simulated board with " + options.simulate) +
         (session.virtualClock() != nullptr ? " in virtual time" : "") + "; one JSON-RPC message a line");
    transport.run();
    if (transport.outputError() == 0)
        return interrupt::requested().value_or(ExitCode::Done);
    const ExitCode code = outputFailure(transport.outputError());
    if (code == ExitCode::File)
        tell("an answer could not be written: " + std::generic_category().message(transport.outputError()));
    return code;
}

} // namespace vrk
