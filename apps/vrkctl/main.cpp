#include "apps/filledValues.h"
#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "panels/discrete/RunInTest.h"
#include "platform/files/files.h"
#include "platform/runtime/Fault.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <exception>
#include <functional>
#include <string>
#include <system_error>

using namespace vrk;

namespace {
constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 a check failed, 2 usage, 3 no board, 4 link lost, 5 file, 129 the terminal was "
    "closed, 130 interrupted, 131 quit, 141 the reader of the output went away, 143 terminated.\n"
    "Data goes to stdout, messages and progress to stderr.";

void addCommonOptions(CLI::App& app, Options& options) {
    app.add_flag("--simulate{KV4071}", options.simulate,
                 "Work on a simulated board; --simulate=PART puts another part in its socket")
        ->type_name("[=PART]");
    app.add_option("--board", options.board, "Board to work on, counted from 0")
        ->check(CLI::Range(0, 3))
        ->type_name("N");
    app.add_flag("--json", options.json, "Data as JSON");
    app.add_option("--wire-log", options.wireLog, "Record every report, with time and direction")
        ->type_name("FILE");
    app.add_option("--replay", options.replay, "Play a recorded wire log back instead of a board")
        ->type_name("FILE");
    app.add_option("--folder", options.folder, "Folder of the calibration file")->type_name("DIR");
    app.add_option("--sim-memory", options.simMemory,
                   "Keep what the simulated part stores in a file, made if there is none")
        ->type_name("FILE");
    app.add_option("--scenario", options.scenario,
                   "Operations on the simulated board, a JSON line each, with \"atMs\" or \"stores\"")
        ->type_name("FILE");
    app.add_flag("--virtual-time", options.virtualTime,
                 "Waits cost nothing; simulated boards and replays only");
    app.add_flag("--real-time", options.realTime, "Waits take their time, on a simulated board too");
    app.add_option("--start-time", options.startTime, "Virtual time at the start")
        ->type_name("\"Y-M-D h:m:s\"");
    app.add_option("--link-wait", options.linkWait,
                   "How long a board that goes away is waited for; 60 if left out")
        ->check(CLI::Range(0.0, 86400.0))
        ->type_name("SECONDS");
}

/// \param off what the command says of VCC off, behind the levels
template <class Level>
void addLevel(CLI::App& command, Level& vcc, const char* off) {
    command.add_option("--vcc", vcc, "Level: " + levelNames() + off + "; else 5.0")->type_name("LEVEL");
}

void addWiperOptions(CLI::App& command, WiperOptions& wiper) {
    command.add_option("CHANNEL", wiper.channel, "Wiper, counted from 0")->required();
    command.add_option("--part", wiper.part, "Part, as in the panel's device menu; else manual set-up")
        ->type_name("PART");
    command.add_option("--address", wiper.address, "Bus address, hexadecimal, 8-bit form")->type_name("HH");
    command.add_option("--taps", wiper.taps, "Taps: 16, 32, 64, 100, 128 or 256");
    addLevel(command, wiper.vcc, ", or off");
}

void addScriptOptions(CLI::App& command, ScriptOptions& script) {
    command.add_option("FILE", script.file, "Script file")->required()->type_name("");
    command.add_option("--bus", script.bus, "i2c or spi; i2c if left out")
        ->check(CLI::IsMember({"i2c", "spi"}))
        ->type_name("BUS");
    command
        .add_option("--address", script.address,
                    "I2C address ahead of the script's first, hexadecimal; 50 if left out")
        ->type_name("HH");
}

void addRunOptions(CLI::App& command, ScriptOptions& script) {
    command.add_option("--part", script.part, "Part, as in the panel's device menu; else manual set-up")
        ->type_name("PART");
    addLevel(command, script.vcc, ", or off");
    command.add_option("--loop", script.loop, "Number of passes")
        ->check(CLI::Range(1, 1000000))
        ->type_name("N");
    command.add_flag("--stop-on-fail", script.stopOnFail, "End behind the first failed comparison");
    command.add_option("--from", script.from, "First line to run; else the first")->type_name("LINE");
    command.add_option("--to", script.to, "Last line to run; else the main part's last")->type_name("LINE");
    command
        .add_option("--pauses", script.pauses, "continue or ask; if left out, ask at a terminal, else stop")
        ->check(CLI::IsMember({"continue", "ask"}))
        ->type_name("WHAT");
    command.add_option("--save", script.save, "Write the script with what was read")->type_name("FILE");
    command.add_option("--junit", script.junit, "Write a JUnit report")->type_name("FILE");
    command.add_flag("--csv", script.csv, "Rows with commas");
}

/// \param which false: the whole map
void addRegisterOptions(CLI::App& command, RegisterOptions& asked, bool which) {
    if (which) {
        command.add_option("WHICH", asked.which, "Register: a name of the map in any case, or its address")
            ->required();
        command.add_flag("--volatile", asked.toVolatile, "With the control register set to volatile");
        command.add_flag("--nonvolatile", asked.toNonVolatile,
                         "With the control register set to non-volatile");
        command.add_option("--address", asked.address, "Bus address or ID, hexadecimal, 8-bit form")
            ->type_name("HH");
        addLevel(command, asked.vcc, ", or off");
    }
    command.add_option("--part", asked.part, "Part; else the simulated one")->type_name("PART");
    command.add_option("--map", asked.map, "File with the part's registers")->type_name("FILE");
}

/// What the options of the register commands fill while they are parsed.
struct RegisterCommands {
    RegisterOptions list;
    RegisterOptions read;
    RegisterWriteOptions write;
};

using Add = std::function<CLI::App*(CLI::App&, const char*, const char*, std::function<ExitCode()>)>;

void addRegisterCommands(CLI::App& app, const Add& add, const Options& options, RegisterCommands& all) {
    CLI::App* parent = app.add_subcommand("register", "List, read and write the registers of a part");
    parent->require_subcommand(1);
    addRegisterOptions(*add(*parent, "list", "List the registers that a part has",
                            [&] { return listRegisters(options, all.list); }),
                       all.list, false);
    addRegisterOptions(
        *add(*parent, "read", "Read a register", [&] { return readRegister(options, all.read); }), all.read,
        true);
    CLI::App* write = add(*parent, "write", "Write a register and read it back; VCC stays on",
                          [&] { return writeRegister(options, all.write); });
    addRegisterOptions(*write, all.write, true);
    write->add_option("VALUE", all.write.value, "Value, hexadecimal")->required();
}

void addSupplyCommands(CLI::App& app, const Add& add, const Options& options, SupplyOptions& asked) {
    CLI::App* parent = app.add_subcommand("supply", "Switch and measure the part's supplies");
    parent->require_subcommand(1);
    addLevel(*add(*parent, "on", "Switch both supplies on, and leave them on",
                  [&] { return supplyOn(options, asked); }),
             asked.vcc, "");
    add(*parent, "off", "Switch both supplies off", [&] { return supplyOff(options); });
    add(*parent, "status", "Tell what is on, and measure VCC", [&] { return supplyStatus(options); });
}

/// What is wrong with a number that must be above 0; empty if nothing is. "nan" and "inf" are no numbers
/// here.
std::string aboveZero(const std::string& text) {
    double value = 0;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    const bool fits = error == std::errc() && end == last && std::isfinite(value) && value > 0;
    return fits ? std::string() : "'" + text + "' is no number above 0";
}

void addCalibrateOptions(CLI::App& command, CalibrateOptions& asked) {
    command.add_option("--vref", asked.vref, "Reference of the converter; 3.3 if left out")
        ->check(aboveZero)
        ->type_name("VOLTS");
    command.add_flag("--save", asked.save, "Write the calibration file, from which panels take their levels");
    command.add_flag("--force", asked.force, "Save a supply that cannot be calibrated, too");
    command.add_flag("--csv", asked.csv, "Each code as it is measured, with commas");
}

void addRunInOptions(CLI::App& command, RunInOptions& runIn) {
    command.add_option("--log", runIn.log, "Write the log, as the panel saves it")->type_name("FILE");
    command.add_option("--junit", runIn.junit, "Write a JUnit report")->type_name("FILE");
    command
        .add_option_function<std::string>(
            "--on-mismatch", [&runIn](const std::string& what) { runIn.goOnMismatch = what == "continue"; },
            "stop or continue where the part is not where the run left it; stop if left out")
        ->check(CLI::IsMember({"stop", "continue"}))
        ->type_name("WHAT");
}

void addRunInEntries(CLI::App& command, RunInOptions& runIn) {
    constexpr int kMost = 1'000'000'000, kMost16 = 32767;
    command
        .add_option("--steps", runIn.steps, "Ends at the first log point from here on; 100000 if left out")
        ->check(CLI::Range(1, kMost))
        ->type_name("N");
    command.add_option("--log-every", runIn.logEvery, "Steps from log point to log point; 500 if left out")
        ->check(CLI::Range(1, kMost16))
        ->type_name("N");
    command.add_option("--positions", runIn.positions, "Positions of the part; 100 if left out")
        ->check(CLI::Range(1, kMost16))
        ->type_name("N");
    command.add_option("--tolerance", runIn.tolerance, "Fraction of one step; 0.33 if left out")
        ->check(aboveZero)
        ->type_name("X");
    command.add_option("--id", runIn.id, "Description of the test, for the log")->type_name("TEXT");
    addLevel(command, runIn.vcc, ", never off");
    command.add_flag("--log-all", runIn.logAll, "Log passes too");
    command.add_flag("--double-purge", runIn.doublePurge,
                     "Drain stale reports once more ahead of each sample");
    command.add_option("--stimulus", runIn.stimulus, "Steps of the seven stages; 102,102,63,1,1,1,1")
        ->delimiter(',')
        ->expected(RunInSettings::kStages)
        ->check(CLI::Range(0, kMost16))
        ->type_name("A,B,C,D,E,F,G");
    command.add_option("--journal", runIn.journal, "Keep a journal, so that the run can be resumed")
        ->type_name("FILE");
}

void addRunIn(CLI::App& runIns, RunInOptions& entries, RunInReportOptions& reporting,
              const std::function<CLI::App*(const char*, const char*, int)>& add) {
    CLI::App* running = add("run", "Clock, store and measure an up/down part, step by step", 0);
    addRunInEntries(*running, entries);
    addRunInOptions(*running, entries);
    CLI::App* resuming = add("resume", "Go on with a run at the exact step", 1);
    resuming->add_option("JOURNAL", entries.journal, "Journal of the run")->required()->type_name("");
    addRunInOptions(*resuming, entries);
    CLI::App* report = add("report", "Count a journal again; needs no board", 2);
    report->add_option("JOURNAL", reporting.journal, "Journal of the run")->required()->type_name("");
    report->add_option("--tolerance", reporting.tolerance, "Judge again with this fraction of one step")
        ->check(aboveZero)
        ->type_name("X");
    report->add_option("--junit", reporting.junit, "Write a JUnit report")->type_name("FILE");
    report->add_flag("--csv", reporting.csv, "The stages as rows with commas");
    runIns.require_subcommand(1);
}

int run(int argc, char** argv) {
    CLI::App app("Bench console for digitally controlled potentiometers, for the terminal.", "vrkctl");
    app.set_version_flag("--version", "vrkctl " VRK_VERSION);
    app.footer(kExitCodes);
    app.require_subcommand(1);
    app.fallthrough();

    Options options;
    addCommonOptions(app, options);
    std::function<ExitCode()> command;
    const auto add = [&command](CLI::App& parent, const char* name, const char* text,
                                std::function<ExitCode()> run) {
        CLI::App* added = parent.add_subcommand(name, text);
        added->footer("\"vrkctl --help\" tells the options that every command takes.");
        added->final_callback([&command, run = std::move(run)] { command = run; });
        return added;
    };

    add(app, "boards", "List the evaluation boards", [&] { return listBoards(options); });
    add(app, "doctor", "Say what keeps a board from working, and how to mend it",
        [&] { return doctor(options); });
    add(app, "rpc", "Serve the bench by JSON-RPC 2.0 on stdin and stdout", [&] { return serveRpc(options); });

    CLI::App* wiper = app.add_subcommand("wiper", "Write, read and measure wipers of parts on a bus");
    wiper->require_subcommand(1);
    WiperOptions reading;
    addWiperOptions(
        *add(*wiper, "read", "Read a wiper and its volts", [&] { return readWiper(options, reading); }),
        reading);
    WriteOptions writing;
    CLI::App* write = add(*wiper, "write", "Write a wiper, read it back and measure it; VCC stays on",
                          [&] { return writeWiper(options, writing); });
    addWiperOptions(*write, writing);
    write->add_option("VALUE", writing.value, "Position, decimal or 0x...")->required();
    SweepOptions sweeping;
    CLI::App* sweep = add(*wiper, "sweep", "Write, read back and measure one position after the other",
                          [&] { return sweepWiper(options, sweeping); });
    addWiperOptions(*sweep, sweeping);
    sweep->add_option("--from", sweeping.from, "First position");
    sweep->add_option("--to", sweeping.to, "Last position; else the part's last");
    sweep->add_option("--step", sweeping.step, "Distance of the positions");
    sweep->add_flag("--csv", sweeping.csv, "Rows with commas");

    CLI::App* scripts = app.add_subcommand("script", "Check, rehearse and run scripts of bus steps");
    scripts->require_subcommand(1);
    ScriptOptions script;
    addScriptOptions(*add(*scripts, "check", "Say what in a script will not do what was meant",
                          [&] { return checkScript(options, script); }),
                     script);
    CLI::App* running = add(*scripts, "run", "Run a script on the board and compare what it reads",
                            [&] { return runScript(options, script); });
    CLI::App* rehearsing =
        add(*scripts, "rehearse", "Run it on the simulated part in virtual time: what would it do?",
            [&] { return rehearseScript(options, script); });
    for (CLI::App* one : {running, rehearsing}) {
        addScriptOptions(*one, script);
        addRunOptions(*one, script);
    }
    CLI::App* runIns = app.add_subcommand("runin", "Endurance test of an up/down part's stored position");
    RunInOptions runIn;
    RunInReportOptions reporting;
    addRunIn(*runIns, runIn, reporting, [&](const char* name, const char* text, int which) {
        return add(*runIns, name, text, [&, which] {
            return which == 0   ? runRunIn(options, runIn)
                   : which == 1 ? resumeRunIn(options, runIn)
                                : reportRunIn(options, reporting);
        });
    });

    RegisterCommands registers;
    addRegisterCommands(app, add, options, registers);
    SupplyOptions supply;
    addSupplyCommands(app, add, options, supply);
    CalibrateOptions calibration;
    addCalibrateOptions(*add(app, "calibrate", "Measure VCC at every code and find the seven levels",
                             [&] { return calibrate(options, calibration); }),
                        calibration);

    app.add_subcommand("help", "Tell how a command is used")
        ->add_option("COMMAND", "Words of the command, as \"wiper sweep\"")
        ->type_name("");
    refuseEmptyValues(app, "id");

    auto arguments = readableArguments(app, argc, argv);
    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the back
    try {
        app.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        put(app.help());
        return static_cast<int>(ExitCode::Done);
    } catch (const CLI::CallForVersion& version) {
        put(std::string(version.what()) + "\n");
        return static_cast<int>(ExitCode::Done);
    } catch (const CLI::ParseError& error) {
        throw CommandError(ExitCode::Usage, usageError(app, error));
    }
    if (!command) // "help" behind options
        throw CommandError(ExitCode::Usage, "\"vrkctl help\" takes a command and nothing before it");
    return static_cast<int>(finalCode(command()));
}

int ended(const CommandError& error) {
    if (*error.what() != '\0')
        tell(error.what());
    return static_cast<int>(finalCode(error.code()));
}
} // namespace

int main(int argc, char** argv) {
    failAtFileSizeLimit();
    try {
        interrupt::takeSignals();
        return run(argc, argv);
    } catch (const CommandError& error) {
        return ended(error);
    } catch (const Fault& fault) {
        // Of a file that an option names: the bench tells its own.
        return ended({ExitCode::File, fault.what()});
    } catch (const std::exception& error) {
        return ended({ExitCode::CheckFailed, error.what()});
    }
}
