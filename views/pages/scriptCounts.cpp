#include "views/pages/scriptParts.h"

#include "platform/qt/theme.h"
#include "script/frmScriptOps.h"
#include "views/pages/boxes.h"
#include "views/workspace/Page.h"

#include <QAbstractListModel>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

constexpr double kDigits = 2.3; ///< 38 pixels of the digits' line at 100%
constexpr int kBoxWide = 98;
constexpr int kHigh = 72;

/// A number field that looks like a reading: large digits at the right, no frame. It can be typed in: the
/// counters go on from what stands there.
KeyLineEdit* largeDigits(PageUi& page, TextBox& box, const QString& name) {
    KeyLineEdit* field = page.ui()(box, 4);
    field->setAccessibleName(name);
    field->setFont(valueFont(kDigits));
    field->setFrame(false);
    field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    field->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return field;
}

/// One count in its box; a count of failures turns its box red as soon as there is one.
class CountBox final : public QWidget {
  public:
    CountBox(KeyLineEdit* field, const QString& name, bool failures)
        : field_(field), failures_(failures), name_(new ToneLabel) {
        name_->setText(name);
        name_->setFont(textFont(kSmall));
        name_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        name_->setTone(Tone::Quiet);
        auto* all = column({name_, field});
        all->setContentsMargins(kUnit - 2, kUnit / 2, kUnit - 2, kUnit / 2);
        all->setSpacing(0);
        setLayout(all);
        setFixedHeight(dp(kHigh));
        setMinimumWidth(dp(kBoxWide));
    }
    void refresh() {
        const bool failed = failures_ && field_->text().toInt() > 0;
        if (failed == failed_)
            return;
        failed_ = failed;
        name_->setTone(failed ? Tone::Failed : Tone::Quiet);
        QPalette shown = QPalette();
        if (failed) {
            shown.setColor(QPalette::Text, colours().failure);
            shown.setColor(QPalette::Base, colours().failureGround);
        }
        field_->setPalette(shown);
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(failed_ ? colours().failureGround
                                 : palette().color(QPalette::Active, QPalette::Base));
        painter.setPen(failed_ ? colours().failure : palette().color(QPalette::Active, QPalette::Mid));
        constexpr double kCorner = 3.0;
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCorner, kCorner);
    }

  private:
    KeyLineEdit* field_;
    bool failures_;
    bool failed_ = false;
    ToneLabel* name_;
};

/// The passes of the last run, the newest last.
class PassModel final : public QAbstractListModel {
  public:
    PassModel(frmScriptOps& panel, QObject* parent) : QAbstractListModel(parent), panel_(panel) {}
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : rows_; }
    QVariant data(const QModelIndex& index, int role) const override {
        const auto& passes = panel_.results().passes;
        const auto at = static_cast<std::size_t>(index.row());
        if (at >= passes.size())
            return {};
        const PassResult& pass = passes[at];
        if (role == Qt::DecorationRole)
            return pass.failed + pass.errors > 0;
        if (role != Qt::DisplayRole)
            return {};
        QString text = QString("%1 passed, %2 failed").arg(pass.passed).arg(pass.failed);
        if (pass.errors > 0)
            text += QString(", %1 in error").arg(pass.errors);
        const double seconds = static_cast<double>(pass.lasted.count()) / 1000.0;
        const QString end = pass.ended                   ? scriptEndName(pass.end)
                            : panel_.debugger().paused() ? "paused"
                                                         : "runs";
        return QString("%1  %2  %3 s  %4").arg(pass.pass).arg(text).arg(seconds, 0, 'f', 2).arg(end);
    }
    /// \return true if there are other passes than before
    bool refresh() {
        const auto& passes = panel_.results().passes;
        const int rows = static_cast<int>(passes.size());
        const int newest = passes.empty() ? 0 : passes.back().pass;
        if (std::exchange(newest_, newest) == newest && rows == rows_) {
            if (rows > 0)
                Q_EMIT dataChanged(index(rows - 1), index(rows - 1));
            return false;
        }
        beginResetModel();
        rows_ = rows;
        endResetModel();
        return true;
    }

  private:
    frmScriptOps& panel_;
    int rows_ = 0;
    int newest_ = 0; ///< its number; of a long run only the newest are listed
};

class PassDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override { return {0, dp(18)}; }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const int side = dp(12);
        const bool failed = index.data(Qt::DecorationRole).toBool();
        painter->save();
        drawLamp(*painter,
                 QRectF(option.rect.left() + 2, option.rect.center().y() - side / 2.0 + 0.5, side, side),
                 failed ? Colour::LightRed : Colour::LightGreen, LampWidget::Role::Status, option.palette);
        painter->setFont(textFont(kSmall));
        painter->setPen(option.palette.color(QPalette::Text));
        const QRect place = option.rect.adjusted(side + kUnit, 0, 0, 0);
        painter->drawText(
            place, Qt::AlignLeft | Qt::AlignVCenter,
            painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight, place.width()));
        painter->restore();
    }
};

} // namespace

LivePart makeScriptCounts(PageUi& page, frmScriptOps& p) {
    struct Count {
        TextBox& box;
        const char* name;
        bool failures = false;
    };
    const std::array<Count, 6> counts = {{{p.txtRdPass, "Passed"},
                                          {p.txtRdFails, "Failed", true},
                                          {p.txttotReads, "Expected reads"},
                                          {p.txtRunning, "Row"},
                                          {p.txtTotLines, "Lines"},
                                          {p.txtLoopCount, "Loops"}}};
    std::vector<Item> items;
    std::vector<CountBox*> boxes;
    for (const Count& count : counts) {
        boxes.push_back(new CountBox(largeDigits(page, count.box, count.name), count.name, count.failures));
        items.emplace_back(boxes.back());
    }
    auto* passes = new QListView;
    auto* model = new PassModel(p, passes);
    passes->setObjectName("script.passes");
    passes->setAccessibleName("Passes of this run");
    passes->setModel(model);
    passes->setItemDelegate(new PassDelegate(passes));
    passes->setFrameShape(QFrame::NoFrame);
    passes->setSelectionMode(QAbstractItemView::NoSelection);
    passes->viewport()->setAutoFillBackground(false);
    passes->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    passes->setUniformItemSizes(true);
    auto* title = quietText("Passes of this run");
    title->setFont(textFont(kSmall));
    title->setToolTip("The counters start over with each pass");
    auto* list = column({title, passes});
    auto* frame = new BoxFrame(list, BoxFrame::Ground::Window);
    list->setContentsMargins(kUnit, kUnit / 2, kUnit, kUnit / 2);
    list->setSpacing(2);
    frame->setFixedHeight(dp(kHigh));
    frame->setMinimumWidth(dp(140)); // room for an inspector beside the page in 1280 pixels
    items.emplace_back(frame);
    auto* all = row(items);
    all->setStretch(static_cast<int>(counts.size()), 3);
    for (int at = 0; at < static_cast<int>(counts.size()); ++at)
        all->setStretch(at, 1);
    return {block(all), [boxes, model, passes] {
                for (CountBox* box : boxes)
                    box->refresh();
                if (model->refresh())
                    passes->scrollToBottom();
            }};
}

} // namespace vrk
