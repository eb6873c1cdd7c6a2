#include "link/frmMainF340.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/controllerTabs.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QFontMetrics>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyledItemDelegate>

#include <array>

namespace vrk {

using namespace qt;

namespace {

/// Tabs, in the order of the panel's page list.
enum Page : int { kBoard, kI2c, kSpi, kGpio, kSfr, kAdc, kPages };

/// Draws the rows of a list as tabs: the one in front underlined.
class TabDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QFontMetrics metrics(textFont(1.0, true));
        return {metrics.horizontalAdvance(index.data().toString()) + 4 * kUnit,
                option.fontMetrics.height() + 2 * kUnit};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const bool front = (option.state & QStyle::State_Selected) != 0;
        const bool hovered = (option.state & QStyle::State_MouseOver) != 0;
        painter->save();
        painter->setFont(textFont(1.0, front));
        painter->setPen(
            option.palette.color(front || hovered ? QPalette::WindowText : QPalette::PlaceholderText));
        painter->drawText(option.rect, Qt::AlignCenter, index.data().toString());
        constexpr int kThick = 3;
        const QRect line(option.rect.left(), option.rect.bottom() - kThick + 1, option.rect.width(), kThick);
        if (front)
            painter->fillRect(line, option.palette.color(QPalette::Active, QPalette::Highlight));
        if (front && (option.state & QStyle::State_HasFocus) != 0) {
            painter->setPen(option.palette.color(QPalette::Active, QPalette::Highlight));
            painter->drawRect(option.rect.adjusted(0, 0, -1, -kThick));
        }
        painter->restore();
    }
};

/// The page list as tabs. Its arrow keys change the page at once.
QListView* tabStrip(PanelUi& ui, ComboBox& pages) {
    QListView* strip = ui.openList(pages);
    strip->setItemDelegate(new TabDelegate(strip));
    strip->setFlow(QListView::LeftToRight);
    strip->setFrameShape(QFrame::NoFrame);
    strip->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    strip->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    strip->setUniformItemSizes(false);
    strip->setMouseTracking(true);
    strip->viewport()->setAutoFillBackground(false);
    strip->setFixedHeight(strip->fontMetrics().height() + 2 * kUnit);
    int width = 0;
    for (int at = 0; at < strip->model()->rowCount(); ++at)
        width += strip->sizeHintForIndex(strip->model()->index(at, 0)).width();
    strip->setFixedWidth(width);
    QObject::connect(strip->selectionModel(), &QItemSelectionModel::currentChanged, strip,
                     [strip, tied = ui.find(pages)](const QModelIndex& index) {
                         auto* list = static_cast<ComboBox*>(tied->control());
                         if (list == nullptr || !index.isValid() || index.row() == list->listIndex())
                             return;
                         (void)list->userSelect(index.row());
                         if (tied->control() != nullptr && index.row() != list->listIndex())
                             strip->setCurrentIndex(strip->model()->index(list->listIndex(), 0));
                     });
    return strip;
}

/// The byte table belongs to two pages: it stands still under both of them.
QWidget* busPages(PageUi& page, frmMainF340& p) {
    auto* upper = new FrontStack;
    upper->addWidget(makeI2cPage(page, p));
    upper->addWidget(makeSpiPage(page, p));
    for (const int at : {0, 1})
        upper->widget(at)->raise(); // the stack has turned their order round
    upper->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    page.ui().watch(p.SSTab1, [upper, &p] { upper->setCurrentIndex(p.SSTab1.listIndex() == kSpi ? 1 : 0); });
    return block(column({upper, makeByteTable(page, p), stretch}));
}

void addKeys(PageUi& page, frmMainF340& p, QWidget& strip) {
    PanelUi& ui = page.ui();
    page.onRead("Read: the page in front decides what", [&ui, &p] {
        switch (p.SSTab1.listIndex()) {
        case kBoard:
            return press(ui, p.cmdFirmwareVersion);
        case kI2c:
            return press(ui, p.cmdRead);
        case kGpio:
            return press(ui, p.cmdSampleGP);
        case kSfr:
            return press(ui, p.cmdReadSKF);
        case kAdc:
            return press(ui, p.cmdADCRDData);
        default:
            break;
        }
    });
    page.onWrite("Write: the page in front decides what", [&ui, &p] {
        switch (p.SSTab1.listIndex()) {
        case kI2c:
            return press(ui, p.cmdWrite);
        case kSpi:
            return press(ui, p.cmdSPIWrite);
        case kGpio:
            return press(ui, p.cmdWriteReadAll);
        case kSfr:
            return press(ui, p.cmdSetSFR);
        case kAdc:
            return press(ui, p.cmdMuxWrite);
        default:
            break;
        }
    });
    page.onAbort("Stop the address scan", [&ui, &p] { press(ui, p.cmdStopScan); });
    for (int tab = 0; tab < kPages; ++tab)
        page.addKey(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + tab)),
                    "Page " + QString::fromStdString(p.SSTab1.row(tab).text), [&p, &strip, tab] {
                        (void)p.SSTab1.userSelect(tab);
                        strip.setFocus(Qt::ShortcutFocusReason); // else it stays with a page out of sight
                    });
}

} // namespace

QWidget* makeBoardPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* lamp = new LampWidget;
    lamp->setSide(20);
    auto* words = heading({}, kNameScale);
    words->setObjectName("board.link");
    auto* last = quietText({});
    last->setObjectName("board.last");
    const ViewContext context = page.context();
    const auto showLink = [lamp, words, last, context] {
        const LinkWords link = linkWords(context);
        lamp->setColour(link.colour);
        words->setText(link.board);
        last->setText(link.last);
    };
    showLink();
    page.onLinkShown([showLink](const LinkWords&) { showLink(); });
    ui.keep(p.link().observe(showLink));
    ui.watch(p.cboEVBinstance, showLink);

    auto* firmware = readBack(ui, p.txtFirmwareVersion, 42, "Firmware version");
    auto* firmwareWords = ui(p.lblFirmwareVersion);
    makeQuiet(*firmwareWords);
    auto* connection = box("Connection", column({row({lamp, words, stretch}), last, stretch}));
    auto* version = box("Firmware", column({row({firmware, stretch}), firmwareWords, stretch}));
    return block(column({
        new BoxFlow({connection, version}, dp(420)),
        quietText("The board's instance, its LEDs and Firmware stand above. Reconnect looks for the boards "
                  "again; Quit "
                  "ends the program."),
        stretch,
    }));
}

namespace {

/// Instance, LEDs, firmware and the ways out: the same on every tab.
void addHead(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* instance = ui(p.cboEVBinstance, 3);
    auto* label = caption("Board", instance);
    instance->setAccessibleName("Board instance");
    auto* version = new ValueLabel("1.2 - 2008/June/12", 1.0);
    version->setObjectName("head.firmware");
    ui.watch(p.txtFirmwareVersion, [version, &p] {
        QString text = QString::fromStdString(p.txtFirmwareVersion.text());
        text.remove("Firmware Version ");
        const auto& worth = p.txtFirmwareVersion.freshness();
        const bool read = worth && worth->state != Freshness::State::Never;
        version->setText(read ? text : kNeverRead);
        version->setTone(worth && worth->state == Freshness::State::Stale ? Tone::Stale : Tone::Plain);
        version->setToolTip(read ? text : QString());
    });
    for (QWidget* item :
         std::initializer_list<QWidget*>{block(row({label, instance})), ui(p.chkLED[0]), ui(p.chkLED[1]),
                                         block(row({ui(p.cmdFirmwareVersion), version})), ui(p.cmdHoswMother),
                                         ui(p.cmdReconnect), ui(p.cmdQuit)})
        page.addHeadItem(item);
}

} // namespace

void makeControllerPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Controller");
    page.startsWithInspectorFolded();
    QMenu* menu = page.menu("&File");
    QAction* leave = ui(p.mnuExit);
    leave->setParent(menu);
    menu->addAction(leave);
    addHead(page, p);

    auto* strip = tabStrip(ui, p.SSTab1);
    auto* stack = new FrontStack;
    const auto place = [] { return block(column(std::vector<Item>{})); };
    QWidget* portPlace = place();
    QWidget* registerPlace = place();
    QWidget* board = withLetters(makeBoardPage(page, p));
    QWidget* buses = withLetters(busPages(page, p));
    QWidget* gpio = withLetters(makeGpioPage(page, p, portPlace));
    QWidget* oneRegister = makeOneRegister(page, p);
    QWidget* sfr = withLetters(makeSfrPage(page, p, registerPlace));
    QWidget* adc = withLetters(makeAdcPage(page, p));
    for (QWidget* each : {board, buses, gpio, sfr, adc})
        stack->addWidget(each);
    portPlace->layout()->addWidget(oneRegister);
    withLetters(oneRegister);
    const std::array<QWidget*, kPages> pages = {board, buses, buses, gpio, sfr, adc};
    const auto showPage = [=, &p] {
        const int tab = p.SSTab1.listIndex();
        if (tab < 0 || tab >= kPages)
            return;
        if (tab == kGpio || tab == kSfr)
            (tab == kGpio ? portPlace : registerPlace)->layout()->addWidget(oneRegister);
        stack->setCurrentWidget(pages.at(static_cast<std::size_t>(tab)));
    };
    ui.watch(p.SSTab1, showPage);
    addKeys(page, p, *strip);

    auto* content = column({strip, separator(Qt::Horizontal), gap, stack});
    content->setSpacing(0);
    content->setStretch(3, 1);
    page.setContent(block(content));
    if (auto* address = ui.find(p.txtI2Caddress))
        page.setFirstFocus(qobject_cast<QWidget*>(&address->target()));
}

} // namespace vrk
