#include "views/pages/homeCards.h"

#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages/boxes.h"
#include "views/workspace/Page.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>

#include <stdexcept>

namespace vrk {

using namespace qt;

namespace {

constexpr int kLabelWidth = 72;

QLabel* label(const QString& text, QWidget* field) {
    auto* words = caption(text, field);
    words->setMinimumWidth(dp(kLabelWidth));
    return words;
}

frmMainF340* console(Bench& bench) {
    return bench.frmMainF340.loaded() ? &*bench.frmMainF340 : nullptr;
}

/// State, firmware and instance. The console that knows them may not have been loaded yet.
class BoardBox final : public QWidget {
  public:
    explicit BoardBox(const ViewContext& context) : context_(context) {
        state_->setObjectName("home.board");
        state_->setWordWrap(true);
        state_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        lamp_->setName("Board");
        lamp_->setSide(20);
        firmware_->setObjectName("home.firmware");
        instance_->setObjectName("home.instance");
        instance_->setCharacters(3);
        of_->setObjectName("home.instance.of");
        reconnect_->setObjectName("home.reconnect");
        reconnect_->setAutoDefault(false);
        reconnect_->setToolTip("Looks for the boards again and reads the firmware's version");
        connect(instance_, &QComboBox::activated, this, [this](int row) {
            if (frmMainF340* link = console(context_.bench))
                (void)link->cboEVBinstance.userSelect(row);
        });
        connect(reconnect_, &QPushButton::clicked, this, [this] { reconnect(); });
        auto* first = row({lamp_, state_});
        first->setStretch(1, 1);
        auto* all = column({
            first,
            row({label("Firmware", firmware_), firmware_, stretch}),
            row({label("Instance", instance_), instance_, of_, stretch, reconnect_}),
        });
        all->setContentsMargins(0, 0, 0, 0);
        setLayout(all);
    }

    void show(const LinkWords& words) {
        lamp_->setColour(words.colour);
        QString state = words.board;
        state.truncate(state.indexOf(", instance") < 0 ? state.size() : state.indexOf(", instance"));
        if (context_.socket != nullptr) // the socket's own lines name its part, whichever it is by now
            state.remove(" with " + context_.boardName);
        state_->setText(state);
        frmMainF340* link = console(context_.bench);
        // Labels of what was never read hold a start text.
        const auto version = link == nullptr ? std::string() : link->txtFirmwareVersion.text();
        QString text = QString::fromStdString(version).trimmed();
        text.remove("Firmware Version ");
        firmware_->setText(text.isEmpty() || text == "--" ? kNeverRead : text);
        firmware_->setToolTip(text.isEmpty() ? "not read yet" : "");
        instance_->setEnabled(link != nullptr && link->cboEVBinstance.responsive());
        const int boards = link == nullptr ? 0 : link->cboEVBinstance.rowCount();
        const QSignalBlocker quiet(instance_);
        if (instance_->count() != boards) {
            instance_->clear();
            for (int at = 0; at < boards; ++at)
                instance_->addItem(QString::fromStdString(link->cboEVBinstance.row(at).text));
        }
        const int chosen = boards == 0 ? -1 : link->cboEVBinstance.listIndex();
        instance_->setCurrentIndex(chosen);
        of_->setText(boards == 0 ? QString("none found yet")
                                 : QString("%1 of %2").arg(chosen + 1).arg(boards));
    }

  private:
    void reconnect() {
        if (console(context_.bench) == nullptr) // its load is what looks for boards
            (void)context_.bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kConsolesOnly);
        else
            (void)context_.bench.frmMainF340->cmdReconnect.userClick();
        if (frmMainF340* link = console(context_.bench); link != nullptr && link->link().attached())
            (void)link->cmdFirmwareVersion.userClick();
    }

    ViewContext context_;
    LampWidget* lamp_ = new LampWidget;
    QLabel* state_ = heading({}, kNameScale);
    ValueLabel* firmware_ = new ValueLabel("1.2 - 2008/September/12", 1.0);
    ComboWidget* instance_ = new ComboWidget;
    QLabel* of_ = quietText({});
    QPushButton* reconnect_ = new QPushButton("Reconnect");
};

/// The part in the simulated socket, and hands to change it.
class SocketBox final : public QWidget {
  public:
    explicit SocketBox(const ViewContext& context) : context_(context), socket_(*context.socket) {
        part_->setObjectName("socket.part");
        part_->setAccessibleName("Part in the socket");
        part_->setPlaceholderText("empty");
        part_->setMinimumWidth(dp(140));
        for (const std::string& name : socket_.partNames())
            part_->addItem(QString::fromStdString(name));
        address_->setObjectName("socket.address");
        address_->setFont(valueFont());
        address_->setMaxLength(2);
        address_->setFixedWidth(dp(36));
        address_->setAlignment(Qt::AlignCenter);
        address_->setValidator(
            new QRegularExpressionValidator(QRegularExpression("[0-9A-Fa-f]{0,2}"), address_));
        wipers_->setObjectName("socket.wipers");
        wipers_->setFont(valueFont());
        of_->setObjectName("socket.of");
        empty_->setObjectName("socket.empty");
        empty_->setAutoDefault(false);
        empty_->setMinimumWidth(dp(72));
        connect(part_, &QComboBox::activated, this, [this](int row) {
            change([this, part = part_->itemText(row).toStdString()] { socket_.put(part, -1); });
        });
        connect(address_, &QLineEdit::editingFinished, this, [this] { readdress(); });
        connect(empty_, &QPushButton::clicked, this, [this] { change([this] { socket_.empty(); }); });
        auto* all = column({
            heading("Part in the socket"),
            row({part_, stretch, caption("Address", address_), address_, quietText("hex")}),
            row({label("Wiper", wipers_), tightRow({wipers_, of_}), stretch, empty_}),
        });
        all->setContentsMargins(0, 0, 0, 0);
        setLayout(all);
        show();
    }

    void show() {
        if (context_.bench.events().held()) // the bus is at work on another thread
            return;
        const SocketView::State now = socket_.state();
        const QSignalBlocker quiet(part_);
        if (!part_->view()->isVisible())
            part_->setCurrentIndex(now.part.isEmpty() ? -1 : part_->findText(now.part));
        if (!address_->hasFocus())
            address_->setText(now.address < 0 ? QString()
                                              : QString("%1").arg(now.address, 2, 16, QChar('0')).toUpper());
        address_->setEnabled(now.address >= 0);
        QStringList positions;
        for (const int wiper : now.wipers)
            positions += QString::number(wiper);
        wipers_->setText(positions.isEmpty() ? kNeverRead : positions.join("  "));
        of_->setText(now.positions > 0 ? QString("of %1").arg(now.positions) : QString());
        empty_->setEnabled(!now.part.isEmpty());
    }

  private:
    void readdress() {
        const SocketView::State now = socket_.state();
        const int address = address_->text().toInt(nullptr, 16);
        if (!now.part.isEmpty() && now.address >= 0 && address != now.address)
            change([this, part = now.part.toStdString(), address] { socket_.put(part, address); });
    }

    /// As an event: never inside an exchange with the board.
    void change(const std::function<void()>& act) {
        (void)context_.bench.events().deliver([act] {
            try {
                act();
            } catch (const std::invalid_argument& refused) {
                throw Fault(refused.what());
            }
        });
        show();
    }

    ViewContext context_;
    SocketView& socket_;
    ComboWidget* part_ = new ComboWidget;
    QLineEdit* address_ = new QLineEdit;
    QLabel* wipers_ = new QLabel;
    QLabel* of_ = quietText({});
    QPushButton* empty_ = new QPushButton("Empty");
};

} // namespace

HomePart makeHomeBoard(PageUi& page) {
    const ViewContext& context = page.context();
    auto* board = new BoardBox(context);
    board->show(linkWords(context));
    SocketBox* socket = context.socket == nullptr ? nullptr : new SocketBox(context);
    std::vector<Item> items{board};
    if (socket != nullptr) {
        items.emplace_back(separator(Qt::Horizontal));
        items.emplace_back(socket);
    }
    items.push_back(stretch);
    if (context.boardKind == BoardKind::Simulated) {
        auto* words = quietText("A board that is plugged in takes the place of the simulated one at the "
                                "next start.");
        words->setWordWrap(true);
        items.emplace_back(words);
    }
    return {box("Board", column(items)), [board, socket](const LinkWords& now) {
                board->show(now);
                if (socket != nullptr)
                    socket->show();
            }};
}

} // namespace vrk
