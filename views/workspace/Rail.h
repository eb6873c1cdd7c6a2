#pragma once

#include "views/pages.h"

#include <QWidget>

#include <functional>
#include <map>

namespace vrk {

class RailEntry;

/// Every page by sign and name, in its group. Where room is short the signs stand alone.
class Rail final : public QWidget {
  public:
    Rail();

    std::function<void(const PageRow&)> onOpen;
    /// Marks the page in front; nullptr for none.
    void setFront(const PageRow* row);
    /// \param height that there is: the headings of the groups give way to the entries, which grow lower.
    void setNarrow(bool narrow, int height);
    bool narrow() const { return narrow_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::map<const PageRow*, RailEntry*> entries_;
    std::vector<QWidget*> headings_;
    bool narrow_ = false;
    int full_ = 0; ///< height with the headings
};

} // namespace vrk
