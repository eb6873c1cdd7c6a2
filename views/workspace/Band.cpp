#include "views/workspace/Band.h"

#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/workspace/BandCell.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

constexpr int kHeight = 60;
constexpr double kDigits = 1.65;

template <class Widget>
Widget* named(Widget* widget, const char* name) {
    widget->setObjectName(name);
    return widget;
}

} // namespace

bool Band::supplyOn() const {
    const auto lit = [](const Lamp* lamp) { return lamp != nullptr && lamp->colour() != Colour::Black; };
    return lit(source_.vcc) || lit(source_.minus);
}

Band::Band(const ViewContext& context) : context_(context) {
    setObjectName("band");
    setAccessibleName("Board, part, supply, result");
    setFixedHeight(dp(kHeight));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 1);
    row->setSpacing(0);
    makeBoard(*row);
    makePart(*row);
    makeSupply(*row);
    makeResult(*row);
    makeRun(*row);
    PanelContext& panels = context_.bench.context();
    always_.push_back(panels.results.observe([this](const Result&) { showResult(); }));
    always_.push_back(panels.activities.observe([this, &panels] {
        // Progress comes with every step; the clock that refresh() runs by shows it.
        if (panels.activities.current() != shownRun_)
            showRun();
    }));
    showResult();
    refresh();
}

void Band::makeBoard(QHBoxLayout& row) {
    boardCell_ = new Cell(104);
    boardTitle_ = new CutLabel(kSmall);
    boardTitle_->setTone(Tone::Quiet);
    boardLamp_ = new LampWidget;
    boardLamp_->setName("Board");
    boardState_ = named(new CutLabel, "band.link");
    auto* content = tightColumn({stretch, boardTitle_, tightRow({boardLamp_, boardState_}), stretch});
    content->setContentsMargins(kUnit, 0, kUnit, 0);
    boardCell_->setLayout(content);
    row.addWidget(boardCell_);
}

void Band::makePart(QHBoxLayout& row) {
    partCell_ = new Cell(196);
    about_ = named(new CutLabel(kSmall), "band.about");
    part_ = named(new QPushButton, "band.part");
    part_->setAutoDefault(false);
    part_->setFont(textFont(1.0, true));
    part_->setFixedHeight(dp(24));
    part_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    part_->setToolTip("Choose a part; type to filter");
    QObject::connect(part_, &QPushButton::clicked, this, [this] { openParts(); });
    auto* content = tightColumn({stretch, about_, part_, stretch});
    content->setContentsMargins(kUnit, 0, kUnit, 0);
    partCell_->setLayout(content);
    row.addWidget(partCell_);

    addressCell_ = new Cell(76);
    auto* title = quietText("Address");
    title->setFont(textFont(kSmall));
    address_ = named(new ToneLabel, "band.bus");
    address_->setFont(valueFont(kDigits));
    addressUnit_ = quietText("hex");
    auto* line = tightColumn({stretch, title, tightRow({address_, addressUnit_, stretch}), stretch});
    line->setContentsMargins(kUnit, 0, 0, 0);
    addressCell_->setLayout(line);
    row.addWidget(addressCell_);
}

void Band::makeSupply(QHBoxLayout& row) {
    supplyCell_ = new Cell(322);
    vccLamp_ = new LampWidget;
    vccLamp_->setRole(LampWidget::Role::Supply);
    vccLamp_->setSide(28);
    vccLamp_->setName("VCC");
    auto* title = new ToneLabel;
    title->setText("VCC");
    title->setFont(textFont(kSmall));
    vccWord_ = named(new ToneLabel, "band.VCC");
    vccWord_->setFont(textFont(1.1, true));
    volts_ = named(new ValueLabel("00.000", kDigits), "band.volts");
    QFont digits = volts_->font();
    digits.setBold(true);
    volts_->setFont(digits);
    volts_->setTextInteractionFlags(Qt::NoTextInteraction);
    volts_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* unit = new QLabel("V");
    unit->setFont(textFont(1.1, true));
    switch_ = named(new SegmentedSwitch("On", "Off"), "band.switch");
    switch_->setAccessibleName("VCC");
    switch_->picked = [this](int segment) {
        OptionButton* option = segment == 0 ? source_.on : source_.off;
        if (option != nullptr)
            (void)option->userClick();
        showSource();
    };
    level_ = named(new ComboWidget, "band.level");
    level_->setAccessibleName("VCC level");
    level_->setFixedWidth(dp(72));
    QObject::connect(level_, &QComboBox::activated, this, [this](int index) {
        if (source_.level != nullptr)
            (void)source_.level->userSelect(index);
        showSource();
    });
    auto* words = tightColumn(
        {stretch, tightRow({title, vccWord_, stretch}), tightRow({volts_, unit, stretch}), stretch});
    words->setSpacing(0);
    auto* content = qt::row({vccLamp_, words, stretch, switch_, level_});
    content->setContentsMargins(kUnit, 0, kUnit + 4, 0);
    supplyCell_->setLayout(content);
    row.addWidget(supplyCell_);

    minusCell_ = new Cell(76);
    auto* minusTitle = new ToneLabel;
    minusTitle->setText("V−");
    minusTitle->setFont(textFont(kSmall));
    minusWord_ = named(new ToneLabel, "band.V−");
    minusWord_->setFont(textFont(1.0, true));
    minusLamp_ = new LampWidget;
    minusLamp_->setRole(LampWidget::Role::Supply);
    minusLamp_->setName("V−");
    minusText_ = new CutLabel(kSmall);
    auto* minus = tightColumn(
        {stretch, tightRow({minusTitle, minusWord_, stretch}), tightRow({minusLamp_, minusText_}), stretch});
    minus->setContentsMargins(kUnit, 0, 2, 0);
    minusCell_->setLayout(minus);
    row.addWidget(minusCell_);
}

void Band::makeResult(QHBoxLayout& row) {
    resultCell_ = new Cell(0);
    resultCell_->setObjectName("band.resultCell");
    resultCell_->setCursor(Qt::PointingHandCursor);
    resultCell_->installEventFilter(this);
    resultLamp_ = new LampWidget;
    resultLamp_->setSide(22);
    resultLamp_->setName("Last action");
    result_ = named(new CutLabel(1.0, true), "band.result");
    resultDetail_ = named(new CutLabel(kSmall), "band.detail");
    jump_ = named(new QPushButton, "band.jump");
    jump_->setFlat(true);
    jump_->setAutoDefault(false);
    jump_->setFont(textFont(kSmall));
    jump_->setCursor(Qt::PointingHandCursor);
    jump_->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    QObject::connect(jump_, &QPushButton::clicked, this, [this] {
        const auto& kept = context_.bench.context().results.kept();
        if (!kept.empty() && onJump)
            onJump(QString::fromStdString(kept.back().field));
    });
    resultDetail_->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    jump_->setFixedHeight(resultDetail_->sizeHint().height() + 2);
    auto* words = tightColumn({stretch, result_, tightRow({resultDetail_, jump_, stretch}), stretch});
    auto* content = qt::row({resultLamp_, words});
    content->setStretch(1, 1);
    content->setContentsMargins(kUnit + 2, 0, kUnit, 0);
    resultCell_->setLayout(content);
    row.addWidget(resultCell_, 1);
}

void Band::makeRun(QHBoxLayout& row) {
    runCell_ = new Cell(208);
    runName_ = named(new CutLabel(kSmall), "band.run");
    runBar_ = new LevelBar;
    runBar_->setFixedHeight(dp(11));
    runLeft_ = named(new CutLabel(kSmall), "band.left");
    runLeft_->setTone(Tone::Quiet);
    abort_ = named(new QPushButton("Abort"), "band.abort");
    abort_->setAutoDefault(false);
    abort_->setFixedWidth(dp(64));
    abort_->setFixedHeight(dp(24));
    abort_->setToolTip("Stop what runs (Esc)");
    QObject::connect(abort_, &QPushButton::clicked, this,
                     [this] { (void)context_.bench.context().activities.abort(); });
    auto* words = tightColumn({runBar_, runLeft_});
    words->setSpacing(2);
    auto* line = qt::row({words, abort_});
    line->setStretch(0, 1);
    auto* content = tightColumn({stretch, runName_, line, stretch});
    content->setSpacing(2);
    content->setContentsMargins(kUnit, 0, kUnit, 0);
    runCell_->setLayout(content);
    row.addWidget(runCell_);
}

void Band::setRoom(int width) {
    struct Room {
        int from; ///< width of the window from which the cells have these widths; 0 hides one
        int board, part, address, supply, minus, run;
    };
    static constexpr std::array<Room, 5> kRooms = {{
        {1600, 104, 250, 76, 330, 76, 260},
        {1180, 104, 196, 76, 322, 76, 208},
        {960, 104, 140, 76, 322, 76, 84},
        {800, 40, 140, 0, 322, 76, 84},
        {0, 40, 120, 0, 210, 0, 84},
    }};
    const auto& room = *std::find_if(kRooms.begin(), kRooms.end(),
                                     [width](const Room& one) { return width >= dp(one.from); });
    for (const auto& [cell, wanted] :
         {std::pair{boardCell_, room.board}, std::pair{partCell_, room.part},
          std::pair{addressCell_, room.address}, std::pair{supplyCell_, room.supply},
          std::pair{minusCell_, room.minus}, std::pair{runCell_, room.run}}) {
        cell->setVisible(wanted > 0);
        cell->setWidth(wanted);
    }
    constexpr int kLampAlone = 40;
    boardTitle_->setVisible(room.board > kLampAlone);
    boardState_->setVisible(room.board > kLampAlone);
    const bool level = room.minus > 0;
    vccLamp_->setVisible(level);
    level_->setVisible(level);
    constexpr int kAbortAlone = 84;
    runBar_->setVisible(room.run > kAbortAlone);
    runLeft_->setVisible(room.run > kAbortAlone);
    showSource();
}

void Band::setPage(PageUi* page) {
    page_ = page;
    watches_.clear();
    source_ = page != nullptr && page->band() != nullptr ? *page->band() : BandSource{};
    watchSource();
    showSource();
}

void Band::watchSource() {
    const auto watch = [this](Control* control) {
        if (control != nullptr)
            watches_.push_back(control->observe([this](Aspect) { showSource(); }));
    };
    if (page_ == nullptr) {
        // The board's supplies may be on all the same, switched by the console.
        if (auto* console = context_.bench.frmMotherboardDAQ2.loadedPanel()) {
            source_.vcc = &console->ShpVCCon;
            source_.minus = &console->ShpVCCMinusOn;
            source_.volts = &console->lblVCCVoltsRDBK;
        }
    } else {
        watches_.push_back(page_->panel().observeEnabled([this] { showSource(); }));
    }
    watch(source_.on);
    watch(source_.off);
    watch(source_.level);
    watch(source_.volts);
    watch(source_.vcc);
    watch(source_.minus);
    watch(source_.track);
    for (Control* control : source_.watched)
        watch(control);
}

void Band::showSource() {
    const bool any = page_ != nullptr;
    QString about = source_.about ? source_.about() : QString();
    const QString part = source_.part ? source_.part().trimmed() : QString();
    Tone tone = Tone::Quiet;
    if (!any)
        about = "No panel open";
    else if (about.isEmpty())
        about = page_->name();
    if (any && context_.socket != nullptr) {
        if (!part.startsWith(socketPart_) || socketPart_.isEmpty()) {
            about =
                socketPart_.isEmpty() ? QString("the socket is empty") : "the socket holds " + socketPart_;
            tone = Tone::Differs;
        }
    }
    about_->setText(about);
    about_->setTone(tone);
    const QString name = any ? (part.isEmpty() ? QString("No part") : part) : QString("Choose a part");
    part_->setText(part_->fontMetrics().elidedText(name, Qt::ElideRight, partCell_->minimumWidth() - dp(36)) +
                   "  ▾");
    part_->setToolTip(name);
    part_->setEnabled(any ? page_->panel().enabled() && !source_.parts.empty() : true);
    const QString address = source_.address ? source_.address() : QString();
    address_->setText(address.isEmpty() ? (any ? "no bus" : kNeverRead) : address);
    address_->setFont(address.isEmpty() ? textFont(1.0) : valueFont(kDigits));
    addressUnit_->setVisible(!address.isEmpty());
    showSupply(source_);
    QPalette link;
    link.setColor(QPalette::ButtonText, link.color(QPalette::Link));
    if (jump_->palette().color(QPalette::ButtonText) != link.color(QPalette::ButtonText))
        jump_->setPalette(link);
}

void Band::showSupply(const BandSource& source) {
    const bool on = source.vcc != nullptr && source.vcc->colour() != Colour::Black;
    const bool minus = source.minus != nullptr && source.minus->colour() != Colour::Black;
    vccLamp_->setColour(on ? Colour::LightRed : Colour::Black);
    vccWord_->setText(on ? "ON" : "OFF");
    minusLamp_->setColour(minus ? Colour::LightRed : Colour::Black);
    minusWord_->setText(minus ? "ON" : "OFF");
    minusText_->setText(source.track != nullptr && source.track->checked() && minus ? "tracks" : "");
    const auto tint = [](Cell& cell, bool lit) {
        cell.setGround(lit ? Cell::Ground::Supply : Cell::Ground::Plain);
        QPalette colours = QPalette();
        if (lit)
            for (const auto role : {QPalette::WindowText, QPalette::PlaceholderText})
                colours.setColor(role, qt::colours().supplyText);
        cell.setPalette(colours);
    };
    tint(*supplyCell_, on);
    tint(*minusCell_, minus);
    QString volts = source.volts == nullptr ? QString() : bandText(source.volts->caption());
    Tone tone = Tone::Plain;
    if (source.volts != nullptr && source.volts->freshness()) {
        if (source.volts->freshness()->state == Freshness::State::Never)
            volts.clear();
        else if (source.volts->freshness()->state == Freshness::State::Stale)
            tone = Tone::Stale;
    }
    volts_->setText(volts.isEmpty() ? kNeverRead : volts);
    volts_->setTone(tone);
    const bool usable = source.on != nullptr && source.off != nullptr && source.on->responsive();
    setEnabledWithKeyboard(*switch_, usable);
    switch_->setToolTip(page_ == nullptr       ? "No device panel is open"
                        : usable               ? "Switch VCC"
                        : source.on == nullptr ? "This page has no switch of its own"
                                               : "Not now: " + refusalOf(*source.on));
    switch_->setChosen(on ? 0 : 1);
    setEnabledWithKeyboard(*level_, source.level != nullptr && source.level->responsive());
    showLevels(source.level);
}

void Band::showLevels(const ComboBox* level) {
    const int rows = level == nullptr ? 0 : level->rowCount();
    const auto words = [level](int row) {
        const QString name = bandText(level->row(row).text);
        return name.isEmpty() || !name[0].isDigit() ? name : name + " V";
    };
    bool same = rows == level_->count();
    for (int row = 0; same && row < rows; ++row)
        same = level_->itemText(row) == words(row);
    if (!same) {
        level_->clear();
        for (int row = 0; row < rows; ++row)
            level_->addItem(words(row));
    }
    level_->setCurrentIndex(level == nullptr ? -1 : level->listIndex());
}

void Band::showLink(const LinkWords& words) {
    boardTitle_->setText(QString("Board %1").arg(context_.bench.link().instance()));
    boardLamp_->setColour(words.colour);
    QString state = words.state;
    if (!state.isEmpty())
        state[0] = state[0].toUpper();
    boardState_->setText(state);
    boardState_->setToolTip(words.board);
    boardCell_->setToolTip(words.board);
}

void Band::showResult() {
    const auto& kept = context_.bench.context().results.kept();
    if (kept.empty()) {
        resultLamp_->setColour(Colour::Black);
        result_->setText("Ready");
        resultDetail_->setText("Nothing has been done yet");
        jump_->hide();
        return;
    }
    const Result& last = kept.back();
    resultCell_->setGround(last.good ? Cell::Ground::Plain : Cell::Ground::Failure);
    resultLamp_->setColour(last.good ? Colour::LightGreen : Colour::LightRed);
    result_->setText(bandText(last.text));
    const QString detail = bandText(last.detail);
    resultDetail_->setText(detail.isEmpty() ? clockText(last.time) : detail + "  ·  " + clockText(last.time));
    jump_->setVisible(!last.field.empty());
    jump_->setText("Show field");
    jump_->setToolTip("Goes to " + QString::fromStdString(last.field));
}

void Band::showRun() {
    const Activity* run = context_.bench.context().activities.current();
    shownRun_ = run;
    runName_->setText(
        run == nullptr ? QString("Nothing runs")
        : run->total() > 0
            ? QString("%1 %2 of %3").arg(bandText(run->name())).arg(run->done()).arg(run->total())
            : bandText(run->name()));
    runName_->setTone(run == nullptr ? Tone::Quiet : Tone::Plain);
    runBar_->setRange(run == nullptr || run->total() <= 0 ? 1 : run->total());
    runBar_->setValue(run == nullptr || run->total() <= 0 ? 0 : run->done());
    QString left;
    if (run != nullptr && run->left().count() > 0) {
        const auto seconds = run->left().count() / 1000;
        left = seconds >= 3600 ? QString("%1 h %2 min left").arg(seconds / 3600).arg(seconds / 60 % 60)
               : seconds >= 60 ? QString("%1 min %2 s left").arg(seconds / 60).arg(seconds % 60)
                               : QString("%1 s left").arg(seconds);
    }
    if (run != nullptr && run->aborting())
        left = "stopping";
    runLeft_->setText(left);
    const auto& all = context_.bench.context().activities.running();
    const bool can =
        std::any_of(all.begin(), all.end(), [](const Activity* one) { return one->abortable(); });
    abort_->setEnabled(can);
    QFont font = textFont(1.0, can);
    abort_->setFont(font);
}

void Band::refresh() {
    showRun();
    if (context_.socket != nullptr)
        socketPart_ = context_.socket->state().part;
    if (context_.socket != nullptr || page_ == nullptr)
        showSource();
}

bool Band::eventFilter(QObject* watched, QEvent* event) {
    if (watched == resultCell_ && event->type() == QEvent::MouseButtonRelease)
        openHistory();
    return QWidget::eventFilter(watched, event);
}

void Band::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::AlternateBase));
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace vrk
