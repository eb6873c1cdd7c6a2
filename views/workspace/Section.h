#pragma once

#include <QString>
#include <QWidget>

#include <functional>

class QHBoxLayout;
class QLabel;
class QToolButton;

namespace vrk {

/// One block of the inspector under a heading that folds it. The heading keeps a summary of what it hides, so
/// that a folded supply still tells its volts.
class Section final : public QWidget {
  public:
    Section(const QString& title, QWidget* content);

    const QString& title() const { return title_; }
    void setTitle(const QString& title);
    /// A line above the heading, for every section but the first.
    void addDivider();
    QWidget* content() const { return content_; }
    bool folded() const { return folded_; }
    void setFolded(bool folded);
    /// Words at the right of the heading, brought up to date by show().
    void setSummary(std::function<QString()> summary);
    /// A picture at the right of the heading, a row of lamps for instance.
    void setSummary(QWidget* summary);
    /// Asks for the summary again. The workspace does so twice a second, as ages grow by themselves.
    void refresh();
    /// Where room is short the sections fold from the last to the first, those that fold last at the end.
    void setFoldsLast(bool last) { foldsLast_ = last; }
    bool foldsLast() const { return foldsLast_; }
    /// A section of a group that the panel hides goes with it.
    void setWanted(bool wanted);
    /// The user has folded or unfolded it by hand: room does not decide any more.
    bool chosenByUser() const { return chosenByUser_; }
    /// Called when the user folds or unfolds by hand.
    std::function<void()> onUser;

  private:
    QString title_;
    QWidget* content_;
    QToolButton* head_;
    QHBoxLayout* headRow_;
    QLabel* words_;
    std::function<QString()> summary_;
    bool folded_ = false;
    bool foldsLast_ = false;
    bool chosenByUser_ = false;
};

} // namespace vrk
