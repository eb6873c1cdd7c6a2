#include "views/blocks/InstructionComposer.h"

#include "panels/WiperPanel.h"
#include "panels/instruction/InstructionPanel.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "platform/runtime/text.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <bitset>

namespace vrk {

using namespace qt;

namespace {

constexpr int kOptionColumn = 166;
constexpr int kNameColumn = 152;
constexpr int kBitColumn = 30;
constexpr int kByteWidth = 340;
constexpr double kByteDigits = 3.7;
constexpr int kOperation = 9; ///< column of the table

/// What leads the instruction on the bus; the clocks of the steps go to a fixed address of their own.
QString addressWords(const InstructionPanel& p) {
    InstructionCompanion* const beside = p.loadedCompanion();
    if (beside == nullptr)
        return {};
    const WiperPanel& device = beside->devicePanel();
    const bool steps = p.choice().instructionClass == "INC";
    return QString(device.bus() == Bus::SPI ? " · ID " : " · slave ") +
           (steps ? QString("50") : qt::words(device.txtDeviceAdr.text())) + " hex";
}

/// What goes to the part besides the byte, or comes back.
QString furtherWords(const InstructionPanel& p, std::uint8_t byte, InstructionKind kind) {
    const std::string group = instructionRow(kind).group;
    const QString sent = qt::words(byteToHex2(byte));
    // The steps have a byte of their own, and the field may show another one.
    const bool shown = qt::words(p.lblSet[InstructionPanel::kByteField].caption()) == sent;
    const QString follows = group == "Read"    ? "1 byte comes back"
                            : group == "Write" ? "1 byte follows"
                            : group == "INC"   ? "clocks follow, one a step"
                                               : "no data";
    return (shown ? QString() : "sent as " + sent + " hex · ") + follows + addressWords(p);
}

/// Draws a row's words over as many lines as they need, and the chosen row on its own ground.
class WrappedCells final : public QStyledItemDelegate {
  public:
    WrappedCells(const Grid& grid, QObject* parent) : QStyledItemDelegate(parent), grid_(grid) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        painter->save();
        if (grid_.cellColour(index.row() + 1, index.column()) == Colour::Yellow)
            painter->fillRect(option.rect, colours().chosenRow);
        const QString words = index.data().toString();
        painter->setFont(fontOf(index.column(), words));
        const bool quiet = index.column() == kOperation;
        painter->setPen(option.palette.color(quiet ? QPalette::PlaceholderText : QPalette::Text));
        const bool bit = index.column() > 0 && !quiet;
        const int flags = bit ? static_cast<int>(Qt::AlignCenter)
                              : static_cast<int>(Qt::AlignVCenter | Qt::AlignLeft) | Qt::TextWordWrap;
        painter->drawText(option.rect.adjusted(bit ? 0 : 4, 0, bit ? 0 : -4, 0), flags, words);
        painter->restore();
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QFontMetrics metrics(fontOf(index.column(), {}));
        const auto* view = static_cast<const QTableView*>(option.widget);
        const int width = std::max(dp(60), view->columnWidth(index.column()) - 8);
        const QRect needed =
            metrics.boundingRect(QRect(0, 0, width, 1000), Qt::TextWordWrap, index.data().toString());
        return {width, needed.height() + dp(8)};
    }

  private:
    static QFont fontOf(int column, const QString& words) {
        QFont font = column == 0 || column == kOperation ? textFont(kSmall) : valueFont(kSmall);
        font.setBold(words == "1/0");
        return font;
    }
    const Grid& grid_;
};

/// The table stands whole beside its options, each of them in the height of its row.
class OptionsBeside final : public QWidget {
  public:
    OptionsBeside(QTableView& table, std::vector<QRadioButton*> options)
        : table_(table), options_(std::move(options)) {
        auto* words = quietText("Instruction");
        words->setFont(textFont(kSmall));
        words->setParent(this);
        words->move(dp(6), dp(3));
        for (QRadioButton* option : options_)
            option->setParent(this);
        table.setParent(this);
        table.installEventFilter(this);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setMinimumWidth(dp(kOptionColumn + kNameColumn + 8 * kBitColumn + 120));
    }
    QSize sizeHint() const override { return {dp(690), high_}; }
    QSize minimumSizeHint() const override { return {minimumWidth(), high_}; }

  protected:
    void resizeEvent(QResizeEvent*) override { place(); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::FontChange ||
            event->type() == QEvent::Show)
            place();
        return false;
    }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Base));
        painter.setPen(palette().color(QPalette::Mid));
        int y = head();
        for (int row = 0; row < table_.model()->rowCount(); ++row) {
            if (options_.at(static_cast<std::size_t>(row))->isChecked())
                painter.fillRect(QRect(0, y, dp(kOptionColumn), table_.rowHeight(row)), colours().chosenRow);
            painter.drawLine(0, y, width(), y);
            y += table_.rowHeight(row);
        }
        painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }

  private:
    int head() const { return table_.horizontalHeader()->sizeHint().height() + 1; }
    void place() {
        table_.setColumnWidth(0, dp(kNameColumn));
        for (int bit = 1; bit < kOperation; ++bit)
            table_.setColumnWidth(bit, dp(kBitColumn));
        const int rest = width() - dp(kOptionColumn + kNameColumn + 8 * kBitColumn) - 2;
        table_.setColumnWidth(kOperation, std::max(dp(100), rest));
        int y = head();
        for (int row = 0; row < table_.model()->rowCount(); ++row) {
            table_.resizeRowToContents(row);
            table_.setRowHeight(row, std::max(dp(30), table_.rowHeight(row)));
            options_.at(static_cast<std::size_t>(row))
                ->setGeometry(dp(6), y, dp(kOptionColumn - 8), table_.rowHeight(row));
            y += table_.rowHeight(row);
        }
        table_.setGeometry(dp(kOptionColumn), 0, width() - dp(kOptionColumn), y + 1);
        // Not from inside the layout that has just given the width: it would not hear of the new height.
        if (std::exchange(high_, y + 1) != y + 1)
            QMetaObject::invokeMethod(
                this, [this] { setFixedHeight(high_); }, Qt::QueuedConnection);
    }
    QTableView& table_;
    std::vector<QRadioButton*> options_;
    int high_ = 330;
};

} // namespace

InstructionComposer::InstructionComposer(PageUi& page, InstructionPanel& panel) {
    setObjectName("composer");
    auto* all = new QHBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(kUnit);
    QWidget* table = makeTable(page, panel);
    QWidget* byte = makeByte(page, panel);
    byte->setMinimumWidth(dp(kByteWidth - 60));
    byte->setMaximumWidth(dp(kByteWidth));
    all->addWidget(table, 1, Qt::AlignTop);
    all->addWidget(byte, 0, Qt::AlignTop);
}

QWidget* InstructionComposer::makeTable(PageUi& page, InstructionPanel& panel) {
    auto* table = page.ui()(panel.Grid1);
    table->setAccessibleName("Table 1. Instruction set");
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setAlternatingRowColors(false);
    table->setFrameShape(QFrame::NoFrame);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setFocusPolicy(Qt::NoFocus); // a display: the options beside it are what is chosen
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->horizontalHeader()->setMinimumSectionSize(dp(20));
    table->horizontalHeader()->setFont(textFont(kSmall));
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    table->setItemDelegate(new WrappedCells(panel.Grid1, table));
    std::vector<QRadioButton*> options;
    for (auto& option : panel.OptInstruction) {
        auto* button = page.ui()(*option);
        keepWithoutMnemonic(*button);
        options.push_back(button);
        order_.push_back(button);
    }
    first_ = options.front();
    auto* beside = new OptionsBeside(*table, options);
    page.ui().watch(panel.Grid1, [beside, table] {
        beside->update();
        table->viewport()->update();
    });
    auto* selection = heading("Table 1. Instruction Set Selection");
    selection->setToolTip(qt::words(panel.OptInstruction[0].toolTip()));
    return qt::block(rows({row({selection, stretch, quietText("TABLE 1. INSTRUCTION SET")}), beside}));
}

/// I3 to P0 over the bits of the byte, and under them its three numbers.
QWidget* InstructionComposer::makeBits(PageUi& page, InstructionPanel& panel) {
    static constexpr std::array<const char*, 8> kHeads = {"I3", "I2", "I1", "I0", "R1", "R0", "P1", "P0"};
    PanelUi& ui = page.ui();
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(2);
    grid->setVerticalSpacing(0);
    std::array<QLabel*, 8> bits{};
    const auto caption = [](const char* words) {
        auto* label = quietText(words);
        label->setFont(textFont(kSmall));
        return label;
    };
    grid->addWidget(caption("Fields in Hex >"), 3, 0, Qt::AlignVCenter);
    int column = 1;
    for (std::size_t bit = 0; bit < kHeads.size(); ++bit) {
        if (bit == 4 || bit == 6)
            grid->setColumnMinimumWidth(column++, dp(8));
        auto* head = quietText(kHeads.at(bit));
        head->setFont(textFont(kSmall));
        head->setAlignment(Qt::AlignCenter);
        grid->addWidget(head, 0, column);
        auto* digit = new QLabel("-");
        digit->setObjectName(QString("bit(%1)").arg(bit));
        digit->setFont(valueFont(1.3));
        digit->setAlignment(Qt::AlignCenter);
        digit->setMinimumWidth(dp(18));
        bits.at(bit) = digit;
        grid->addWidget(digit, 1, column++);
    }
    const auto number = [&](int field, int at, int span) {
        grid->addWidget(separator(Qt::Horizontal), 2, at, 1, span);
        auto* label = ui(panel.lblSet[field]);
        label->setFont(valueFont(1.3));
        label->setAlignment(Qt::AlignCenter);
        label->setAccessibleName(qt::words(panel.lblSet[field].toolTip()));
        grid->addWidget(label, 3, at, 1, span);
    };
    number(0, 1, 4);
    number(1, 6, 2);
    number(2, 9, 2);
    grid->setColumnStretch(11, 1);
    auto* merged = ui(panel.lblSet[3]);
    merged->setFont(valueFont(1.3));
    merged->setAccessibleName(qt::words(panel.lblSet[3].toolTip()));
    page.ui().watch(panel.lblSet[InstructionPanel::kByteField], [bits, &panel] {
        const auto byte = panel.byteToSend();
        for (std::size_t bit = 0; bit < bits.size(); ++bit)
            bits.at(bit)->setText(byte ? QString(((*byte >> (7 - bit)) & 1) != 0 ? "1" : "0") : QString("-"));
    });
    return qt::block(rows({grid, row({caption("Merged RX / PX Fields in Hex >"), merged, stretch}),
                           caption("Final Instruction in Hex >")}));
}

QWidget* InstructionComposer::makeByte(PageUi& page, InstructionPanel& panel) {
    PanelUi& ui = page.ui();
    std::vector<Item> registers{columnLabel("R1 / R0")};
    for (auto& option : panel.OptRegSel) {
        auto* button = ui(*option);
        button->setAccessibleName("Register " + qt::words(option->caption()));
        keepWithoutMnemonic(*button);
        registers.emplace_back(button);
        order_.push_back(button);
    }
    registers.emplace_back(stretch);
    std::vector<std::vector<Item>> pots{{}, {}};
    for (auto& option : panel.OptWiper) {
        auto* button = ui(*option);
        keepWithoutMnemonic(*button);
        pots.at(static_cast<std::size_t>(option->index() / 2)).emplace_back(button);
        order_.push_back(button);
    }
    auto* potGroup = ui.frame(panel.FrWiper, {}, grid(pots));
    potGroup->layout()->setSpacing(2);

    auto* byte = ui(panel.lblSet[InstructionPanel::kByteField]);
    byte->setFont(valueFont(kByteDigits));
    byte->setAccessibleName(qt::words(panel.lblSet[InstructionPanel::kByteField].toolTip()));
    byte->setMinimumWidth(QFontMetrics(byte->font()).horizontalAdvance("00"));
    auto* words = new ToneLabel;
    words->setObjectName("instructionWords");
    words->setFont(textFont(1.0, true));
    words->setWordWrap(true);
    words->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* further = quietText({});
    further->setObjectName("instructionFurther");
    further->setFont(textFont(kSmall));
    further->setWordWrap(true);
    further->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    const auto describe = [words, further, &panel] {
        const auto byteNow = panel.byteToSend();
        const auto effect = byteNow ? instructionEffect(*byteNow) : std::nullopt;
        if (!effect) {
            words->setText(byteNow ? "no instruction" : "Choose an instruction,\nthen pot and register");
            further->setText({});
            words->setTone(Tone::Quiet);
            return;
        }
        QString what = qt::words(instructionWords(*byteNow));
        what[0] = what[0].toUpper();
        words->setText(what);
        words->setTone(Tone::Plain);
        further->setText(furtherWords(panel, *byteNow, effect->kind));
    };
    page.ui().watch(panel.lblSet[InstructionPanel::kByteField], describe);
    if (InstructionCompanion* beside = panel.loadedCompanion())
        page.ui().watch(beside->devicePanel().txtDeviceAdr, describe);

    auto* value = ui(panel.txtWriteValue, 2);
    value->setFixedWidth(dp(44));
    value->setAlignment(Qt::AlignCenter);
    value->setAccessibleName("User Input Write Value");
    auto* valueFrame = ui.frame(panel.FrVal, {},
                                row({quietText("User Input Write Value"), stretch, value, quietText("hex")}));
    valueFrame->setTitled(false);
    auto* came = ui.value(panel.lblReadValue, "00", 1.2);
    came->setAccessibleName("Read Operation returned Value");
    auto* go = ui(panel.cmdDoInstruction);
    makeAccent(*go);
    go->setFixedSize(dp(150), dp(40));
    QFont large = textFont(1.3, true);
    go->setFont(large);
    auto* lamp = ui(panel.ShpI2CAck[0], qt::words(panel.Label1.caption()));
    lamp->setSide(20);
    auto* lampWords = ui(panel.Label1);
    makeQuiet(*lampWords);
    order_.push_back(value);
    order_.push_back(go);

    auto* whole = row({byte, qt::block(rows({words, further}))});
    whole->setStretch(1, 1); // the words follow the byte
    auto* content =
        rows({row(registers), potGroup, separator(Qt::Horizontal), makeBits(page, panel), whole, valueFrame,
              row({quietText("Read Operation returned Value."), stretch, came, quietText("hex")}),
              row({go, stretch, lampWords, lamp})});
    auto* group = ui.frame(panel.FrPot, {}, content);
    return group;
}

} // namespace vrk
