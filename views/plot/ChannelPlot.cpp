#include "views/plot/ChannelPlot.h"

#include "panels/blocks/ChannelBlock.h"
#include "panels/blocks/SupplyBlock.h"
#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"
#include "views/plot/Plot.h"
#include "views/workspace/Page.h"

#include <QComboBox>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {
enum PaneIndex : std::size_t { kVolts = 0, kError = 1 };
constexpr double kErrorShare = 0.38; ///< of the volts' height
} // namespace

ChannelPlot::ChannelPlot(PageUi& page, ChannelBlock& block, std::function<int()> inHand)
    : page_(page), block_(block), inHand_(std::move(inHand)), plot_(new Plot("Wiper volts over position")) {
    setParent(plot_);
    plot_->setObjectName("wiperPlot");
    plot_->drawing().tellOn(page_);
    makePlot();
    makeTools();
    watch();
    auto* around = qt::block(column({plot_}));
    page.setPlot(around);
}

void ChannelPlot::makePlot() {
    PlotModel& model = plot_->model();
    model.x = {.title = "Position", .unit = {}, .decimals = 0, .steps = PlotAxis::Steps::Binary};
    model.emptyWords = "No volts over the position yet.\n"
                       "Read a channel, or press Sweep: each position that is read appears here.";
    model.numbers = [this] { return numbers(); };
    PlotPane volts;
    volts.y = {.title = "Volts", .unit = "V", .decimals = 3, .from = 0, .to = 1};
    PlotPane error;
    error.y = {.title = "LSB", .unit = "LSB", .decimals = 2, .from = -1, .to = 1, .sign = true};
    error.share = kErrorShare;
    static constexpr std::array<PlotMark, ChannelBlock::kChannels> kMarks = {
        PlotMark::Disc, PlotMark::Square, PlotMark::Triangle, PlotMark::Diamond};
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel) {
        const auto ink = static_cast<PlotInk>(channel);
        volts.series.push_back({.ink = ink, .endMark = kMarks.at(static_cast<std::size_t>(channel))});
        error.series.push_back({.ink = ink});
    }
    volts.series.push_back({.name = "ideal", .ink = PlotInk::Quiet, .dashed = true});
    model.panes = {volts, error};
    plot_->addMenuEntry("Clear", [this] { clear(); });
}

void ChannelPlot::addTool(const char* words, QWidget* tool) {
    auto* pair = qt::block(tightRow({quietText(words), tool}));
    pair->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    page_.addPlotTool(pair);
}

void ChannelPlot::makeTools() {
    const auto field = [this](const char* name, const char* words, const char* text) {
        auto* edit = new QLineEdit(text);
        edit->setObjectName(name);
        edit->setAccessibleName(QString("Sweep ") + words);
        edit->setFont(valueFont());
        edit->setAlignment(Qt::AlignRight);
        edit->setFixedWidth(dp(36));
        edit->setMaxLength(4);
        connect(edit, &QLineEdit::textEdited, edit, [edit] { setTone(*edit, Tone::Plain); });
        connect(edit, &QLineEdit::returnPressed, this, [this] { sweep(); });
        addTool(words, edit);
        return edit;
    };
    channel_ = new QComboBox;
    channel_->setObjectName("sweepChannel");
    channel_->setAccessibleName("Sweep of channel");
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel)
        channel_->addItem(QString::number(channel));
    auto* room = new QWidget;
    room->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    page_.addPlotTool(room);
    addTool("channel", channel_);
    from_ = field("sweepFrom", "from", "0");
    to_ = field("sweepTo", "to", "127");
    step_ = field("sweepStep", "step", "1");
    const auto button = [this](const char* name, const char* text, std::function<void()> act) {
        auto* tool = new QPushButton(QString::fromUtf8(text));
        tool->setObjectName(name);
        tool->setAutoDefault(false);
        tool->setFixedWidth(dp(64));
        connect(tool, &QPushButton::clicked, this, std::move(act));
        page_.addPlotTool(tool);
        return tool;
    };
    sweep_ = button("sweep", "Sweep", [this] { sweep(); });
    sweep_->setToolTip("Writes and reads back each of these positions");
    button("savePlot", "Save…", [this] { plot_->drawing().askAndSave(); });
}

void ChannelPlot::watch() {
    PanelUi& ui = page_.ui();
    ui.keep(block_.observePoints(
        [this](const ChannelBlock::Point& point) { add(point.channel, point.position, point.volts); }));
    ui.keep(block_.observePointsGone([this] { clear(); }));
    ui.watch(block_.Slider1[0], [this] {
        if (const int taps = block_.Slider1[0].maximum(); std::exchange(taps_, taps) != taps) {
            plot_->model().x.to = taps;
            plot_->showAll();
            to_->setText(QString::number(taps - 1)); // the part's last; a write of `taps` itself wraps to 0
            showIdeal();
        }
    });
    for (auto& frame : block_.SSFrame4)
        ui.watch(*frame, [this] { showChannels(); });
    if (auto* supply = dynamic_cast<SupplyBlock*>(&page_.panel()))
        ui.watch(supply->lblVCCVolts, [this, &volts = supply->lblVCCVolts] {
            const bool known = volts.freshness()->state == Freshness::State::Fresh;
            vcc_ = known ? leadingNumber(volts.caption()) : vcc_;
            showIdeal();
        });
    Activities& activities = page_.panel().context().activities;
    ui.keep(activities.observe([this, &activities] {
        const bool free = activities.current() == nullptr;
        if (sweep_->isEnabled() != free)
            setEnabledWithKeyboard(*sweep_, free);
    }));
}

void ChannelPlot::add(int channel, int position, double volts) {
    auto& panes = plot_->model().panes;
    const auto index = static_cast<std::size_t>(channel);
    const bool first = panes[kVolts].series[index].points.empty();
    panes[kVolts].series[index].put(position, volts);
    if (vcc_ > 0 && taps_ > 0)
        panes[kError].series[index].put(position, volts / (vcc_ / taps_) - position);
    if (first)
        showChannels();
    plot_->changed();
}

void ChannelPlot::clear() {
    for (PlotPane& pane : plot_->model().panes)
        for (PlotSeries& series : pane.series)
            if (!series.dashed)
                series.points.clear();
    plot_->showAll();
    showChannels();
}

void ChannelPlot::showIdeal() {
    auto& ideal = plot_->model().panes[kVolts].series.back();
    ideal.points.clear();
    if (vcc_ > 0)
        ideal.points = {{0, 0}, {static_cast<double>(taps_), vcc_}};
    ideal.name = vcc_ > 0 ? "ideal" : "";
    plot_->changed();
}

void ChannelPlot::showChannels() {
    int used = 0;
    for (const auto& frame : block_.SSFrame4)
        used += frame->visible() ? 1 : 0;
    auto& panes = plot_->model().panes;
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel) {
        const auto index = static_cast<std::size_t>(channel);
        PlotSeries& volts = panes[kVolts].series[index];
        const bool shown = block_.SSFrame4[channel].visible();
        const QString name = QString("channel %1").arg(channel);
        volts.name = !shown ? "" : used == 1 ? "volts" : volts.points.empty() ? name + ", no points" : name;
        panes[kError].series[index].name = shown && used == 1 ? "error in LSB" : "";
    }
    if (std::exchange(used_, used) != used) {
        setShown(*channel_->parentWidget(), used > 1);
        while (channel_->count() > used)
            channel_->removeItem(channel_->count() - 1);
        while (channel_->count() < used)
            channel_->addItem(QString::number(channel_->count()));
    }
    plot_->changed();
}

void ChannelPlot::prepareSweep() {
    channel_->setCurrentIndex(inHand_());
    page_.openPlot();
    from_->setFocus(Qt::ShortcutFocusReason);
    from_->selectAll();
}

void ChannelPlot::sweep() {
    std::array<int, 3> numbers{};
    std::size_t at = 0;
    for (QLineEdit* field : {from_, to_, step_}) {
        bool whole = false;
        numbers.at(at++) = field->text().trimmed().toInt(&whole);
        if (whole)
            continue;
        setTone(*field, Tone::Failed);
        field->setFocus();
        const std::string typed = field->text().toStdString();
        page_.panel().tell(false, '"' + typed + "\" is no whole number",
                           field->accessibleName().toStdString());
        return;
    }
    const int channel = used_ > 1 ? channel_->currentIndex() : 0;
    page_.openPlot();
    // As an event of the user's: a fault in it, a value out of range for example, is told there.
    (void)page_.panel().events().deliver([&block = block_, channel, numbers] {
        block.sweepWiper(channel, numbers[0], numbers[1], numbers[2]);
    });
}

QString ChannelPlot::numbers() const {
    QString text = "channel,position,volts,error in LSB\n";
    const auto& panes = plot_->model().panes;
    for (int channel = 0; channel < ChannelBlock::kChannels; ++channel) {
        const auto index = static_cast<std::size_t>(channel);
        const auto& errors = panes[kError].series[index].points;
        for (const QPointF& point : panes[kVolts].series[index].points) {
            const auto error = std::find_if(errors.begin(), errors.end(),
                                            [&](const QPointF& other) { return other.x() == point.x(); });
            text += QString("%1,%2,%3,%4\n")
                        .arg(channel)
                        .arg(point.x())
                        .arg(point.y(), 0, 'f', 3)
                        .arg(error == errors.end() ? QString() : QString::number(error->y(), 'f', 2));
        }
    }
    return text;
}

} // namespace vrk
