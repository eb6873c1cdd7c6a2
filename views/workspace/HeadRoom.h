#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <vector>

class QBoxLayout;
class QWidget;

namespace vrk {

/// Keeps the buttons and fields of a page's head legible: where they do not fit beside the name they stand in
/// as many lines as they need on top of the page, and scroll with it.
class HeadRoom final : public QObject {
  public:
    /// \param head with name, items and what belongs to the workspace in its layout. \param items of the
    /// head, in their order. \param content of the page, a column.
    HeadRoom(QWidget& head, QBoxLayout& items, QWidget& content);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    int needed() const;
    void arrange();
    void move(QBoxLayout& column, bool intoHead);

    QWidget& head_;
    QBoxLayout& items_;
    QPointer<QWidget> content_;
    std::vector<QPointer<QWidget>> widgets_;
    QPointer<QWidget> below_; ///< where they stand on top of the page; nullptr while they fit
    QTimer later_;
};

} // namespace vrk
