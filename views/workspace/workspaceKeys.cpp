/// Keys, palette, list of keys and the way to a field.

#include "platform/qt/QtHost.h"
#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/Band.h"
#include "views/workspace/ChoicePopup.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Help.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/KeyTable.h"
#include "views/workspace/PageWindow.h"
#include "views/workspace/Section.h"
#include "views/workspace/Workspace.h"
#include "views/workspace/intoView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTimer>

#include <algorithm>
#include <set>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

QString keyText(const QKeySequence& key) {
    return key.toString(QKeySequence::NativeText).replace("Return", "Enter"); // as the keyboard has it
}

/// "Alt+R" of a button whose caption has that letter underlined. In a heading that is folded it has no key.
QString mnemonicOf(const QObject& target) {
    const auto* button = qobject_cast<const QAbstractButton*>(&target);
    return button == nullptr || !button->isVisible() ? QString()
                                                     : keyText(QKeySequence::mnemonic(button->text()));
}

QString wordsOf(const Control& control, const QObject& target) {
    QString words = plainCaption(control);
    // "Up of part #1": a name that says more than the caption says which one it is, too.
    if (const auto* widget = qobject_cast<const QWidget*>(&target);
        widget != nullptr && !words.isEmpty() && widget->accessibleName().startsWith(words + ' '))
        return widget->accessibleName();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&target);
        button != nullptr && words.isEmpty())
        words = button->text().remove('&');
    if (const auto* widget = qobject_cast<const QWidget*>(&target)) {
        if (words.isEmpty())
            words = widget->accessibleName();
        // Twins of one caption: the section or group says which one it is.
        for (const QWidget* at = widget->parentWidget(); at != nullptr; at = at->parentWidget()) {
            const auto* group = dynamic_cast<const GroupWidget*>(at);
            const auto* section = dynamic_cast<const Section*>(at);
            const QString around = group != nullptr     ? group->title()
                                   : section != nullptr ? section->title()
                                                        : QString();
            if (!around.isEmpty() && !words.contains(around))
                return words + "  ·  " + around;
        }
    }
    if (control.index() != kNoIndex)
        words += QString("  ·  %1").arg(control.index());
    return words;
}

QString wordsOf(const QPushButton& own) {
    return own.accessibleName().isEmpty() ? own.text().remove('&') : own.accessibleName();
}

/// What a page in sight has beside its panel's controls: "Sweep…". A mere sign is no action to look for.
std::vector<QPushButton*> ownButtons(PageUi& page) {
    std::set<const QObject*> bound;
    for (const Binding* binding : page.ui().bindings())
        bound.insert(&binding->target());
    std::vector<QPushButton*> own;
    for (const QWidget* root : page.roots())
        for (QPushButton* button : root->findChildren<QPushButton*>())
            if (!bound.contains(button) && button->isVisible() && button->text().size() > 2 &&
                std::find(own.begin(), own.end(), button) == own.end())
                own.push_back(button);
    return own;
}

} // namespace

void Workspace::addCommands() {
    commands_ = {
        {QKeySequence(Qt::Key_F1), "Help on this page",
         [this] { showHelp(inUse() == nullptr ? QString() : inUse()->helpPage()); }},
        {QKeySequence(Qt::CTRL | Qt::Key_K), "Every action of this page, to choose from",
         [this] { showPalette(); }},
        {QKeySequence(Qt::Key_Question), "This list", [this] { showKeys(); }},
        {QKeySequence(Qt::Key_Escape), "Abort what runs", {}},
        {QKeySequence(Qt::CTRL | Qt::Key_I), "Inspector: sections or strip", [this] { inspectorToggle(); }},
        {QKeySequence(Qt::CTRL | Qt::Key_D), "Dock: open or fold", [this] { dockToggle(); }},
    };
    for (const Command& command : commands_)
        keys_->add(command.key);
    followKeysInUse(*this);
    // Qt scrolls for Tab alone. Under the mouse nothing moves, nor where the window comes back: then the
    // same widget has the keyboard in it as before.
    connect(qApp, &QApplication::focusChanged, this, [](const QWidget*, QWidget* now) {
        if (now == nullptr)
            return;
        constexpr const char* kHolder = "keyboardHolder";
        const QVariant holder = QVariant::fromValue(static_cast<void*>(now));
        const bool moved = now->window()->property(kHolder) != holder;
        now->window()->setProperty(kHolder, holder);
        if (moved && keysInUse())
            QTimer::singleShot(0, now, [now] { scrollIntoView(*now); }); // once its page has its size
    });
}

void Workspace::tieKeys(const PageUi& page, KeyTable& table) const {
    for (const PageKey& key : page.keys())
        table.add(key.key);
}

PageUi* Workspace::pageOf(const QWidget* widget) const {
    if (widget == nullptr)
        return nullptr;
    for (const auto& [slot, page] : pages_)
        if (page->holds(*widget))
            return page;
    return nullptr;
}

/// The page of the window that has the keyboard.
PageUi* Workspace::inUse() const {
    for (const auto& [page, window] : windows_)
        if (window->isActiveWindow())
            return window->page();
    return working();
}

void Workspace::press(const QKeySequence& key) {
    // Esc is for the action that runs before it is for anything on a page.
    if (key == QKeySequence(Qt::Key_Escape) && context_.bench.context().activities.abort())
        return;
    if (key == QKeySequence(Qt::Key_Escape) && help_->isAncestorOf(QApplication::focusWidget()))
        return help_->onClose();
    // The dock's page has its own keys while the keyboard is in it; a page in its own window likewise.
    PageUi* inHand = pageOf(QApplication::focusWidget());
    if (inHand != nullptr && inHand->row().place != PagePlace::Dock && !isOut(*inHand))
        inHand = nullptr; // it may be a page that has just left
    if (inHand == nullptr)
        inHand = inUse();
    for (PageUi* page : {inHand, working()}) {
        if (page == nullptr || page->released())
            continue;
        for (const PageKey& own : page->keys())
            if (own.key == key)
                return own.act();
        if (page == working())
            break;
    }
    if (key == QKeySequence(Qt::Key_Escape) && sheet_ != nullptr && working() != front_)
        return (void)working()->slot().userClose();
    for (const Command& command : commands_)
        if (command.key == key && command.act)
            return QtHost::guarded(command.act);
}

void Workspace::showPalette() {
    std::vector<ChoicePopup::Choice> choices;
    PageUi* page = inUse();
    if (page != nullptr) {
        for (const PageKey& key : page->keys()) {
            const auto twin = std::find_if(choices.begin(), choices.end(),
                                           [&key](const auto& choice) { return choice.text == key.what; });
            if (twin != choices.end())
                twin->key += ", " + keyText(key.key);
            else
                choices.push_back({key.what, keyText(key.key), {}, key.act, false});
        }
    }
    // The band's switch, which works on the last device panel whatever page is in front.
    if (const BandSource* band = band_->page() == nullptr ? nullptr : band_->page()->band())
        for (const auto& [option, what] : {std::pair{band->on, "VCC on"}, std::pair{band->off, "VCC off"}})
            if (option != nullptr)
                choices.push_back(
                    {what, {}, refusalOf(*option), [option = option] { (void)option->userClick(); }, false});
    if (page != nullptr) {
        for (const Binding* binding : page->ui().bindings()) {
            Control* control = binding->control();
            if (control == nullptr)
                continue;
            if (control->kind() == Control::Kind::Button)
                choices.push_back(
                    {wordsOf(*control, binding->target()), mnemonicOf(binding->target()), refusalOf(*control),
                     [button = static_cast<Button*>(control)] { (void)button->userClick(); }, false});
            else if (control->kind() == Control::Kind::MenuEntry)
                choices.push_back({plainCaption(*control),
                                   {},
                                   refusalOf(*control),
                                   [entry = static_cast<MenuEntry*>(control)] { (void)entry->userClick(); },
                                   false});
        }
        for (QPushButton* own : ownButtons(*page))
            choices.push_back({wordsOf(*own), mnemonicOf(*own),
                               own->isEnabled() ? QString() : "not available now",
                               [button = QPointer(own)] {
                                   if (button != nullptr)
                                       button->click();
                               },
                               false});
    }
    for (const PageRow& row : pageRows())
        if (row.place == PagePlace::Page)
            choices.push_back({QString("Go to ") + row.name, {}, {}, [this, &row] { open(row); }, false});
    choices.push_back({"Results before the last", {}, {}, [this] { band_->openHistory(); }, false});
    for (const Command& command : commands_)
        if (command.act)
            choices.push_back({command.what, keyText(command.key), {}, command.act, false});
    std::erase_if(choices, [](const ChoicePopup::Choice& choice) { return choice.text.isEmpty(); });
    auto* popup = new ChoicePopup(*this, "palette", "Type to find an action", std::move(choices));
    const int wide = std::min(dp(560), width() - dp(64));
    popup->openAt(mapToGlobal(QPoint((width() - wide) / 2, band_->geometry().bottom() + menuBarHeight())),
                  wide);
}

void Workspace::showKeys() {
    auto* dialog = new QDialog(this);
    dialog->setObjectName("keys");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Keys");
    std::vector<std::vector<Item>> rows;
    const auto line = [&rows](const QString& key, const QString& what) {
        auto* name = new QLabel(key);
        name->setFont(valueFont());
        rows.push_back({name, new QLabel(what)});
    };
    if (const PageUi* page = inUse())
        for (const PageKey& key : page->keys())
            line(keyText(key.key), key.what);
    for (const Command& command : commands_)
        line(keyText(command.key), command.what);
    line("Ctrl+R", "Connect to the board again");
    line("Ctrl+T", "Show the trace");
    if (front_ != nullptr && inUse() == front_ && front_->panel().closeHides())
        line("Ctrl+W", "Close this page");
    line("Ctrl+Q", "End the program");
    line("Alt+letter", "The control whose caption has that letter underlined");
    line("Tab", "The next control, in reading order");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* list = new QScrollArea;
    list->setFrameShape(QFrame::NoFrame);
    list->setWidget(block(qt::column({qt::grid(rows), stretch})));
    list->setWidgetResizable(true);
    const int bar = list->verticalScrollBar()->sizeHint().width();
    list->setMinimumWidth(list->widget()->sizeHint().width() + bar);
    auto* content = qt::column({heading("Keys of this page"), list, buttons});
    content->setContentsMargins(2 * kUnit, 2 * kUnit, 2 * kUnit, 2 * kUnit);
    dialog->setLayout(content);
    const int rest = dialog->sizeHint().height() - list->sizeHint().height();
    dialog->resize(dialog->sizeHint().width(),
                   std::min(list->widget()->sizeHint().height() + rest, height()));
    dialog->show();
}

void Workspace::showHelp(const QString& heading) {
    if (isHidden() || isMinimized())
        showNormal();
    if (front_ != nullptr)
        front_->keepFocus();
    help_->showPage(heading);
    arrange();
    help_->browser().setFocus(Qt::ShortcutFocusReason); // so that keys turn its pages; Esc gives it back
}

void Workspace::jumpTo(const QString& field) {
    const auto dot = field.indexOf('.');
    const std::string panel = field.left(std::max<qsizetype>(dot, 0)).toStdString();
    PageUi* page = this->page(panel);
    if (page == nullptr || page->released())
        return;
    PanelSlotBase* slot = &page->slot();
    if (page->row().place == PagePlace::Page) {
        if (slot->visible())
            (void)context_.bench.events().deliver([slot] { slot->show(); });
        else
            open(page->row());    // a device panel takes the supplies over: the one before it is left first
        page = this->page(panel); // may have gone with the panel that was left
        if (page == nullptr || page->released() || !slot->visible())
            return;
    }
    QWidget* widget = page->find(field.mid(dot + 1));
    if (widget == nullptr)
        return;
    for (Section* section : page->sections())
        if (section->isAncestorOf(widget) && section->folded())
            section->setFolded(false);
    if (page == front_ && inspector_->isAncestorOf(widget))
        inspectorWish_[page->name()] = true;
    arrange();
    scrollIntoView(*widget);
    widget->setFocus(Qt::OtherFocusReason);
}

} // namespace vrk
