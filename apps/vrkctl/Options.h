#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vrk {

/// What a command ends with; the manual lists them.
enum class ExitCode {
    Done = 0,
    CheckFailed = 1, ///< the part did not answer, or a value read is not the value written
    Usage = 2,
    NoBoard = 3,
    LinkLost = 4,
    File = 5,
    HungUp = 129,      ///< the terminal was closed
    Interrupted = 130, ///< Ctrl-C
    Quit = 131,        ///< the terminal's quit key
    ReaderGone = 141,  ///< nobody reads the output any more
    Terminated = 143
};

/// Ends a command with a message for the terminal; an empty one says nothing.
class CommandError : public std::runtime_error {
  public:
    CommandError(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

/// The options that every command takes.
struct Options {
    std::string simulate; ///< part in the simulated board's socket; empty: real boards
    int board = 0;        ///< instance, in the order in which the system lists the boards
    std::filesystem::path folder;
    std::filesystem::path wireLog;
    std::filesystem::path replay;
    bool virtualTime = false;
    bool realTime = false;
    std::filesystem::path simMemory; ///< of the simulated part
    std::filesystem::path scenario;  ///< what happens at the simulated board
    std::string startTime;           ///< "2020-01-01 12:00:00"
    double linkWait = 60;            ///< seconds that a lost board is waited for; 0: it is given up at once
    bool json = false;
};

struct WiperOptions {
    int channel = 0;
    std::string part; ///< an entry of the panel's device menu; empty: the simulated one, or manual set-up
    std::optional<std::string> address; ///< hexadecimal, 8-bit form; nothing: the part's
    std::optional<int> taps;            ///< nothing: the part's
    std::optional<std::string> vcc;     ///< a level of the supply list, "on" or nothing: 5.0, or "off"
    bool powered() const { return vcc != "off"; }
};

struct WriteOptions : WiperOptions {
    std::string value; ///< decimal, or hexadecimal behind 0x
};

struct SweepOptions : WiperOptions {
    int from = 0;
    std::optional<int> to; ///< nothing: the last position
    int step = 1;
    bool csv = false;
};

struct ScriptOptions {
    std::filesystem::path file;
    std::string bus = "i2c";    ///< or "spi"
    std::string address = "50"; ///< hexadecimal, of the rows ahead of the first address command
    std::string part;           ///< a name of the panel's menu; empty: the simulated one, or manual set-up
    std::optional<std::string> vcc; ///< as of WiperOptions
    int loop = 1;                   ///< passes
    bool stopOnFail = false;
    std::optional<int> from; ///< first and last line to run; nothing: those of the main part
    std::optional<int> to;
    std::string pauses;          ///< "continue" or "ask"; empty: ask at a terminal, else stop
    std::filesystem::path save;  ///< the script with what was read
    std::filesystem::path junit; ///< report
    bool csv = false;
};

struct RegisterOptions {
    std::string which; ///< a name of the map in any case, or a hexadecimal address
    std::string part;
    std::optional<std::string> address;
    std::optional<std::string> vcc;
    std::filesystem::path map; ///< empty: the part's that comes with the program
    bool toVolatile = false;
    bool toNonVolatile = false; ///< neither: as the control register stands
};

struct RegisterWriteOptions : RegisterOptions {
    std::string value; ///< hexadecimal
};

struct SupplyOptions {
    std::optional<std::string> vcc; ///< a level of the supply list; nothing: 5.0
};

struct CalibrateOptions {
    std::string vref; ///< volts, above 0; empty: as the page begins
    bool save = false;
    bool force = false; ///< save a calibration that findings speak against
    bool csv = false;
};

struct RunInOptions {
    int steps = 100000;
    int logEvery = 500;
    int positions = 100;
    double tolerance = 0.33; ///< fraction of one step
    std::string id = "User Test ID";
    std::string vcc; ///< a level of the supply list; empty: the one that stands there
    bool logAll = false;
    bool doublePurge = false;
    std::vector<int> stimulus; ///< steps of the seven stages; empty: the usual ones
    std::filesystem::path log;
    std::filesystem::path journal;
    std::filesystem::path junit;
    bool goOnMismatch = false;
};

struct RunInReportOptions {
    std::filesystem::path journal;
    std::optional<double> tolerance;
    std::filesystem::path junit;
    bool csv = false;
};

ExitCode listBoards(const Options& options);
ExitCode doctor(const Options& options);
ExitCode readWiper(const Options& options, const WiperOptions& wiper);
ExitCode writeWiper(const Options& options, const WriteOptions& wiper);
ExitCode sweepWiper(const Options& options, const SweepOptions& sweep);
ExitCode checkScript(const Options& options, const ScriptOptions& script);
ExitCode runScript(const Options& options, const ScriptOptions& script);
ExitCode rehearseScript(const Options& options, const ScriptOptions& script);
ExitCode listRegisters(const Options& options, const RegisterOptions& asked);
ExitCode readRegister(const Options& options, const RegisterOptions& asked);
ExitCode writeRegister(const Options& options, const RegisterWriteOptions& asked);
ExitCode supplyOn(const Options& options, const SupplyOptions& asked);
ExitCode supplyOff(const Options& options);
ExitCode supplyStatus(const Options& options);
ExitCode calibrate(const Options& options, const CalibrateOptions& asked);
ExitCode runRunIn(const Options& options, const RunInOptions& runIn);
ExitCode resumeRunIn(const Options& options, const RunInOptions& runIn);
ExitCode reportRunIn(const Options& options, const RunInReportOptions& report);
ExitCode serveRpc(const Options& options);

} // namespace vrk
