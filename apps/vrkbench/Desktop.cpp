#include "apps/vrkbench/Desktop.h"

#include "apps/rehearsal/SimulatedRehearsal.h"
#include "apps/vrkbench/SimulatedSocket.h"
#include "link/reportLayout.h"
#include "platform/files/files.h"
#include "platform/hid/HidapiHost.h"
#include "platform/hid/ReplayHost.h"
#include "platform/qt/theme.h"
#include "sim/PartCatalogue.h"
#include "views/replayDifference.h"

#include <QApplication>
#include <QScreen>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>

namespace vrk {

namespace {

void complain(const std::string& words) {
    std::fprintf(stderr, "vrkbench: %s\n", words.c_str());
}

/// The part's name as the simulator writes it, given in any case.
std::string knownPart(const std::string& wanted) {
    std::string upper = wanted;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    const auto parts = sim::SimulatedBus::partNames();
    if (std::find(parts.begin(), parts.end(), upper) != parts.end())
        return upper;
    std::string text = "--simulate: there is no part \"" + wanted + "\"; parts:";
    for (const std::string& name : parts)
        text += " " + name;
    throw UsageError(text);
}

/// Row of the start panel's list that opens the panel for a simulated part.
int familyOf(const std::string& part) {
    using Model = sim::PartFacts::Model;
    switch (sim::partFacts(part).model) {
    case Model::SpiRegisters:
    case Model::SpiInstructions:
        return frmStartup::kSPI;
    case Model::UpDown:
        return frmStartup::kUpDown;
    case Model::PushButton:
        return frmStartup::kPushButton;
    case Model::I2cRegisters:
    case Model::I2cInstructions:
    case Model::Banks:
        break;
    }
    return frmStartup::kI2C;
}

} // namespace

Desktop::Desktop(const DesktopOptions& options)
    : board_(chooseHost(options)),
      patient_(*board_, events_, [] { qt::QtHost::paintOnly(); }),
      recorder_(patient_, clock_, report::kVendorId, report::kProductId),
      supplies_(recorder_, complain) {
    hid::requireOtherFile(options.replay, options.wireLog);
    if (!options.wireLog.empty())
        log_.emplace(recorder_, clock_, options.wireLog, complain);
    makeSettings(options.settings);
    const std::filesystem::path folder = programFolder(options.folder);
    bench_ = std::make_unique<Bench>(
        Bench::Parts{.events = events_,
                     .dialogs = dialogs_,
                     .clipboard = clipboard_,
                     .host = recorder_,
                     .programFolder = folder,
                     .workingFolder = std::filesystem::current_path(),
                     .rehearsalBench = [this, folder] { return makeRehearsalBenchOf(*bench_, folder); },
                     .breakpoints = breakpoints_ ? &*breakpoints_ : nullptr,
                     .informationTool = &informationTool_});
    bench_->runInHome() = {.folder = userDataFolder() / "runs",
                           .keepJournal = true,
                           .program = "vrkbench " + QApplication::applicationVersion().toStdString(),
                           .part = [this] { return simulated_ != nullptr ? socketedPart() : std::string(); },
                           .awake = &awake_};
    dialogs_.onFurther = [this](const std::string& text) {
        PanelContext& context = bench_->context();
        Result further;
        further.good = false;
        further.text = text;
        further.time = context.clock().wallTime();
        context.results.add(std::move(further));
    };
    dialogs_.offerAbortOf(bench_->context().activities);
    if (kind_ == BoardKind::Replayed)
        supplies_.leaveAsTheyAre(); // a report that is not in the recording would pass for a difference
    if (kind_ == BoardKind::Real)
        plugs_.emplace(patient_, events_);
    workspace_ = std::make_unique<Workspace>(viewContext(), settings_.get());
    // The size that it begins with is more than a small screen has, and not every window manager cuts it.
    if (const QSize room = workspace_->screen()->availableSize();
        workspace_->size().boundedTo(room) != workspace_->size())
        workspace_->setWindowState(workspace_->windowState() | Qt::WindowMaximized);
}

Desktop::~Desktop() {
    workspace_.reset(); // it remembers its size in the settings
}

std::unique_ptr<hid::HidHost> Desktop::replayHost(const std::string& file) {
    kind_ = BoardKind::Replayed;
    name_ = std::filesystem::path(file).filename().string();
    auto replay = std::make_unique<hid::ReplayHost>(file, clock_, report::kVendorId, report::kProductId);
    replay->onDifference([](const auto& difference) {
        complain("the replay differs: " + difference.text);
        // The device's thread is on its way here, with an exchange in flight.
        QMetaObject::invokeMethod(
            qApp, [difference] { showReplayDifference(difference); }, Qt::QueuedConnection);
    });
    return replay;
}

std::unique_ptr<hid::HidHost> Desktop::simulatedHost(const std::string& part) {
    kind_ = BoardKind::Simulated;
    name_ = part;
    auto bus = std::make_unique<sim::SimulatedBus>(clock_);
    bus->socket(part);
    simulated_ = bus.get();
    return bus;
}

std::unique_ptr<hid::HidHost> Desktop::chooseHost(const DesktopOptions& options) {
    constexpr const char* kUsualPart = "KV4071";
    if (!options.replay.empty())
        return replayHost(options.replay);
    if (!options.simulate.empty()) {
        const std::string part = knownPart(options.simulate);
        if (options.openPart)
            partToOpen_ = part;
        return simulatedHost(part);
    }
    auto host = std::make_unique<hid::HidapiHost>(report::kVendorId, report::kProductId);
    const auto devices = host->list();
    if (std::any_of(devices.begin(), devices.end(), isBoard))
        return host;
    return simulatedHost(kUsualPart);
}

std::string Desktop::socketedPart() const {
    const auto part = simulated_->boards() > 0 ? simulated_->state().part : std::nullopt;
    return part ? part->name : std::string();
}

void Desktop::makeSettings(bool wanted) {
    if (!wanted)
        return;
    settings_ =
        std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "vrkbench", "workspace");
    dialogs_.lastFolder = [this] { return settings_->value("files/folder").toString(); };
    breakpoints_.emplace(*settings_);
    dialogs_.folderUsed = [this](const QString& folder) { settings_->setValue("files/folder", folder); };
}

ViewContext Desktop::viewContext() {
    ViewContext context{.bench = *bench_,
                        .boardKind = kind_,
                        .boardName = QString::fromStdString(name_),
                        .plugged = plugs_ ? plugs_->plugged() : nullptr};
    if (simulated_ != nullptr)
        context.socket = std::make_shared<SimulatedSocket>(*simulated_);
    context.wire = &recorder_;
    return context;
}

void Desktop::open() {
    (void)bench_->start();
    // After the window has been painted for the first time.
    if (!partToOpen_.empty())
        events_.post([this] { openPart(); });
}

void Desktop::openPart() {
    (void)bench_->frmStartup->cboVRKSelect.userSelect(familyOf(partToOpen_));
    auto* panel = dynamic_cast<WiperPanel*>(bench_->devicePanel());
    if (panel == nullptr)
        return; // a part without a choice of parts on its panel
    for (MenuEntry* entry : panel->partEntries())
        if (entry->caption().find(partToOpen_) != std::string::npos) {
            (void)entry->userClick();
            return;
        }
}

int Desktop::run() {
    open();
    return qtHost_.run();
}

} // namespace vrk
