#pragma once

#include "platform/qt/layout.h"

#include <QStackedWidget>
#include <QWidget>

#include <vector>

class QGridLayout;

namespace vrk {

/// An outlined box of a page: a card, a port, a group of settings.
class BoxFrame final : public QWidget {
  public:
    /// On what it stands: of fields for what the user reads, of the window for what belongs to the page.
    enum class Ground { Base, Window };
    BoxFrame(QLayout* content, Ground ground);
    void setGround(Ground ground);
    /// An outline in the accent colour, for the one box of many that is meant.
    void setMarked(bool marked);
    bool marked() const { return marked_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Ground ground_;
    bool marked_ = false;
};

/// A box under a bold title. \param corner stands at the right end of the title's line.
BoxFrame* box(const QString& title, QLayout* content, BoxFrame::Ground ground = BoxFrame::Ground::Window,
              QWidget* corner = nullptr);

/// The place of a written and a read value, tinted while they differ.
class DiffersGround final : public QWidget {
  public:
    explicit DiffersGround(QLayout* content);
    void setDiffers(bool differs);
    bool differs() const { return differs_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    bool differs_ = false;
};

/// Boxes of equal width side by side, as many in a line as there is room for.
class BoxFlow final : public QWidget {
  public:
    /// \param least width of a box. \param shares of the boxes in the width while they stand in one line;
    /// none: equal ones.
    BoxFlow(std::vector<QWidget*> boxes, int least, std::vector<int> shares = {});
    int columns() const { return columns_; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void arrange(int columns);

    std::vector<QWidget*> boxes_;
    int least_;
    std::vector<int> shares_;
    int columns_ = 0;
    QGridLayout* grid_;
};

/// Pages of which one is in sight. Asks for the room of that one alone: those behind must not make it scroll.
class FrontStack final : public QStackedWidget {
  public:
    FrontStack();
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
};

/// Cuts a text at the end of its place instead of widening it.
QLabel* elidedText(const QString& text);

} // namespace vrk
