/// What gives way in the workspace where room is short, and what it remembers of itself.

#include "platform/qt/theme.h"
#include "views/workspace/Band.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Help.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/PageWindow.h"
#include "views/workspace/Rail.h"
#include "views/workspace/Workspace.h"

#include <QApplication>
#include <QMenuBar>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

constexpr int kDockLow = 210;  ///< of a window 720 high
constexpr int kDockHigh = 260; ///< of one 1000 high
constexpr int kRailWide = 128;
constexpr int kRailNarrow = 44;
constexpr int kLeastPage = 240;
constexpr int kLeastMiddle = 96; ///< of a page beside an open dock

int dockHeight(int window) {
    const int low = dp(720);
    const int high = dp(1000);
    const int share = std::clamp(window - low, 0, high - low);
    return dp(kDockLow) + (dp(kDockHigh) - dp(kDockLow)) * share / std::max(1, high - low);
}

} // namespace

void Workspace::arrangeLater() {
    arrangeTimer_.start(0);
}

void Workspace::arrange() {
    band_->setRoom(width());
    const int body = height() - band_->height() - statusBar()->height() - menuBar()->sizeHint().height();
    const QSize least = front_ == nullptr ? QSize() : front_->leastSize();

    // The dock, down to its tabs.
    middle_->setMinimumHeight(dp(kLeastMiddle));
    // In a window that is lower than both it is drawn smaller, not cut off.
    const int full =
        std::max(2 * dock_->tabRowHeight(), std::min(dockHeight(height()), body - dp(kLeastMiddle)));
    const bool dockFits = least.height() + full <= body;
    // Open at a plot that the page has not it would stand there empty.
    const bool nothing =
        front_ != nullptr && front_->plot() == nullptr && dock_->current() == Dock::Plot && !dockAsked_;
    const bool fold = nothing || (dockWish_ ? !*dockWish_ : !dockFits);
    dock_->setVisible(front_ == nullptr || front_->wantsDock() || (dockWish_.value_or(false) && !nothing));
    dock_->setFolded(fold);
    dock_->setFixedHeight(fold ? dock_->tabRowHeight() : full);

    // The inspector, down to a strip; a page may want the width at once.
    help_->setRoom(width() - dp(kRailNarrow + kLeastPage) - Inspector::stripWidth());
    const int side = help_->isHidden() ? 0 : help_->minimumWidth();
    const int room = width() - side;
    const int inspector = inspector_->any() ? Inspector::width() : 0;
    bool strip = least.width() + inspector + dp(kRailWide) > room;
    if (front_ != nullptr) {
        const auto wish = inspectorWish_.find(front_->name());
        if (wish != inspectorWish_.end())
            strip = !wish->second;
        else
            strip = strip || !front_->opensInspector();
    }
    // Not even the user's wish makes it wider than the window.
    strip = strip || dp(kRailNarrow) + dp(kLeastPage) + inspector > room;
    inspector_->setStrip(strip);
    const int beside = inspector_->any() ? (strip ? Inspector::stripWidth() : Inspector::width()) : 0;

    // Then the rail's names.
    rail_->setNarrow(least.width() + beside + dp(kRailWide) > room && least.width() > 0, body);
    inspector_->arrange();
}

void Workspace::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    arrange();
}

void Workspace::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    statusTimer_.start();
    showStatus();
    arrangeLater();
}

void Workspace::restore() {
    if (settings_ == nullptr)
        return;
    restoreGeometry(settings_->value("window/geometry").toByteArray());
    const QString shade = settings_->value("view/shade").toString();
    if (!shade.isEmpty())
        applyTheme(*qApp, shade == "dark" ? Shade::Dark : Shade::Light);
    if (settings_->contains("dock/open"))
        dockWish_ = settings_->value("dock/open").toBool();
    dock_->choose(static_cast<Dock::Tab>(std::clamp(settings_->value("dock/tab", 0).toInt(), 0, 2)));
    toTakeOut_ = settings_->value("pages/out").toStringList();
    settings_->beginGroup("inspector");
    for (const QString& page : settings_->childKeys())
        inspectorWish_[page] = settings_->value(page).toBool();
    settings_->endGroup();
}

void Workspace::remember() {
    if (settings_ == nullptr)
        return;
    settings_->setValue("window/geometry", saveGeometry());
    settings_->setValue("view/shade", currentShade() == Shade::Dark ? "dark" : "light");
    if (dockWish_)
        settings_->setValue("dock/open", *dockWish_);
    else
        settings_->remove("dock/open");
    settings_->setValue("dock/tab", static_cast<int>(dock_->current()));
    QStringList out = toTakeOut_;
    for (const auto& [page, window] : windows_)
        out += QString::fromStdString(page->slot().name());
    if (out.isEmpty())
        settings_->remove("pages/out");
    else
        settings_->setValue("pages/out", out);
    settings_->beginGroup("inspector");
    for (const auto& [page, open] : inspectorWish_)
        settings_->setValue(page, open);
    settings_->endGroup();
    settings_->sync();
}

} // namespace vrk
