#include "link/modHID.h"

#include <algorithm>
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
            return;
        giveUp_();
    }
    setHealth(Health::Attached);
    attached_.emit();
    trace_.line({kTraceIndent, "Init USB HID Connection"});
    if (boardsListed_)
        boardsListed_();
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

bool modHID::readReport(Milliseconds timeout) {
    const hid::ReadResult result = host_.read(hidOverlappedHandle, reportBuffer, timeout);
    if (result == hid::ReadResult::Failed)
        setHealth(Health::Gone);
    return result == hid::ReadResult::Arrived;
}

void modHID::noteNoReply() {
    hidLinkCode = 1;
    if (health_ != Health::Gone) // a board that is gone is no silent one
        setHealth(Health::Silent);
}

void modHID::purgeInputReports() {
    while (readReport(kPurgeStep)) {
    }
}

bool modHID::writeReport() {
    const bool written = host_.write(hidHandle, reportBuffer);
    setHealth(written ? (health_ == Health::Silent ? Health::Silent : Health::Attached) : Health::Gone);
    return written;
}

int modHID::awaitInputReport() {
    Lamp* transfer = activePanel != nullptr ? activePanel->transferLamp() : nullptr;
    if (!readReport(kReplyTimeout)) {
        noteNoReply();
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
    if (readReport(kReplyTimeout)) {
        hidLinkCode = 0;
        setHealth(Health::Attached);
        return true;
    }
    noteNoReply();
    // Retry reads the whole board through this buffer; none of that may pass for the reply that was lost.
    const hid::Report kept = reportBuffer;
    checkStatus(false);
    reportBuffer = kept;
    setReportID(); // a cleared buffer has none, and I2C transfers set none
    return false;
}

int modHID::checkStatus(bool written) {
    if (written)
        return kLinkGood;
    if (failsQuietly())
        return kLinkNotWritten;
    if (askRetry("Please check USB connection.\r\ncheckStatus") == Choice::Retry)
        initHIDConnection();
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
            initHIDConnection();
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
    const Choice choice = context_.dialogs.show(
        {text,
         {},
         {Choice::Retry, Choice::Cancel},
         quietStart_ ? "Retry looks again. Cancel ends the search; the program goes on without a board."
                     : "Cancel ends the program; a supply that is on goes off.",
         escape});
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
    return status;
}

int modHID::readI2COnce(std::uint8_t address, std::span<std::uint8_t> data,
                        std::span<const std::uint8_t> registers) {
    if (report::kFirstData + data.size() > hid::kReportSize ||
        report::kI2cPayload + registers.size() > hid::kReportSize)
        throw subscriptOutOfRange();
    layOutTransfer(reportBuffer, static_cast<std::uint8_t>(address + 1), data.size(), registers);
    if (!writeReport()) {
        hidLinkCode = kLinkWriteFailed;
        return transferEnded(kLinkWriteFailed);
    }
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
