#include "views/PanelWindow.h"

#include "platform/qt/QtHost.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/HelpWindow.h"
#include "views/menus.h"

#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStatusBar>

namespace vrk {

namespace {
/// The last result changes with every exchange; a person reads it at this rate.
constexpr int kStatusMs = 150;
/// Letters of the menus, which no field may take.
const QString kMenuLetters = "PBTHF";
} // namespace

PanelWindow::PanelWindow(const ViewContext& context, PanelSlotBase& slot, Panel& panel)
    : context_(context), slot_(slot), ui_(panel) {
    setObjectName(QString::fromStdString(slot.name()));
    setWindowTitle(QString::fromStdString(slot.title()).trimmed());
    firstMenu_ = addBenchMenus(*this);

    linkLamp_ = new qt::LampWidget;
    boardText_ = new QLabel;
    boardText_->setObjectName("status.board");
    lastText_ = qt::quietText({});
    lastText_->setObjectName("status.last");
    auto* hint = qt::quietText("F1 help  ·  ? keys");
    auto* line = qt::block(qt::row({linkLamp_, boardText_, qt::gap, lastText_, qt::stretch, hint}));
    line->layout()->setContentsMargins(qt::kUnit, 0, qt::kUnit, 0);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(line, 1);
    QObject::connect(&statusTimer_, &QTimer::timeout, this, [this] { showStatus(); });
    statusTimer_.setInterval(kStatusMs);
    showStatus();

    addKey(QKeySequence(Qt::Key_F1), "Help on this panel", [this] { showHelp(); });
    addKey(QKeySequence(Qt::Key_Question), "This list", [this] { showKeys(); });
}

void PanelWindow::setContent(QWidget* content) {
    content_ = content;
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    content->layout()->setContentsMargins(2 * qt::kUnit, 2 * qt::kUnit, 2 * qt::kUnit, 2 * qt::kUnit);
    area->setWidget(content);
    setCentralWidget(area);
    ui_.placed();
    qt::assignMnemonics(*content, kMenuLetters);

    const QSize room = QGuiApplication::primaryScreen()->availableSize() * 0.95;
    const QSize wanted = wantedSize();
    const int bar = area->verticalScrollBar()->sizeHint().width();
    resize(wanted.boundedTo(room) + QSize(wanted.height() > room.height() ? bar : 0, 0));
}

QSize PanelWindow::wantedSize() const {
    ensurePolished();
    if (content_ == nullptr)
        return sizeHint();
    return content_->sizeHint() + QSize(0, menuBar()->sizeHint().height() + statusBar()->sizeHint().height());
}

QMenu* PanelWindow::addPanelMenu(const QString& title) {
    auto* menu = new QMenu(title, this);
    menuBar()->insertMenu(firstMenu_->menuAction(), menu);
    return menu;
}

void PanelWindow::addKey(const QKeySequence& key, const QString& what, std::function<void()> action) {
    auto* shortcut = new QShortcut(key, this);
    // Some keyboards tell "?" with Shift and some without.
    if (key == QKeySequence(Qt::Key_Question))
        shortcut->setKeys({key, QKeySequence(Qt::SHIFT | Qt::Key_Question)});
    QObject::connect(shortcut, &QShortcut::activated, this, [this, act = std::move(action)] {
        if (!released_)
            qt::QtHost::guarded(act);
    });
    keyList_.emplace_back(key.toString(QKeySequence::NativeText), what);
}

void PanelWindow::onRead(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::Key_F5), what, std::move(action));
}

void PanelWindow::onWrite(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::CTRL | Qt::Key_Return), what, action);
    auto* keypad = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Enter), this);
    QObject::connect(keypad, &QShortcut::activated, this, [this, act = std::move(action)] {
        if (!released_)
            qt::QtHost::guarded(act);
    });
}

void PanelWindow::onAbort(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::Key_Escape), what, std::move(action));
}

void PanelWindow::showKeys() {
    auto* dialog = new QDialog(this);
    dialog->setObjectName("keys");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Keys");
    std::vector<std::vector<qt::Item>> rows;
    const auto line = [&rows](const QString& key, const QString& what) {
        auto* name = new QLabel(key);
        name->setFont(qt::valueFont());
        rows.push_back({name, new QLabel(what)});
    };
    for (const auto& [key, what] : keyList_)
        line(key, what);
    line("Alt+letter", "The control whose caption has that letter underlined");
    line("Tab", "The next control, in reading order");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* content = qt::column({qt::heading("Keys of this window"), qt::grid(rows), qt::stretch, buttons});
    content->setContentsMargins(2 * qt::kUnit, 2 * qt::kUnit, 2 * qt::kUnit, 2 * qt::kUnit);
    dialog->setLayout(content);
    dialog->show();
}

void PanelWindow::showHelp() {
    HelpWindow::showPage(*this, helpPage_);
}

void PanelWindow::release() {
    released_ = true;
    statusTimer_.stop();
    ui_.release();
    hide();
}

void PanelWindow::showStatus() {
    const LinkWords words = linkWords(context_);
    if (linkLamp_->colour() != words.colour)
        linkLamp_->setColour(words.colour);
    boardText_->setText(words.board);
    lastText_->setText(words.last);
    if (linkShown_)
        linkShown_(words);
}

void PanelWindow::closeEvent(QCloseEvent* event) {
    // The panel decides what closing means: hide, unload, or the end of the program.
    event->ignore();
    if (!released_)
        (void)slot_.userClose();
}

void PanelWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || released_)
        return;
    // Where several windows are shown in a row each is active for a moment; only the one that stays counts.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (isActiveWindow() && !released_)
                (void)slot_.userActivate();
        },
        Qt::QueuedConnection);
}

void PanelWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    statusTimer_.start();
    showStatus();
    if (firstFocus_ != nullptr && !event->spontaneous())
        firstFocus_->setFocus();
}

} // namespace vrk
