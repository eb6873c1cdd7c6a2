#include "apps/filledValues.h"
#include "apps/vrkbench/Desktop.h"
#include "apps/vrkbench/SignalWatch.h"
#include "platform/files/files.h"
#include "platform/qt/theme.h"

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

using namespace vrk;

namespace {

/// As in the manual; the terminal program has the same.
enum ExitCode : int { kDone = 0, kUsage = 2, kFile = 5 };

/// \return the exit code where the command line ends the program.
std::optional<int> readOptions(int argc, char** argv, DesktopOptions& options) {
    CLI::App line("Bench console for digitally controlled potentiometers.", "vrkbench");
    line.set_version_flag("--version", "vrkbench " VRK_VERSION);
    auto* simulate = line.add_option("--simulate", options.simulate,
                                     "Work on a simulated board; with a part, that part is in its socket and "
                                     "its panel opens")
                         ->type_name("[PART]")
                         ->expected(0, 1);
    line.add_option("--wire-log", options.wireLog, "Record every report, with time and direction")
        ->type_name("FILE");
    line.add_option("--replay", options.replay, "Play a recorded wire log back instead of a board")
        ->type_name("FILE")
        ->excludes("--simulate");
    line.add_option("--folder", options.folder, "Folder of the calibration file")->type_name("DIR");
    bool forget = false;
    line.add_flag("--no-settings", forget, "Neither use nor keep size, docks and colours of the window");
    // Old shortcuts on the desktop pass it; it has no effect.
    std::string oldSwitch;
    line.add_option("switch", oldSwitch)->check(CLI::IsMember({"/d"}))->group("");
    refuseEmptyValues(line);
    line.footer("Without --simulate and --replay the bench works on the board that is plugged in, and on a\n"
                "simulated one where there is none. Exit codes: 0 done, 2 usage, 5 file; 128 and its number\n"
                "after a signal.");
    try {
        line.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            line.exit(error); // the text that was asked for
            return kDone;
        }
        std::fprintf(stderr, "vrkbench: %s (\"vrkbench --help\" tells more)\n", error.what());
        return kUsage;
    }
    options.openPart = !options.simulate.empty() && options.simulate != "/d";
    if (simulate->count() > 0 && !options.openPart)
        options.simulate = "KV4071";
    options.settings = !forget;
    return std::nullopt;
}

int runDesktop(const DesktopOptions& options, QApplication& application) {
    qt::applyTheme(application, qt::desktopShade());
    std::optional<int> signalled;
    {
        Desktop desktop(options);
        SignalWatch signals([&desktop] { desktop.end(); });
        const int code = desktop.run();
        signalled = signals.exitCode();
        if (!signalled)
            return code;
    }
    return *signalled;
}

} // namespace

int main(int argc, char** argv) {
    failAtFileSizeLimit();
    std::signal(SIGPIPE, SIG_IGN); // a wire log whose reader has left ends, and not the program
    DesktopOptions options;
    if (const auto code = readOptions(argc, argv, options))
        return *code;
    QApplication application(argc, argv);
    QApplication::setApplicationName("vrkbench");
    QApplication::setApplicationDisplayName("VRK Bench");
    QApplication::setApplicationVersion(VRK_VERSION);
    QApplication::setWindowIcon(QIcon::fromTheme("vrkbench"));
    // Which window is the last one is for the panels to say.
    QApplication::setQuitOnLastWindowClosed(false);
    try {
        return runDesktop(options, application);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "vrkbench: %s\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrkbench: %s\n", error.what());
        return kFile;
    }
}
