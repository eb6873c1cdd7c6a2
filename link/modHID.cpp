#include "link/modHID.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

using report::Command;

modHID::modHID(PanelContext& context, hid::HidHost& host, Trace& trace)
    : context_(context), host_(host), trace_(trace) {}

modHID::~modHID() {
    closeHIDHandles();
}

bool modHID::findBoards() {
    bool found = false;
    for (const hid::DeviceInfo& device : host_.list()) {
        // Every device is opened, as its identity was once read through the handle; others are closed again
        // at once. Whether a board could be opened shows at its first exchange.
        hidHandle = host_.open(device.path);
        if (device.vendor != report::kVendorId || device.product != report::kProductId) {
            host_.close(hidHandle);
            continue;
        }
        const hid::Handle overlapped = host_.open(device.path);
        if (!std::exchange(found, true)) {
            hidHandles.clear();
            hidOverlappedHandles.clear();
        }
        msgResult = static_cast<int>(Choice::Ok);
        hidHandles.push_back(hidHandle);
        hidOverlappedHandles.push_back(overlapped);
        hidOverlappedHandle = overlapped;
    }
    return found;
}

void modHID::initHIDConnection() {
    const Discovery outer = discovery_;
    const OnScopeExit restore([this, &outer] { discovery_ = outer; });
    do {
        discovery_ = {};
        if (!openBoards())
            return;
        discovery_ = {true, context_.events.depth(), false};
        readBoards();
    } while (discovery_.again);
}

bool modHID::openBoards() {
    if (hidHandles.front() != 0)
        closeHIDHandles();
    do {
        BoardConnected = true;
        if (!findBoards()) {
            BoardConnected = false;
            hidHandle = hid::kNoHandle;
            hidOverlappedHandle = hid::kNoHandle;
            setHealth(Health::Gone);
            // The blank doubled before "Evaluation" is what the dialog has always shown.
            askRetry("Please check USB connection.\r\nVRK_HID  Evaluation Board (PID &H2034) not found.");
        }
    } while (msgResult == static_cast<int>(Choice::Retry));
    if (!BoardConnected) {
        if (quietStart_)
            return false;
        giveUp_();
    }
    selectInstance(0);
    setHealth(Health::Attached);
    attached_.emit();
    trace_.line({kTraceIndent, "Init USB HID Connection"});
    return true;
}

void modHID::readBoards() {
    constexpr int kMostPasses = 3;
    if (overdue_ > 0)
        drainLate(kPurgeStep);
    for (int pass = 0; pass < kMostPasses && boardsListed_; ++pass) {
        const bool late = overdue_ > 0;
        drained_ = 0;
        try {
            boardsListed_();
        } catch (const Fault&) {
            // In the place of a setting a late reply can be a value that no board has.
            if (!late || pass + 1 == kMostPasses)
                throw;
            ++drained_;
        }
        if (discovery_.again || !late)
            return;
        drainLate(kSettle);
        overdue_ = 0;
        // A report too many: a late reply may have passed for the answer to one of these readings and pushed
        // all behind it one place off. On a quiet line they are right.
        if (drained_ == 0)
            return;
    }
}

void modHID::retry() {
    ++retries_;
    if (discovery_.reading && discovery_.depth == context_.events.depth())
        discovery_.again = true;
    else
        initHIDConnection();
}

bool modHID::boardListed() const {
    const auto devices = host_.list();
    return std::any_of(devices.begin(), devices.end(), [](const hid::DeviceInfo& device) {
        return device.vendor == report::kVendorId && device.product == report::kProductId;
    });
}

void modHID::closeHIDHandles() noexcept {
    for (std::vector<hid::Handle>* handles : {&hidHandles, &hidOverlappedHandles}) {
        for (const hid::Handle handle : *handles)
            host_.close(handle);
        handles->assign(1, 0);
    }
    hidHandle = hid::kNoHandle;
    hidOverlappedHandle = hid::kNoHandle;
}

void modHID::selectInstance(int instance) {
    if (instance < 0 || instance >= static_cast<int>(hidHandles.size()))
        throw subscriptOutOfRange();
    instance_ = instance;
    hidHandle = hidHandles[static_cast<std::size_t>(instance)];
    hidOverlappedHandle = hidOverlappedHandles[static_cast<std::size_t>(instance)];
    changed_.emit();
}

void modHID::fillReportBuffer(std::uint8_t value) {
    reportBuffer.fill(value);
    if (trace_.baseIo)
        trace_.detail({"Clear USB Buffer Memory: ", decimalText(value)});
}

hid::ReadResult modHID::readReport(hid::Report& report, Milliseconds timeout) {
    const hid::ReadResult result = host_.read(hidOverlappedHandle, report, timeout);
    if (result == hid::ReadResult::Failed)
        setHealth(Health::Gone);
    return result;
}

void modHID::tellFailed(const std::string& what) const {
    static constexpr std::array<const char*, report::kCommandCount> kNames = {
        "firmware version", "LEDs",         "pin modes",       "pin values",
        "I2C options",      "I2C clock",    "I2C transfer",    "SPI options",
        "SPI clock",        "SPI transfer", "converter clock", "converter reference",
        "converter input",  "sample mode",  "loop count",      "sample rate",
        "converter enable", "conversion",   "register access", "external converter"};
    if (failsQuietly())
        return;
    context_.results.add({.good = false,
                          .text = what + (request_ < kNames.size() ? kNames.at(request_) : "request"),
                          .detail = "command " + decimalText(request_),
                          .field = {},
                          .time = context_.clock().wallTime()});
}

void modHID::noteNoReply(hid::ReadResult result) {
    hidLinkCode = 1;
    tellFailed("No reply: ");
    if (result == hid::ReadResult::TimedOut)
        ++overdue_;
    if (health_ != Health::Gone) // a board that is gone is no silent one
        setHealth(Health::Silent);
}

int modHID::drain(hid::Report& into, Milliseconds firstStep) {
    int count = 0;
    while (count < kMostStale &&
           readReport(into, count == 0 ? firstStep : kPurgeStep) == hid::ReadResult::Arrived)
        ++count;
    drained_ += count;
    overdue_ = std::max(0, overdue_ - count);
    const bool told = std::exchange(flooded_, count == kMostStale);
    if (flooded_ && !told)
        context_.say(
            "The device never stops sending: " + decimalText(kMostStale) +
            " reports that nobody asked for have been dropped. Unplug the board and plug it in again.");
    return count;
}

void modHID::drainLate(Milliseconds firstStep) {
    // Not into the buffer, which a handler is still to look at or has just filled.
    hid::Report late{};
    drain(late, firstStep);
}

void modHID::purgeInputReports() {
    drain(reportBuffer, kPurgeStep);
}

bool modHID::writeReport() {
    if (overdue_ > 0)
        drainLate(kPurgeStep);
    request_ = reportBuffer[report::kCommandByte];
    const bool written = host_.write(hidHandle, reportBuffer);
    if (!written) {
        hidLinkCode = kLinkWriteFailed;
        ++refusals_;
        tellFailed("The board did not take the request: ");
    } else if (request_ == static_cast<std::uint8_t>(Command::I2cTransfer)) {
        transfer_ = reportBuffer;
    } else {
        sent_.emit(reportBuffer, kLinkGood);
    }
    setHealth(written ? (health_ == Health::Silent ? Health::Silent : Health::Attached) : Health::Gone);
    return written;
}

int modHID::awaitInputReport() {
    Lamp* transfer = activePanel != nullptr ? activePanel->transferLamp() : nullptr;
    if (const auto result = readReport(reportBuffer, kReplyTimeout); result != hid::ReadResult::Arrived) {
        noteNoReply(result);
        if (transfer != nullptr)
            transfer->setColour(Colour::LightRed);
        return kLinkReadFailed;
    }
    i2cStatus = reportBuffer[report::kErrorByte] > 0 ? kLinkError : kLinkGood;
    hidLinkCode = 0;
    setHealth(Health::Attached);
    if (transfer != nullptr)
        transfer->blinkGood();
    return i2cStatus;
}

bool modHID::readReply() {
    const auto result = readReport(reportBuffer, kReplyTimeout);
    if (result == hid::ReadResult::Arrived) {
        hidLinkCode = 0;
        setHealth(Health::Attached);
        return true;
    }
    noteNoReply(result);
    checkStatus(false);
    return false;
}

int modHID::checkStatus(bool written) {
    if (written)
        return kLinkGood;
    if (failsQuietly())
        return kLinkNotWritten;
    if (askRetry("Please check USB connection.\r\ncheckStatus") == Choice::Retry)
        retry();
    else
        giveUp_();
    return kLinkNotWritten;
}

void modHID::reportLinkError(int status, int quietAddressError) {
    if (status == kLinkReadFailed || status == kLinkWriteFailed) {
        if (Lamp* attach = activePanel != nullptr ? activePanel->attachLamp() : nullptr)
            attach->setColour(Colour::LightRed);
        const std::string name = status == kLinkWriteFailed ? "WriteFile" : "ReadFile";
        if (failsQuietly())
            return;
        if (askRetry("Please check USB connection." + name + " error.") == Choice::Retry)
            retry();
        else
            giveUp_();
    } else if (status == kLinkError && quietAddressError == 0) {
        if (askRetry("Invalid I2C address. Press Retry to return to GUI and enter valid address or Cancel to "
                     "close "
                     "GUI.",
                     MessageBox::Escape::Retry) == Choice::Cancel)
            giveUp_();
    }
}

Choice modHID::askRetry(const std::string& text, MessageBox::Escape escape) {
    // A pin that is put back on the way out of an action finds its handle closed: nobody is to be asked about
    // a program that has ended.
    if (context_.events.ended())
        throw ProgramEnded{};
    constexpr Milliseconds kBackFor{10'000};
    MessageBox box{text,
                   {},
                   {Choice::Retry, Choice::Cancel},
                   quietStart_
                       ? "Retry looks again. Cancel ends the search; the program goes on without a board."
                       : "Cancel ends the program; a supply that is on goes off.",
                   escape};
    if (unattended_ && escape == MessageBox::Escape::Stays)
        box.unattended = {Choice::Retry, kBackFor, [this] { return boardListed(); }};
    const Choice choice = context_.dialogs.show(box);
    // The program may have ended by another way while the box stood.
    if (context_.events.ended())
        throw ProgramEnded{};
    msgResult = static_cast<int>(choice);
    return choice;
}

namespace {

/// Byte 0 keeps the report ID that the last command or reply left there.
void layOutTransfer(hid::Report& buffer, std::uint8_t address, std::size_t count,
                    std::span<const std::uint8_t> registers) {
    buffer[report::kCommandByte] = static_cast<std::uint8_t>(Command::I2cTransfer);
    buffer[report::kI2cAddress] = address;
    buffer[report::kI2cCount] = static_cast<std::uint8_t>(count);
    buffer[report::kI2cRegisterCount] = static_cast<std::uint8_t>(registers.size());
    std::copy(registers.begin(), registers.end(), buffer.begin() + report::kI2cPayload);
}

} // namespace

int modHID::transferEnded(int status) {
    ++transfers_;
    lastTransfer_ = status;
    if (status != kLinkWriteFailed)
        sent_.emit(transfer_, status);
    return status;
}

int modHID::readI2COnce(std::uint8_t address, std::span<std::uint8_t> data,
                        std::span<const std::uint8_t> registers) {
    if (report::kFirstData + data.size() > hid::kReportSize ||
        report::kI2cPayload + registers.size() > hid::kReportSize)
        throw subscriptOutOfRange();
    layOutTransfer(reportBuffer, static_cast<std::uint8_t>(address + 1), data.size(), registers);
    if (!writeReport())
        return transferEnded(kLinkWriteFailed);
    const int status = transferEnded(awaitInputReport());
    if (status == kLinkGood)
        std::copy_n(reportBuffer.begin() + report::kFirstData, data.size(), data.begin());
    return status;
}

int modHID::writeI2COnce(std::uint8_t address, std::span<const std::uint8_t> data,
                         std::span<const std::uint8_t> registers) {
    if (report::kI2cPayload + registers.size() + data.size() > hid::kReportSize)
        throw subscriptOutOfRange();
    layOutTransfer(reportBuffer, address, data.size(), registers);
    std::copy(data.begin(), data.end(),
              reportBuffer.begin() + report::kI2cPayload + static_cast<std::ptrdiff_t>(registers.size()));
    return transferEnded(writeReport() ? awaitInputReport() : kLinkWriteFailed);
}

int modHID::readI2C(std::uint8_t address, std::span<std::uint8_t> data,
                    std::span<const std::uint8_t> registers, int quietAddressError) {
    for (;;) {
        const int status = readI2COnce(address, data, registers);
        reportLinkError(status, quietAddressError);
        if ((status != kLinkReadFailed && status != kLinkWriteFailed) || failsQuietly())
            return status;
    }
}

int modHID::writeI2C(std::uint8_t address, std::span<const std::uint8_t> data,
                     std::span<const std::uint8_t> registers, int quietAddressError) {
    for (;;) {
        const int status = writeI2COnce(address, data, registers);
        reportLinkError(status, quietAddressError);
        if ((status != kLinkReadFailed && status != kLinkWriteFailed) || failsQuietly())
            return status;
    }
}

std::string modHID::bytesToHexString(int start, int length) const {
    if (length < 0 || start < 0 || start + length > hid::kReportSize)
        throw subscriptOutOfRange();
    std::string text;
    for (int index = start; index < start + length; ++index)
        text += byteToHex2(reportBuffer[static_cast<std::size_t>(index)]) + " ";
    return text;
}

void modHID::setHealth(Health health) {
    if (std::exchange(health_, health) != health)
        changed_.emit();
}

int splitFields(std::string& text, std::span<std::string> fields, char delimiter) {
    std::fill(fields.begin(), fields.end(), std::string());
    text += delimiter;
    if (text.size() < 2)
        return 0;
    std::size_t from = 0;
    std::size_t field = 0;
    int last = 0;
    while (from < text.size() && field < fields.size()) {
        const std::size_t to = text.find(delimiter, from);
        fields[field] = text.substr(from, to - from);
        last = static_cast<int>(field++);
        from = to + 1;
    }
    return last;
}

} // namespace vrk
