#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/PanelBench.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "panels/blocks/RegisterExchange.h"
#include "platform/files/RegisterMapFile.h"
#include "platform/runtime/text.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <utility>

namespace vrk {

namespace {

RegisterMap mapOf(const Options& options, const RegisterOptions& asked) {
    if (!asked.map.empty())
        return readRegisterMap(asked.map);
    const sim::PartFacts* facts = partOf(options, asked.part);
    if (facts == nullptr)
        throw usage("name the part: --part PART, or --map FILE with its registers");
    if (auto map = shippedRegisterMap(facts->name))
        return *std::move(map);
    throw CommandError(ExitCode::File, "the register map of " + std::string(facts->name) +
                                           " is not where the programs are; --map takes another");
}

std::string hex(int value, int digits) {
    return hexText(value, digits);
}

/// Keys in the order that the manual tells.
nlohmann::ordered_json json(const PartRegister& reg) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();
    for (const RegisterField& field : reg.fields)
        fields[field.name] = nullptr;
    return {{"name", reg.name},
            {"address", hex(reg.address, 2)},
            {"access", accessText(reg.access)},
            {"fields", fields},
            {"status", nullptr}};
}

nlohmann::ordered_json json(const PartRegister& reg, const RegisterExchange::Result& result) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();
    for (const RegisterField& field : reg.fields)
        fields[field.name] =
            result.value ? nlohmann::ordered_json(hex(field.valueIn(*result.value), (field.bitWidth + 3) / 4))
                         : nlohmann::ordered_json();
    return {{"name", reg.name},
            {"address", hex(reg.address, 2)},
            {"access", accessText(reg.access)},
            {"value", result.value ? nlohmann::ordered_json(hex(*result.value, reg.digits()))
                                   : nlohmann::ordered_json()},
            {"fields", fields},
            {"status", result.status}};
}

void print(const Options& options, const PartRegister& reg, const RegisterExchange::Result& result) {
    if (options.json) {
        put(json(reg, result).dump() + "\n");
        return;
    }
    std::string line = reg.name + " (" + hex(reg.address, 2) + ")  ";
    line += result.value ? hex(*result.value, reg.digits()) : result.good() ? "written" : "no answer";
    for (const RegisterField& field : reg.fields)
        if (result.value) {
            const int value = field.valueIn(*result.value);
            const FieldChoice* choice = field.choiceOf(value);
            line += "  " + field.name + " " + hex(value, (field.bitWidth + 3) / 4) +
                    (choice != nullptr ? " (" + choice->name + ")" : "");
        }
    put(line + "  bus " + statusText(result.status) + "\n");
}

/// One register of a part on the board.
class RegisterBench {
  public:
    /// Checks what can be checked without a board. \throws CommandError
    RegisterBench(const Options& options, const RegisterOptions& asked)
        : asked_(asked), map_(mapOf(options, asked)), reg_(find(asked.which)), bench_(options) {
        std::optional<int> address;
        if (asked.address)
            address = parseAddress(*asked.address);
        if (address && !map_.address)
            throw usage("--address: " + map_.part + " has none");
        if (asked.vcc)
            requireLevel(*asked.vcc);
        if (asked.toVolatile && asked.toNonVolatile)
            throw usage("--volatile and --nonvolatile exclude each other");
        if (choosesStorage() && map_.storageField() == nullptr)
            throw usage(map_.part + " has no choice between volatile and non-volatile");
        exchange_.emplace(bench_.bench().services(), map_, address);
    }

    const PartRegister& reg() const { return reg_; }
    PanelBench& bench() { return bench_; }

    void open() {
        bench_.open(map_.bus);
        if (powered())
            bench_.switchVccOn(asked_.vcc.value_or("on"));
        bench_.act("preparing the bus", [this] { exchange_->prepare(); });
    }

    RegisterExchange::Result read() {
        return inStorage([this] { return readOf(reg_); });
    }
    /// The status of a write that failed, else what was read back.
    RegisterExchange::Result write(int value) {
        return inStorage([this, value] {
            const RegisterExchange::Result written = writeTo(reg_, value);
            return written.good() && reg_.readable() ? readOf(reg_) : written;
        });
    }

    bool powered() const { return asked_.vcc != "off"; }
    void explain(const RegisterExchange::Result& result) {
        bench_.tellMessages();
        if (!result.good())
            tell(reg_.name + ": the part " + (powered() ? "does not answer" : "does not answer without VCC") +
                 " (bus: " + statusText(result.status) + ")");
        if (left_)
            tell("the control register could not be put back: it stands at " + hex(*left_, 2));
    }
    bool whole() const { return !left_; }

  private:
    const PartRegister& find(const std::string& which) const {
        if (const PartRegister* found = map_.find(which))
            return *found;
        std::vector<std::string> names;
        for (const PartRegister& one : map_.registers)
            names.push_back(one.name);
        throw usage("'" + which + "' is no register of " + map_.part + didYouMean(which, names) +
                    (names.empty() ? "; it has none" : "; registers: " + listed(names)));
    }

    bool choosesStorage() const { return asked_.toVolatile || asked_.toNonVolatile; }

    RegisterExchange::Result readOf(const PartRegister& reg) {
        RegisterExchange::Result result;
        bench_.act("reading " + reg.name, [&] { result = exchange_->read(reg); });
        bench_.requireLink(result.status, "reading " + reg.name);
        return result;
    }
    RegisterExchange::Result writeTo(const PartRegister& reg, int value) {
        RegisterExchange::Result result;
        bench_.act("writing " + reg.name, [&] { result = exchange_->write(reg, value); });
        bench_.requireLink(result.status, "writing " + reg.name);
        return result;
    }

    /// Runs `work` with the control register as the options want it, and puts that back.
    template <class Work>
    RegisterExchange::Result inStorage(Work work) {
        const PartRegister* control = map_.control();
        if (!choosesStorage() || control == &reg_)
            return work();
        const RegisterExchange::Result before = readOf(*control);
        if (!before.good())
            return before;
        const int wanted = map_.storageField()->put(*before.value, asked_.toVolatile ? 1 : 0);
        const bool differs = wanted != *before.value;
        if (differs)
            if (const RegisterExchange::Result set = writeTo(*control, wanted); !set.good())
                return {set.status, {}};
        const RegisterExchange::Result result = workWith(*control, wanted, work);
        if (differs && !writeTo(*control, *before.value).good())
            left_ = wanted;
        return result;
    }

    /// A board that comes back has had no power, and the part's control register stands as power makes it:
    /// the write that is repeated then would go to the memory that the user has not asked for.
    template <class Work>
    RegisterExchange::Result workWith(const PartRegister& control, int wanted, Work work) {
        bool setting = false;
        const Subscription again = bench_.bench().link().observeBoardRead([&] {
            if (std::exchange(setting, true))
                return; // the board has gone once more, under this very write
            (void)exchange_->write(control, wanted);
            setting = false;
        });
        return work();
    }

    RegisterOptions asked_;
    RegisterMap map_;
    const PartRegister& reg_;
    PanelBench bench_;
    std::optional<RegisterExchange> exchange_;
    std::optional<int> left_; ///< where the control register stands, if it could not be put back
};

int parseValue(const std::string& text, const PartRegister& reg) {
    int value = -1;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value, 16);
    if (error != std::errc() || end != last || value < 0 || value > reg.most())
        throw usage("'" + text + "' is no hexadecimal value from 0 to " + hex(reg.most(), reg.digits()));
    return value;
}

ExitCode ended(RegisterBench& bench, const Options& options, const RegisterExchange::Result& result,
               bool same) {
    print(options, bench.reg(), result);
    bench.explain(result);
    if (const auto signalled = interrupt::requested())
        return *signalled;
    bench.bench().requireReplayed();
    return result.good() && same && bench.whole() ? ExitCode::Done : ExitCode::CheckFailed;
}

} // namespace

ExitCode listRegisters(const Options& options, const RegisterOptions& asked) {
    const RegisterMap map = mapOf(options, asked);
    if (options.json) {
        nlohmann::ordered_json all = nlohmann::ordered_json::array();
        for (const PartRegister& reg : map.registers)
            all.push_back(json(reg));
        put(all.dump() + "\n");
        return ExitCode::Done;
    }
    std::size_t width = 0;
    for (const PartRegister& reg : map.registers)
        width = std::max(width, reg.name.size());
    for (const PartRegister& reg : map.registers) {
        std::string line = hex(reg.address, 2) + "  " + reg.name +
                           std::string(width - reg.name.size() + 2, ' ') + accessText(reg.access);
        for (const RegisterField& field : reg.fields)
            line += "  " + field.name + "[" +
                    (field.bitWidth > 1 ? std::to_string(field.bitOffset + field.bitWidth - 1) + ":" : "") +
                    std::to_string(field.bitOffset) + "]";
        put(line + "\n");
    }
    return ExitCode::Done;
}

ExitCode readRegister(const Options& options, const RegisterOptions& asked) {
    RegisterBench bench(options, asked);
    if (!bench.reg().readable())
        throw usage(bench.reg().name + " cannot be read: it is write-only");
    bench.open();
    return ended(bench, options, bench.read(), true);
}

ExitCode writeRegister(const Options& options, const RegisterWriteOptions& asked) {
    RegisterBench bench(options, asked);
    if (!bench.reg().writable())
        throw usage(bench.reg().name + " cannot be written: it is read-only");
    const int value = parseValue(asked.value, bench.reg());
    bench.open();
    const RegisterExchange::Result result = bench.write(value);
    const bool same = !result.value || *result.value == value;
    const ExitCode code = ended(bench, options, result, same);
    if (!same)
        tell(bench.reg().name + ": wrote " + hex(value, bench.reg().digits()) + " but read " +
             hex(*result.value, bench.reg().digits()) + " back");
    if (code == ExitCode::Done && bench.powered())
        bench.bench().leavePowered("a volatile value would be lost with it");
    else if (interrupt::requested() && bench.powered())
        tell("interrupted; VCC goes off");
    return code;
}

} // namespace vrk
