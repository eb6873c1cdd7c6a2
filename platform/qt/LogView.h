#pragma once

#include "platform/controls/controls.h"

#include <QAbstractScrollArea>
#include <QTimer>

#include <cstddef>
#include <string>

namespace vrk::qt {

/// Shows a TextLog. Paints only the lines in sight and keeps no text of its own, so that a million lines cost
/// what one page costs. Follows the end unless the user has scrolled away from it.
class LogView final : public QAbstractScrollArea {
  public:
    explicit LogView(QWidget* parent = nullptr);

    /// nullptr shows nothing. The log must outlive the view or be taken back.
    void setLog(const TextLog* log);
    /// Text was added at the end; the screen follows within one frame.
    void logGrew();
    /// The text is another one.
    void logReplaced();

    bool followsEnd() const { return follow_; }
    void scrollToEnd();

    /// Selects the next place of `text`, case-blind, from the selection on and round the end. \return false
    /// if the log does not hold it.
    bool find(const QString& text, bool forward);
    QString selectedText() const;
    void selectAll();
    void copy() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    struct Place {
        std::size_t line = 0;
        int column = 0;
        auto operator<=>(const Place&) const = default;
    };

    std::size_t lineCount() const { return log_ == nullptr ? 0 : log_->lineCount(); }
    QString lineText(std::size_t number) const;
    int linesInSight() const;
    int lineHeight() const;
    double columnWidth() const;
    Place placeAt(const QPoint& point) const;
    void catchUp();
    void updateRanges();
    void userScrolled();
    void ensureVisible(const Place& place);
    void select(const Place& from, const Place& to);

    const TextLog* log_ = nullptr;
    std::size_t measured_ = 0; ///< lines whose length is in widest_
    int widest_ = 0;           ///< columns
    bool follow_ = true;
    QTimer frame_;
    Place anchor_;
    Place caret_;
};

} // namespace vrk::qt
