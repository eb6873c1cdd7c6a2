#include "views/blocks/ChannelStrip.h"

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "views/blocks/Readout.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

constexpr int kInset = 12;
constexpr int kLeastRows = 3; ///< of the list, in sight

/// Positions under a bar, at its quarters.
class BarScale final : public QWidget {
  public:
    BarScale() {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        setFont(valueFont(kSmall));
    }
    void setMaximum(int maximum) {
        maximum_ = maximum;
        update();
    }
    QSize sizeHint() const override { return {dp(120), fontMetrics().height()}; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::PlaceholderText));
        for (int quarter = 0; quarter <= 4; ++quarter) {
            const QString text = QString::number(maximum_ * quarter / 4);
            const int wide = fontMetrics().horizontalAdvance(text);
            const int at = width() * quarter / 4 - (quarter == 0 ? 0 : quarter == 4 ? wide : wide / 2);
            painter.drawText(at, fontMetrics().ascent(), text);
        }
    }

  private:
    int maximum_ = 128;
};

/// Numbers stand under one another by their last digit.
class RightAligned final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
    }
};

void setSide(QWidget& button, int width, int height) {
    button.setFixedSize(dp(width), dp(height));
}

/// Removes the layouts of before; their widgets stay.
void layOut(QWidget& body, QLayout* content) {
    delete body.layout();
    body.setLayout(content);
}

template <class Widget>
Widget* withoutMnemonic(Widget* widget) {
    keepWithoutMnemonic(*widget); // every strip has one like it
    return widget;
}

QLabel* wordsLabel(const QString& text, QWidget* parent, double scale = 1.0) {
    QLabel* label = quietText(text);
    label->setFont(textFont(scale));
    label->setParent(parent);
    return label;
}

} // namespace

ChannelStrip::ChannelStrip(PageUi& page, WiperPanel& panel, int channel)
    : channel_(channel), readBody_(new QWidget), writeBody_(new QWidget) {
    ChannelBlock& block = panel;
    PanelUi& ui = page.ui();
    setObjectName("strip(" + QString::number(channel) + ")");
    setAccessibleName("Channel " + QString::number(channel));
    readHalf_ = ui.frame(block.SSFrame4[channel], {}, column({readBody_}));
    writeHalf_ = ui.frame(block.SSFrame3[channel], {}, column({writeBody_}));
    makeRead(page, block);
    makeWrite(page, block);
    makeStores(page, panel);
    divider_ = separator(Qt::Vertical);
    setLayout(new QGridLayout);
    watchOutcome(page, block);
    ui.watch(block.lblPotRead[channel], [this, &block] { showReading(block); });
    ui.watch(block.Slider1[channel], [this, &slider = block.Slider1[channel]] {
        readout_->setHighest(slider.maximum());
        static_cast<BarScale*>(scale_)->setMaximum(slider.maximum());
    });
    for (Label* label : {&block.lblChanSend[channel], &block.lblChanRcvr[channel]})
        ui.watch(*label, [this] { setWide(wide_); });
}

void ChannelStrip::makeRead(PageUi& page, ChannelBlock& block) {
    PanelUi& ui = page.ui();
    const QString number = QString::number(channel_);
    name_ = heading("Channel " + number, kStripScale);
    name_->setParent(readBody_);
    sourceWord_ = wordsLabel("reads register", readBody_);
    source_ = ui(block.lblChanRcvr[channel_]);
    makeQuiet(*source_);
    for (QLabel* part : {name_, sourceWord_, source_})
        part->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    readout_ = new Readout(page, block, channel_);
    bar_ = ui(block.ProgressBar1[channel_]);
    bar_->setAccessibleName("Position read as a bar, channel " + number);
    scale_ = new BarScale;
    age_ = ui.age(block.lblPotRead[channel_]);
    // However long the words, the strips stay equal.
    age_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    age_->words = [age = age_, whole = age_->words] {
        auto [said, tone] = whole();
        age->setToolTip(said);
        if (age->isVisible())
            said = age->fontMetrics().elidedText(said, Qt::ElideRight, age->width());
        return std::pair(said, tone);
    };
    age_->setObjectName("age(" + number + ")");
    read_ = withoutMnemonic(ui(block.cmdI2Read[channel_]));
    read_->setAccessibleName("Read channel " + number);
    readLamp_ = new LampWidget;
    readLamp_->setObjectName("read(" + number + ")");
    readLamp_->setName("Last read of channel " + number);
    headLamp_ = new LampWidget;
    headLamp_->setName(readLamp_->accessibleName());
    autoRead_ = withoutMnemonic(ui(block.ChkAutoRead[channel_]));
    autoRead_->setAccessibleName("Auto Read, channel " + number);
    readVolts_ = withoutMnemonic(ui(block.cmdSampleWiper[channel_]));
    readVolts_->setAccessibleName("Read volts of channel " + number);
    factor_ = ui(block.txtFactor[channel_], 3);
    factorWord_ = withoutMnemonic(smallCaption("AD factor", factor_));
    factor_->setAccessibleName("AD factor, channel " + number);
    factor_->setAlignment(Qt::AlignRight);
    for (QWidget* part :
         std::initializer_list<QWidget*>{source_, readout_, bar_, scale_, age_, read_, readLamp_, headLamp_,
                                         autoRead_, readVolts_, factorWord_, factor_})
        part->setParent(readBody_);
}

QPushButton* ChannelStrip::stepButton(const QString& sign, int by, ChannelBlock& block) {
    auto* button = withoutMnemonic(new QPushButton(sign));
    const QString number = QString::number(channel_);
    button->setObjectName((by < 0 ? "stepDown(" : "stepUp(") + number + ")");
    button->setAccessibleName(by < 0 ? "One position down, channel " + number
                                     : "One position up, channel " + number);
    button->setToolTip(by < 0 ? "One position down: it is written" : "One position up: it is written");
    button->setAutoDefault(false);
    setSide(*button, 26, 24);
    // As the slider's own keys: a press, a move and a release.
    connect(button, &QPushButton::clicked, this, [&slider = block.Slider1[channel_], by] {
        const int to = std::clamp(slider.value() + by, slider.minimum(), slider.maximum());
        if (to != slider.value())
            (void)slider.userDrag(to);
    });
    followEnabled(*button, *slider_);
    return button;
}

void ChannelStrip::makeWrite(PageUi& page, ChannelBlock& block) {
    PanelUi& ui = page.ui();
    const QString number = QString::number(channel_);
    writeWord_ = heading("Write", kStripScale);
    targetWord_ = quietText("to register");
    target_ = ui(block.lblChanSend[channel_]);
    makeQuiet(*target_);
    slider_ = ui(block.Slider1[channel_]);
    slider_->setAccessibleName("Position, channel " + number);
    down_ = stepButton("−", -1, block);
    up_ = stepButton("+", 1, block);
    decimal_ = ui(block.txtDECDataWrt[channel_], 5);
    hex_ = ui(block.txtHexDataWrt[channel_], 5);
    decimalWord_ = withoutMnemonic(caption("Dec", decimal_));
    hexWord_ = withoutMnemonic(caption("Hex", hex_));
    decimal_->setAccessibleName("Position to write, decimal, channel " + number);
    hex_->setAccessibleName("Position to write, hexadecimal, channel " + number);
    for (KeyLineEdit* field : {decimal_, hex_})
        field->setAlignment(Qt::AlignRight);
    write_ = withoutMnemonic(ui(block.CMDxMIT[channel_]));
    write_->setAccessibleName("Write channel " + number);
    if (channel_ == 0)
        makeAccent(*write_);
    writeLamp_ = new LampWidget;
    writeLamp_->setObjectName("written(" + number + ")");
    writeLamp_->setName("Last write of channel " + number);
    auto* differs = new ToneLabel;
    differs->setText("differs from read");
    differs->setFont(textFont(kSmall, true));
    differs->setTone(Tone::Differs);
    differs->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    differs->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    differs->setObjectName("differs(" + number + ")");
    differs_ = keepsPlace(differs);
    Reading& position = block.lblPotRead[channel_];
    Reading& hexRead = block.lblPotReadhex[channel_];
    tintHexDifference(
        page, block.txtHexDataWrt[channel_], *hex_, hexRead, [&hexRead] { return hexRead.caption(); },
        differs_);
    tintDifference(page, block.txtDECDataWrt[channel_], *decimal_, position,
                   {[&written = block.txtDECDataWrt[channel_]] { return decimalInt(written.text()); },
                    [&position] { return decimalInt(position.caption()); }});
    list_ = ui(block.List1[channel_], kLeastRows, 4);
    list_->setItemDelegate(new RightAligned(list_));
    const int least = list_->height();
    list_->setMaximumHeight(QWIDGETSIZE_MAX);
    list_->setMinimumHeight(least);
    list_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    list_->setToolTip("Scroll to a position, then click it to write it");
    list_->setAccessibleName("Positions, channel " + number);
    hint_ = quietText("Scroll the list, then choose a\nrow: it is written.");
    for (QWidget* part : std::initializer_list<QWidget*>{writeWord_, targetWord_, target_, down_, slider_,
                                                         up_, decimalWord_, decimal_, hexWord_, hex_, write_,
                                                         writeLamp_, differs_, list_, hint_})
        part->setParent(writeBody_);
}

void ChannelStrip::makeStores(PageUi& page, StoreBlock& block) {
    storesWord_ = quietText("Non-volatile writes");
    stores_ = new ValueLabel("00000", 1.0);
    stores_->setObjectName("stores(" + QString::number(channel_) + ")");
    stores_->setAccessibleName("Non-volatile writes of wiper " + QString::number(channel_));
    for (QLabel* part : {storesWord_, stores_})
        part->setParent(writeBody_);
    page.ui().watch(block.lblNvWrites, [this, &block] {
        stores_->setText(QString::number(block.nonvolatileWrites().ofWiper(channel_)));
    });
}

void ChannelStrip::watchOutcome(PageUi& page, ChannelBlock& block) {
    using Transfer = ChannelBlock::Transfer;
    const auto show = [](LampWidget& lamp, bool good) {
        const bool again = lamp.colour() == Colour::LightGreen;
        lamp.setColour(!good ? Colour::LightRed : again ? Colour::Green : Colour::LightGreen);
        lamp.blink();
    };
    page.ui().keep(block.observeTransfers([this, show](const ChannelBlock::Transferred& done) {
        if (done.channel != channel_)
            return;
        if (done.kind == Transfer::Write)
            return show(*writeLamp_, done.good);
        show(*readLamp_, done.good);
        show(*headLamp_, done.good);
    }));
}

void ChannelStrip::showReading(const ChannelBlock& block) {
    const Freshness& worth = block.lblPotRead[channel_].freshness().value();
    bar_->setState(worth.state);
    failed_ = worth.failed;
    // What was read for another part, address or supply says nothing about a read of this one.
    if (worth.state != Freshness::State::Fresh && !worth.failed)
        for (LampWidget* lamp : {readLamp_, headLamp_})
            lamp->setColour(Colour::Black);
    update();
}

void ChannelStrip::setWide(bool wide) {
    wide_ = wide;
    readout_->setWide(wide);
    for (QWidget* onlyWide :
         std::initializer_list<QWidget*>{scale_, headLamp_, writeWord_, hint_, storesWord_, stores_})
        setShown(*onlyWide, wide);
    setShown(*writeLamp_, true);
    layOutRead();
    layOutWrite();
    auto* halves = static_cast<QGridLayout*>(layout());
    // One less than the rhythm: four upright strips and a scroll bar then fit a window 1280 wide.
    const int side = dp(wide ? kInset : kUnit - 1);
    halves->setContentsMargins(side, dp(kInset) - 2, side, dp(kInset));
    halves->setHorizontalSpacing(wide ? dp(16) : 0);
    halves->setVerticalSpacing(kUnit);
    setShown(*divider_, true);
    auto* line = static_cast<QFrame*>(divider_);
    line->setFrameShape(wide ? QFrame::VLine : QFrame::HLine);
    halves->addWidget(readHalf_, 0, 0);
    halves->addWidget(divider_, wide ? 0 : 1, wide ? 1 : 0);
    halves->addWidget(writeHalf_, wide ? 0 : 2, wide ? 2 : 0);
    halves->setColumnStretch(0, wide ? 7 : 1);
    halves->setColumnStretch(2, wide ? 4 : 0);
    halves->setRowStretch(0, wide ? 1 : 0);
    halves->setRowStretch(2, wide ? 0 : 1);
    qt::setTabOrder(tabOrder());
}

void ChannelStrip::layOutRead() {
    if (wide_) {
        age_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        sourceWord_->setText("reads register");
        setSide(*read_, 120, 56);
        read_->setFont(textFont(1.38, true));
        setSide(*readVolts_, 88, 24);
        factor_->setFixedWidth(dp(44));
        layOut(*readBody_, tightColumn({row({name_, tightRow({sourceWord_, source_}), age_, headLamp_}),
                                        readout_, bar_, scale_, gap,
                                        row({read_, readLamp_, gap, autoRead_, stretch, factorWord_, factor_,
                                             readVolts_})}));
        return;
    }
    // Where both registers are one it is named once.
    const bool same = source_->text() == target_->text();
    age_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    sourceWord_->setText(same ? "register" : "reads");
    targetWord_->setText(same ? "" : "writes");
    target_->setMaximumWidth(same ? 0 : QWIDGETSIZE_MAX);
    for (QPushButton* button : {read_, readVolts_}) {
        button->setMinimumSize(dp(56), dp(24));
        button->setMaximumSize(dp(120), dp(24));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    read_->setFont(textFont(1.0));
    factor_->setFixedWidth(dp(38));
    layOut(*readBody_,
           tightColumn({row({name_, stretch, tightRow({sourceWord_, source_, targetWord_, target_})}),
                        readout_, gap, bar_, age_, tightRow({read_, readLamp_, stretch, autoRead_}),
                        tightRow({readVolts_, stretch, factorWord_, factor_})}));
}

void ChannelStrip::layOutWrite() {
    const double entryScale = wide_ ? 1.25 : 1.0;
    for (KeyLineEdit* field : {decimal_, hex_}) {
        field->setFont(valueFont(entryScale));
        setSide(*field, wide_ ? 78 : 56, wide_ ? 32 : 24);
    }
    if (wide_) {
        write_->setMinimumSize(dp(80), dp(72));
        write_->setMaximumSize(QWIDGETSIZE_MAX, dp(72));
        write_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        write_->setFont(textFont(1.7, true));
        list_->setFixedWidth(dp(84));
        list_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
        targetWord_->setText("to register");
        target_->setMaximumWidth(QWIDGETSIZE_MAX);
        layOut(
            *writeBody_,
            tightColumn(
                {row({writeWord_, tightRow({targetWord_, target_}), stretch, writeLamp_}),
                 row({down_, slider_, up_}), gap, row({decimalWord_, decimal_, stretch, hexWord_, hex_}), gap,
                 row({column({write_, differs_, stretch, hint_, tightRow({storesWord_, stores_, stretch})}),
                      list_})}));
        return;
    }
    write_->setMinimumSize(dp(52), dp(24));
    write_->setMaximumSize(dp(100), dp(24));
    write_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    write_->setFont(textFont(1.0, channel_ == 0));
    list_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    list_->setMinimumWidth(0);
    list_->setMaximumWidth(QWIDGETSIZE_MAX);
    layOut(*writeBody_, tightColumn({row({down_, slider_, up_}),
                                     tightRow({decimalWord_, decimal_, stretch, hexWord_, hex_}),
                                     tightRow({write_, writeLamp_, differs_}), list_}));
}

bool ChannelStrip::hasKeyboard() const {
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && isAncestorOf(focus);
}

void ChannelStrip::focusEntry() {
    hex_->setFocus(Qt::ShortcutFocusReason);
}

QWidget* ChannelStrip::entry() const {
    return hex_;
}

std::vector<QWidget*> ChannelStrip::tabOrder() const {
    if (wide_)
        return {read_, autoRead_, factor_, readVolts_, down_, slider_, up_, decimal_, hex_, write_, list_};
    return {read_, autoRead_, readVolts_, factor_, down_, slider_, up_, decimal_, hex_, write_, list_};
}

void ChannelStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(failed_ ? colours().failure : palette().color(QPalette::Mid), failed_ ? 1.5 : 1.0));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 3, 3);
}

} // namespace vrk
