#include "panels/spi/frmVRK_SPI1.h"
#include "platform/qt/theme.h"
#include "views/blocks/ChannelStrips.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/blocks/wiperPage.h"
#include "views/pages/pageMakers.h"
#include "views/plot/ChannelPlot.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

#include <array>

namespace vrk {

using namespace qt;

namespace {

constexpr int kCount = 28;
constexpr int kClock = 72;

/// "Wiper 0 [C0] write [80] read": commands and counts stand under one another.
QBoxLayout* pair(PageUi& page, const QString& name, TextBox& write, TextBox& read, bool counts) {
    std::array<QWidget*, 2> fields{};
    for (const auto& [at, box, words] : {std::tuple{0U, &write, "write"}, {1U, &read, "read"}}) {
        fields.at(at) = counts ? page.ui()(*box, 1) : byteField(page, *box);
        fields.at(at)->setFixedWidth(dp(counts ? kCount : 36));
        fields.at(at)->setAccessibleName(name + (counts ? " of a %1 frame" : ", command to %1"));
        fields.at(at)->setAccessibleName(fields.at(at)->accessibleName().arg(words));
    }
    return row({columnLabel(name, fields[0]), fields[0], quietText("write"), fields[1],
                quietText(counts ? "read, decimal" : "read, hex"), stretch});
}

void addSetUpSection(PageUi& page, frmVRK_SPI1& p) {
    PanelUi& ui = page.ui();
    auto* clock = ui(p.cboSPIClock, 8);
    clock->setFixedWidth(dp(kClock));
    Section& section = page.addSection(
        "Set-up", qt::block(rows({
                      channelChoice(page, p),
                      pair(page, "Wiper 0", p.txtBaseVRKWriteAddress, p.txtBaseVRKReadAddress, false),
                      pair(page, "Bytes", p.txtSPIWrCount, p.txtSPIRDQuantity, true),
                      row({columnLabel("Frame"), ui(p.chkSendID), stretch}),
                      addressRows(page, p, "ID"),
                      sizeRow(page, p),
                      row({smallCaption("SPI clock frequency (MHz)", clock), stretch}),
                      // In a line of their own: with the caption they would be wider than the inspector.
                      row({stretch, clock, wideButton(ui(p.cmdSetSPICLock), kClock)}),
                  })));
    showPart(page, section, p);
}

/// "Write 0   50 ID · C0 command · 3F data"
QLayout* frameLine(PageUi& page, const QString& button, Label& frame) {
    QLabel* bytes = page.ui()(frame);
    bytes->setFont(valueFont(kSmall));
    keepWhole(page, frame, *bytes);
    bytes->setAccessibleName("Frame of " + button);
    auto* line = row({columnLabel(button), bytes});
    line->setStretch(1, 1);
    return line;
}

/// The frame that each button is about to send, for the channel in hand.
void addFrameSection(PageUi& page, frmVRK_SPI1& p, ChannelStrips& strips) {
    auto* wipers = new QStackedWidget;
    wipers->setObjectName("framesOfChannel");
    for (int channel = 0; channel < WiperPanel::kChannels; ++channel) {
        const QString number = QString::number(channel);
        wipers->addWidget(qt::block(rows({frameLine(page, "Write " + number, p.lblWriteFrame[channel]),
                                          frameLine(page, "Read " + number, p.lblReadFrame[channel])})));
    }
    std::vector<Item> lines{wipers};
    static constexpr std::array<const char*, 4> kNames = {"ACR write", "ACR read", "Reg. write", "Reg. read"};
    for (auto& frame : p.lblRegisterFrame)
        lines.emplace_back(frameLine(page, kNames.at(static_cast<std::size_t>(frame->index())), *frame));
    Section& section = page.addSection("Frames", qt::block(rows(lines)));
    const auto summary = [&p, &strips] {
        return QString::fromStdString(p.lblWriteFrame[strips.inHand()].caption());
    };
    std::vector<Control*> watched;
    for (auto& frame : p.lblWriteFrame)
        watched.push_back(frame.get());
    summarise(
        page, section, summary, [] { return QString(); }, watched);
    strips.onInHand = [wipers, &section](int channel) {
        wipers->setCurrentIndex(channel);
        section.refresh();
    };
}

} // namespace

void makeSpiPanelView(PageUi& page, frmVRK_SPI1& p) {
    page.setHelpPage("SPI panel");
    addPartMenu(page, p);
    auto* strips = new ChannelStrips(page, p);
    addWiperHead(page, p, new ChannelPlot(page, p, [strips] { return strips->inHand(); }));
    addSupplySection(page, p);
    addSetUpSection(page, p);
    addFrameSection(page, p, *strips);
    addControlRegisterSection(page, p, {nullptr, &p.txtACRAddress[0], &p.lblProduct, &p.txtACRAddress[1]});
    addShutdownPinSection(page, p);
    addGeneralRegisterSection(page, p, {nullptr, &p.txtGPAddress[0], &p.lblProduct, &p.txtGPAddress[1]});
    addQuadSection(page, p, "Q4420/1");
    addStoreSection(page, p);
    addStatusSection(page, p);
    setWiperBand(page, p, {&p.chkSendID});
    page.setFirstFocus(strips->entry());
    page.setContent(qt::block(column({strips})));
}

} // namespace vrk
