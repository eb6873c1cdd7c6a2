#include "views/blocks/PotMap.h"

#include "panels/WiperPanel.h"
#include "panels/instruction/InstructionPanel.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "platform/runtime/text.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace vrk {

using namespace qt;

namespace {

constexpr int kRows = 1 + InstructionPanel::kRegisters;
constexpr int kCellHeight = 71;
constexpr int kHeadHeight = 28;
constexpr int kButtonWidth = 56;
constexpr int kFieldWidth = 40;
constexpr double kDigits = 2.0;

/// What a register has on the panel.
struct Register {
    Reading& read;
    Lamp& readLamp;
    Button& readButton;
    TextBox& write;
    Lamp& writeLamp;
    Button& writeButton;
    QString name;
};

Register registerAt(InstructionPanel& p, const PotMap::Place& at) {
    const QString pot = " of pot " + QString::number(at.pot);
    if (at.row == 0)
        return {p.lblRDWcr[at.pot], p.ShpRdWCR[at.pot], p.cmdRdWCR[at.pot], p.txtWXWcr[at.pot],
                p.ShpWrWCR[at.pot], p.cmdWrWCR[at.pot], "WCR" + pot};
    const int index = at.pot * InstructionPanel::kRegisters + at.row - 1;
    return {p.lblRdData[index],
            p.ShpDataRd[index],
            p.cmdRDData[index],
            p.txtWrData[index],
            p.ShpDataWr[index],
            p.cdmWrData[index],
            "data register " + QString::number(at.row - 1) + pot};
}

/// What the part has taken, and not what the lamps show: they mark where the choice stands, which may be
/// another place than the byte sent, and a transfer that failed as well.
std::vector<PotMap::Transfer> transfersOf(const InstructionPanel& p, int pot) {
    std::vector<PotMap::Transfer> all;
    for (const InstructionPanel::Transfer& taken : p.transfers()) {
        if (taken.place.pot != pot)
            continue;
        const PotMap::Place wiper{pot, 0};
        const PotMap::Place data{pot, taken.place.reg + 1};
        all.push_back({taken.intoWiper ? data : wiper, taken.intoWiper ? wiper : data});
    }
    return all;
}

/// The wiper's volts behind the pot's name, as the device panel measured them last.
QLabel* wiperVolts(PageUi& page, InstructionPanel& p, int pot) {
    auto* shown = new ToneLabel;
    shown->setObjectName(QString("wiperVolts(%1)").arg(pot));
    shown->setFont(textFont(kSmall));
    InstructionCompanion* const beside = p.loadedCompanion();
    if (beside == nullptr)
        return shown;
    Reading& volts = beside->devicePanel().lblWiperVolts[pot];
    page.ui().watch(volts, [shown, &volts, &clock = p.context().clock()] {
        const Freshness& worth = *volts.freshness();
        const bool measured = worth.state != Freshness::State::Never;
        const bool fresh = worth.state == Freshness::State::Fresh;
        shown->setText(measured ? "wiper " + words(volts.caption()) + " V" + (fresh ? "" : ", old")
                                : QString());
        shown->setTone(fresh ? Tone::Plain : Tone::Stale);
        shown->setToolTip(measured ? ageWords(worth, clock.now()).first : QString());
    });
    return shown;
}

/// How often the data registers of a row have been written since the part was chosen.
QLabel* rowWrites(PageUi& page, const InstructionPanel& p, int reg) {
    auto* shown = quietText({});
    shown->setObjectName(QString("writes(%1)").arg(reg));
    shown->setFont(textFont(kSmall));
    InstructionCompanion* const beside = p.loadedCompanion();
    if (beside == nullptr)
        return shown;
    WiperPanel& device = beside->devicePanel();
    std::string column(1, '.');
    column += decimalText(reg);
    page.ui().watch(device.lblNvRegisters, [shown, &device, column] {
        int writes = 0;
        for (const auto& [name, count] : device.nonvolatileWrites().byRegister())
            if (startsWith(name, "DR") && name.ends_with(column))
                writes += count;
        shown->setText(QString::number(writes) + (writes == 1 ? " write" : " writes"));
    });
    return shown;
}

/// Age and state of a register in few words: the cell is narrow, and its tool tip says the rest.
std::pair<QString, Tone> cellWords(const InstructionPanel& p, const PotMap::Place& at, const Reading& reading,
                                   Milliseconds now) {
    const Freshness& worth = *reading.freshness();
    const auto full = ageWords(worth, now);
    if (worth.failed)
        return {"last read failed", Tone::Failed};
    if (worth.state == Freshness::State::Stale)
        return {words(worth.cause), Tone::Stale};
    if (worth.state == Freshness::State::Fresh)
        for (const PotMap::Transfer& transfer : transfersOf(p, at.pot))
            if (transfer.from.row == at.row)
                return {"source of the transfer", Tone::Quiet};
    return full;
}

LampWidget* mapLamp(PageUi& page, Lamp& lamp) {
    auto* widget = page.ui()(lamp, words(lamp.caption()));
    widget->setRole(LampWidget::Role::Map);
    return widget;
}

/// A failure's sign lies over the lamp of a register whose read failed: the model's blinks for that too.
LampWidget* withFailure(PageUi& page, LampWidget* lamp, Reading& reading, const QString& name) {
    auto* failed = new LampWidget(lamp);
    failed->setObjectName("failed." + words(reading.path()));
    failed->setName(name);
    failed->setColour(Colour::LightRed);
    failed->setAutoFillBackground(true);
    failed->setBackgroundRole(QPalette::Base);
    failed->resize(lamp->sizeHint());
    page.ui().watch(reading, [failed, &reading] { failed->setVisible(reading.freshness()->failed); });
    return lamp;
}

QPushButton* cellButton(PageUi& page, Button& button, const QString& name) {
    auto* widget = page.ui()(button);
    widget->setAccessibleName(name);
    widget->setFixedWidth(dp(kButtonWidth));
    widget->setFixedHeight(dp(24));
    keepWithoutMnemonic(*widget);
    return widget;
}

} // namespace

class PotMap::Cell final : public QWidget {
  public:
    Cell(PageUi& page, InstructionPanel& p, const Place& at) {
        const Register reg = registerAt(p, at);
        PanelUi& ui = page.ui();
        setObjectName(QString("cell(%1,%2)").arg(at.pot).arg(at.row));
        setAccessibleName(reg.name);
        setFixedHeight(dp(kCellHeight));
        auto* value = ui.value(reg.read, "00", kDigits);
        value->setAccessibleName(reg.name + ", as read");
        value->setFixedHeight(dp(34));
        auto* age = ui.age(reg.read);
        age->setWordWrap(true);
        age->setFont(textFont(kSmall));
        age->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        const Clock& clock = p.context().clock();
        age->words = [&p, at, &reading = reg.read, &clock, age] {
            age->setToolTip(ageWords(*reading.freshness(), clock.now()).first);
            return cellWords(p, at, reading, clock.now());
        };
        ui.watch(reg.readLamp, [age] { age->refresh(); });
        ui.keep(p.observeTransfers([age] { age->refresh(); }));
        auto* field = ui(reg.write, 3);
        field->setFixedWidth(dp(kFieldWidth));
        field->setAlignment(Qt::AlignCenter);
        field->setAccessibleName(reg.name + ", to write, hexadecimal");
        auto* differs = new ToneLabel;
        differs->setText("differs from read");
        differs->setTone(Tone::Differs);
        differs->setFont(textFont(kSmall));
        differs->setWordWrap(true);
        differs->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        auto* read = cellButton(page, reg.readButton, "Read " + reg.name);
        auto* write = cellButton(page, reg.writeButton, "Write " + reg.name);
        auto* upper = new QHBoxLayout;
        auto* lower = new QHBoxLayout;
        for (QHBoxLayout* line : {upper, lower})
            line->setSpacing(kUnit);
        upper->addWidget(value);
        upper->addWidget(withFailure(page, mapLamp(page, reg.readLamp), reg.read, reg.name + ", as read"));
        upper->addWidget(age, 1);
        upper->addWidget(read);
        lower->addWidget(field);
        lower->addWidget(mapLamp(page, reg.writeLamp));
        lower->addWidget(differs, 1);
        lower->addStretch(0);
        lower->addWidget(write);
        auto* all = new QVBoxLayout(this);
        all->setContentsMargins(kUnit, 2, kUnit, 4);
        all->setSpacing(2);
        all->addLayout(upper);
        all->addLayout(lower);
        tintHexDifference(
            page, reg.write, *field, reg.read, [&reading = reg.read] { return reading.caption(); },
            keepsPlace(differs));
        fields_ = {read, field, write};
    }

    void setChosen(bool chosen) {
        if (std::exchange(chosen_, chosen) != chosen)
            update();
    }
    const std::array<QWidget*, 3>& fields() const { return fields_; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Base));
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, 0.5, 0.5));
        if (chosen_) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
        }
    }

  private:
    std::array<QWidget*, 3> fields_{};
    bool chosen_ = false;
};

/// Lies over the cells and lets the mouse through.
class PotMap::Arrows final : public QWidget {
  public:
    explicit Arrows(PotMap& map) : QWidget(&map), map_(map) {
        setObjectName("transfers");
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    void show(std::vector<Transfer> transfers) {
        transfers_ = std::move(transfers);
        QStringList words;
        for (const Transfer& each : transfers_)
            words << QString("%1 to %2 in pot %3").arg(name(each.from), name(each.to)).arg(each.to.pot);
        setAccessibleName(words.isEmpty() ? QString("No transfer") : "Transferred: " + words.join(", "));
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const Transfer& each : transfers_)
            draw(painter, each);
    }

  private:
    static QString name(const Place& place) {
        return place.row == 0 ? QString("WCR") : "data register " + QString::number(place.row - 1);
    }
    void draw(QPainter& painter, const Transfer& each) {
        const auto at = [this](const Place& place) {
            const Cell& cell = *map_.cells_.at(static_cast<std::size_t>(place.pot * kRows + place.row));
            return QPointF(cell.mapTo(&map_, QPoint(0, dp(20))));
        };
        if (!map_.cells_.at(static_cast<std::size_t>(each.to.pot * kRows))->isVisibleTo(&map_))
            return;
        const QPointF from = at(each.from);
        const QPointF to = at(each.to);
        const double wing = dp(4);
        QPen pen(colours().changed, dp(3));
        pen.setCapStyle(Qt::FlatCap);
        painter.setPen(pen);
        painter.drawLine(from, to);
        painter.drawLine(to, to + QPointF(wing, 0));
        painter.setPen(Qt::NoPen);
        painter.setBrush(colours().changed);
        QPainterPath head(to + QPointF(wing, -wing));
        head.lineTo(to + QPointF(2 * wing, 0));
        head.lineTo(to + QPointF(wing, wing));
        head.closeSubpath();
        painter.drawPath(head);
        painter.setBrush(colours().source);
        painter.drawEllipse(from + QPointF(wing, 0), wing, wing);
    }
    PotMap& map_;
    std::vector<Transfer> transfers_;
};

PotMap::PotMap(PageUi& page, InstructionPanel& panel) : arrows_(new Arrows(*this)) {
    setObjectName("registerMap");
    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(rowHeads(page, panel));
    for (int pot = 0; pot < InstructionPanel::kPots; ++pot) {
        auto* cells = new QVBoxLayout;
        cells->setSpacing(0);
        for (int row = 0; row < kRows; ++row) {
            cells_.push_back(new Cell(page, panel, {pot, row}));
            cells->addWidget(cells_.back());
        }
        auto* block = page.ui().frame(panel.FrVRK[pot], {}, cells);
        block->setTitled(false); // the head stands in a row of its own height
        QWidget* head = qt::block(row({heading(words(panel.FrVRK[pot].caption()), kStripScale),
                                       wiperVolts(page, panel, pot), stretch}));
        head->setFixedHeight(dp(kHeadHeight));
        head->setContentsMargins(kUnit, 0, 0, 0);
        auto* outer = static_cast<QBoxLayout*>(block->layout());
        outer->setSpacing(0);
        outer->insertWidget(0, head);
        outer->addStretch(1);
        all->addWidget(block, 1);
    }
    for (int row = 0; row < kRows; ++row)
        for (int pot = 0; pot < InstructionPanel::kPots; ++pot)
            for (QWidget* field : cells_.at(static_cast<std::size_t>(pot * kRows + row))->fields())
                order_.push_back(field);
    const auto transfers = [this, &panel] { showTransfers(panel); };
    page.ui().keep(panel.observeTransfers(transfers));
    for (auto& frame : panel.FrVRK)
        page.ui().watch(*frame, transfers);
    page.ui().watch(panel.lblSet[InstructionPanel::kByteField], [this, &panel] { showChoice(panel); });
    arrows_->raise();
}

QWidget* PotMap::rowHeads(PageUi& page, const InstructionPanel& panel) {
    auto* heads = new QVBoxLayout;
    heads->setSpacing(0);
    heads->addSpacing(dp(kHeadHeight));
    for (int row = 0; row < kRows; ++row) {
        auto* name = heading(row == 0 ? QString("WCR") : "Data " + QString::number(row - 1), kStripScale);
        auto* kind = quietText(row == 0 ? "wiper counter,\nvolatile" : "non-volatile");
        kind->setFont(textFont(kSmall));
        std::vector<Item> lines{name, kind};
        if (row > 0)
            lines.emplace_back(rowWrites(page, panel, row - 1));
        lines.emplace_back(stretch);
        auto* column = tightColumn(lines);
        column->setSpacing(0);
        QWidget* head = qt::block(column);
        head->setFixedHeight(dp(kCellHeight));
        heads->addWidget(head);
    }
    heads->addStretch(1);
    QWidget* all = qt::block(heads);
    all->setFixedWidth(dp(100));
    return all;
}

void PotMap::showChoice(const InstructionPanel& panel) {
    const auto byte = panel.byteToSend();
    const auto effect = byte ? instructionEffect(*byte) : std::nullopt;
    for (int pot = 0; pot < InstructionPanel::kPots; ++pot)
        for (int row = 0; row < kRows; ++row) {
            using enum InstructionKind;
            const bool wiper =
                effect && (effect->intoWiper() || effect->kind == ReadWiper || effect->kind == Step);
            const bool chosen = effect && (effect->allPots() || effect->place.pot == pot) &&
                                row == (wiper ? 0 : effect->place.reg + 1);
            cells_.at(static_cast<std::size_t>(pot * kRows + row))->setChosen(chosen);
        }
}

void PotMap::showTransfers(const InstructionPanel& panel) {
    std::vector<Transfer> all;
    for (int pot = 0; pot < InstructionPanel::kPots; ++pot)
        if (panel.FrVRK[pot].visible())
            for (const Transfer& each : transfersOf(panel, pot))
                all.push_back(each);
    arrows_->show(std::move(all));
}

void PotMap::resizeEvent(QResizeEvent*) {
    arrows_->setGeometry(rect());
    arrows_->raise();
}

} // namespace vrk
