#include "views/workspace/WireView.h"

#include "link/reportLayout.h"
#include "platform/qt/Widgets.h"
#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QApplication>
#include <QByteArray>
#include <QClipboard>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include <algorithm>
#include <array>

namespace vrk {

using namespace qt;

namespace {

/// The table is brought up to date at this rate at most; a long action passes thousands of reports.
constexpr int kShowMs = 100;

constexpr std::array<const char*, report::kCommandCount> kCommands = {
    "Firmware version", "LEDs",          "Port configuration", "Port value",      "I2C options",
    "I2C clock",        "I2C",           "SPI configuration",  "SPI clock",       "SPI",
    "ADC clock",        "ADC reference", "ADC channel",        "ADC sample mode", "ADC loop count",
    "ADC sample rate",  "ADC enable",    "ADC read",           "Register",        "External converter"};

QString hex(std::uint8_t byte) {
    return QString("%1").arg(byte, 2, 16, QChar('0')).toUpper();
}
QString hex(const hid::Report& report, std::size_t from, std::size_t count) {
    QStringList bytes;
    for (std::size_t at = from; at < from + count && at < report.size(); ++at)
        bytes += hex(report[at]);
    return bytes.join(' ');
}

/// Up to the last byte that is not 0, and no less than what every report has.
QString shortHex(const hid::Report& report) {
    std::size_t last = report.size();
    while (last > 4 && report[last - 1] == 0)
        --last;
    return hex(report, 0, last);
}

QString i2cWords(const hid::Report& report) {
    const std::uint8_t address = report[report::kI2cAddress];
    const std::size_t count = report[report::kI2cCount];
    const std::size_t registers = report[report::kI2cRegisterCount];
    const QString where = hex(static_cast<std::uint8_t>(address & 0xFE));
    if ((address & 1) != 0)
        return QString("I2C read of %1 bytes from %2%3")
            .arg(count)
            .arg(where,
                 registers > 0 ? ", register " + hex(report, report::kI2cPayload, registers) : QString());
    return QString("I2C write of %1 bytes to %2: %3")
        .arg(count)
        .arg(where, hex(report, report::kI2cPayload, registers + count).left(60));
}

/// A reply says what it brings only together with what was asked.
QString replyWords(const hid::Report& reply, const hid::Report* request) {
    if (reply[report::kErrorByte] != 0)
        return "error " + hex(reply[report::kErrorByte]);
    if (request == nullptr)
        return "good";
    const auto command = static_cast<report::Command>((*request)[report::kCommandByte]);
    std::size_t count = 0;
    if (command == report::Command::I2cTransfer && ((*request)[report::kI2cAddress] & 1U) != 0)
        count = (*request)[report::kI2cCount];
    else if (command == report::Command::SpiTransfer && (*request)[report::kSpiRead] != 0)
        count = (*request)[report::kSpiCount];
    return count == 0 ? QString("good") : "good, data " + hex(reply, report::kFirstData, count).left(60);
}

} // namespace

QString reportWords(const hid::WireEvent& event, const hid::WireEvent* request) {
    const hid::Report& report = event.report;
    if (event.failed)
        return "the board did not take the report";
    if (event.direction == hid::WireEvent::Direction::In)
        return replyWords(report, request == nullptr ? nullptr : &request->report);
    const std::uint8_t number = report[report::kCommandByte];
    if (number >= report::kCommandCount)
        return "unknown command " + hex(number);
    const auto command = static_cast<report::Command>(number);
    const QString name = kCommands.at(number);
    switch (command) {
    case report::Command::I2cTransfer:
        return i2cWords(report);
    case report::Command::SpiTransfer:
        return QString("SPI transfer of %1 bytes: %2")
            .arg(report[report::kSpiCount])
            .arg(hex(report, report::kSpiPayload, report[report::kSpiCount]).left(60));
    case report::Command::SfrAccess: {
        const QString where = hex(report[report::kSfrAddress]);
        return report[report::kSubCommandByte] == report::kRead
                   ? "read register " + where
                   : "write register " + where + ": " + hex(report[report::kSfrValue]);
    }
    case report::Command::FirmwareVersion:
    case report::Command::AdcRead:
        return name;
    default:
        return (report[report::kSubCommandByte] == report::kRead ? "read " : "write ") + name;
    }
}

class WireView::Model final : public QAbstractTableModel {
  public:
    explicit Model(WireView& view) : QAbstractTableModel(&view), view_(view) {}
    void refresh() {
        beginResetModel();
        rows_ = static_cast<int>(view_.count());
        endResetModel();
    }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex&) const override { return 4; }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        static constexpr std::array<const char*, 4> kHeads = {"Time", "Way", "Report", "What it says"};
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return {};
        return kHeads.at(static_cast<std::size_t>(section));
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const auto row = static_cast<std::size_t>(index.row());
        if (row >= view_.count())
            return {};
        const hid::WireEvent& event = view_.shown(row);
        const bool out = event.direction == hid::WireEvent::Direction::Out;
        if (role == Qt::ForegroundRole) {
            // Of a row that failed the last reply brought what was not expected.
            const bool last = view_.excerpt_ && view_.excerpt_->failed && row + 1 == view_.count();
            const bool bad = event.failed || (!out && (last || event.report[report::kErrorByte] != 0));
            if (bad && index.column() == 3)
                return colours().failure;
            return index.column() == 0 ? QVariant(toneColour(Tone::Quiet)) : QVariant();
        }
        if (role == Qt::FontRole && index.column() != 3)
            return valueFont();
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return {};
        switch (index.column()) {
        case 0:
            return QString("+%1 ms").arg((event.at - view_.shownStart()).count());
        case 1:
            return out ? "out" : "in";
        case 2:
            return role == Qt::ToolTipRole ? hex(event.report, 0, event.report.size())
                                           : shortHex(event.report);
        default:
            return view_.wordsOf(row);
        }
    }

  private:
    WireView& view_;
    int rows_ = 0;
};

/// Left of an excerpt's reports: what was expected, what was read, and the bits in which they differ.
class WireView::Head final : public QWidget {
  public:
    Head() : title_(heading({})), bits_(quietText({})), note_(quietText({})) {
        setObjectName("wire.head");
        for (QLabel* value : {&expected_, &read_}) {
            value->setTextFormat(Qt::PlainText);
            value->setFont(valueFont(kStripScale));
            value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        }
        bits_->setFont(valueFont());
        for (QLabel* words : std::initializer_list<QLabel*>{&expected_, &read_, bits_, note_}) {
            words->setWordWrap(true);
            words->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        }
        auto* facts = grid({{"expected", &expected_}, {"read", &read_}, {"differ in", bits_}});
        facts->setColumnStretch(1, 1);
        auto* all = column({qt::row({&lamp_, title_, stretch}), facts, note_, stretch});
        all->setContentsMargins(kUnit, kUnit / 2, kUnit, kUnit / 2);
        setLayout(all);
        setFixedWidth(dp(220));
        hide();
    }
    void show(const WireExcerpt& excerpt) {
        title_->setText(excerpt.title);
        lamp_.setColour(excerpt.failed ? Colour::LightRed : Colour::LightGreen);
        expected_.setText(excerpt.expected.isEmpty() ? kNeverRead : excerpt.expected);
        read_.setText(excerpt.read.isEmpty() ? kNeverRead : excerpt.read);
        read_.setTone(excerpt.failed ? Tone::Failed : Tone::Plain);
        bits_->setText(differingBits(excerpt));
        note_->setText(excerpt.note);
        setVisible(true);
    }

  private:
    /// "byte 0: 1000 0000", of the first byte that differs.
    static QString differingBits(const WireExcerpt& excerpt) {
        const QByteArray expected = QByteArray::fromHex(excerpt.expected.toLatin1());
        const QByteArray read = QByteArray::fromHex(excerpt.read.toLatin1());
        for (qsizetype at = 0; at < std::min(expected.size(), read.size()); ++at) {
            const int bits = (expected[at] ^ read[at]) & 0xFF;
            if (bits != 0)
                return QString("byte %1: %2")
                    .arg(at)
                    .arg(QString("%1").arg(bits, 8, 2, QChar('0')).insert(4, ' '));
        }
        return kNeverRead;
    }

    LampWidget lamp_;
    QLabel* title_;
    ToneLabel expected_;
    ToneLabel read_;
    QLabel* bits_;
    QLabel* note_;
};

WireView::WireView(hid::WireRecorder& wire, EventLoop& events)
    : events_(events),
      head_(new Head),
      model_(new Model(*this)),
      table_(new QTableView),
      note_(quietText({})) {
    setObjectName("wire");
    table_->setObjectName("wire.table");
    table_->setAccessibleName("Reports of the last action");
    table_->setModel(model_);
    table_->setFrameShape(QFrame::NoFrame);
    table_->setShowGrid(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(dp(22));
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setColumnWidth(0, dp(90));
    table_->setColumnWidth(1, dp(48));
    table_->setColumnWidth(2, dp(320));
    note_->setObjectName("wire.note");
    auto* copy = new QPushButton("Copy");
    copy->setAutoDefault(false);
    QObject::connect(copy, &QPushButton::clicked, this,
                     [this] { QApplication::clipboard()->setText(text()); });
    tools_ = block(qt::row({stretch, note_, copy}));
    auto* all = qt::row({head_, table_});
    all->setStretch(1, 1);
    setLayout(all);
    layout()->setContentsMargins(0, 0, 0, 0);
    lag_.setSingleShot(true);
    lag_.setInterval(kShowMs);
    QObject::connect(&lag_, &QTimer::timeout, this, [this] { showReports(); });
    subscription_ = wire.observe([this](const hid::WireEvent& event) { take(event); });
}

WireView::~WireView() = default;

void WireView::take(const hid::WireEvent& event) {
    if (action_.expired()) {
        // The loop lets go of the mark when the outermost action is over.
        const auto mark = std::make_shared<char>();
        action_ = mark;
        events_.retire(mark);
        reports_.clear();
        dropped_ = 0;
        start_ = event.at;
        excerpt_.reset();
    }
    reports_.push_back(event);
    if (reports_.size() > kMost) {
        reports_.pop_front();
        ++dropped_;
    }
    if (isVisible() && !lag_.isActive())
        lag_.start();
}

void WireView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showReports();
}

void WireView::showExcerpt(const WireExcerpt& excerpt) {
    excerpt_ = excerpt;
    head_->show(excerpt);
    if (isVisible())
        showReports();
}

Milliseconds WireView::shownStart() const {
    return excerpt_ ? excerpt_->reports.empty() ? Milliseconds{0} : excerpt_->reports.front().at : start_;
}

QString WireView::wordsOf(std::size_t row) const {
    const hid::WireEvent& event = shown(row);
    const bool answers = event.direction == hid::WireEvent::Direction::In && row > 0 &&
                         shown(row - 1).direction == hid::WireEvent::Direction::Out;
    return reportWords(event, answers ? &shown(row - 1) : nullptr);
}

void WireView::showReports() {
    head_->setVisible(excerpt_.has_value());
    const auto words = [](std::size_t reports) {
        return QString(reports == 1 ? "%1 report" : "%1 reports").arg(reports);
    };
    note_->setText(
        excerpt_ ? words(excerpt_->reports.size()) + " of this row"
        : dropped_ == 0
            ? words(reports_.size())
            : QString("last %1 of %2 reports").arg(reports_.size()).arg(reports_.size() + dropped_));
    model_->refresh();
}

QString WireView::text() const {
    QString all;
    for (std::size_t row = 0; row < count(); ++row) {
        const hid::WireEvent& event = shown(row);
        all += QString("+%1 ms\t%2\t%3\t%4\n")
                   .arg((event.at - shownStart()).count())
                   .arg(event.direction == hid::WireEvent::Direction::Out ? "out" : "in",
                        hex(event.report, 0, event.report.size()), wordsOf(row));
    }
    return all;
}

} // namespace vrk
