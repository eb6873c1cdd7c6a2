#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTimer>

#include <algorithm>

namespace vrk::qt {

namespace {

QMessageBox::StandardButton standardButton(Choice choice) {
    switch (choice) {
    case Choice::Ok:
        return QMessageBox::Ok;
    case Choice::Cancel:
        return QMessageBox::Cancel;
    case Choice::Retry:
        return QMessageBox::Retry;
    case Choice::Yes:
        return QMessageBox::Yes;
    case Choice::No:
        return QMessageBox::No;
    }
    return QMessageBox::Ok;
}

/// What Esc and the box's close button mean: the answer that changes least.
Choice harmlessChoice(const std::vector<Choice>& buttons) {
    for (const Choice choice : {Choice::Cancel, Choice::No, Choice::Ok})
        if (std::find(buttons.begin(), buttons.end(), choice) != buttons.end())
            return choice;
    return buttons.empty() ? Choice::Ok : buttons.back();
}

QString titleOf(const std::string& title) {
    const QString text = QString::fromStdString(title).trimmed();
    return text.isEmpty() ? QApplication::applicationDisplayName() : text;
}

/// A box that Esc and the cross do not close, where every answer does something.
class Box final : public QMessageBox {
  public:
    explicit Box(bool stays) : QMessageBox(QApplication::activeWindow()), stays_(stays) {}

  protected:
    void closeEvent(QCloseEvent* event) override {
        if (stays_)
            event->ignore();
        else
            QMessageBox::closeEvent(event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (stays_ && event->key() == Qt::Key_Escape)
            event->accept();
        else
            QMessageBox::keyPressEvent(event);
    }

  private:
    bool stays_;
};

/// Has the box press a button itself once what it waits for has held long enough.
void answerUnattended(QMessageBox& window, QTimer& watch, const MessageBox::Unattended& unattended) {
    constexpr int kLook = 1000; // ms
    const auto button = window.button(standardButton(unattended.choice));
    const QString caption = button->text();
    QObject::connect(&watch, &QTimer::timeout, &window,
                     [button, caption, unattended, since = QElapsedTimer()]() mutable {
                         if (!unattended.ready()) {
                             since.invalidate();
                             button->setText(caption);
                             return;
                         }
                         if (!since.isValid())
                             since.start();
                         const auto left = unattended.after.count() - since.elapsed();
                         button->setText(caption + QStringLiteral(" (%1 s)").arg(left / 1000 + 1));
                         if (left <= 0)
                             button->click();
                     });
    watch.start(kLook);
}

bool canAbort(const Activities* activities) {
    return activities != nullptr &&
           std::any_of(activities->running().begin(), activities->running().end(),
                       [](const Activity* activity) { return activity->abortable(); });
}

} // namespace

bool QtDialogs::isFurther() {
    if (!action_.expired())
        return true;
    // The loop lets go of the mark when the outermost action is over.
    const auto mark = std::make_shared<char>();
    action_ = mark;
    events_.retire(mark);
    return false;
}

void QtDialogs::endProgram() {
    ending_ = true;
    if (standing_ != nullptr)
        standing_->done(QDialog::Rejected);
    else if (events_.held()) // by an exchange: behind it
        events_.post([this] { events_.endProgram(); });
    if (!events_.held())
        (void)events_.deliver([this] { events_.endProgram(); });
}

void QtDialogs::endIfAsked() {
    if (events_.ended())
        throw ProgramEnded{};
    if (ending_)
        events_.endProgram();
}

Choice QtDialogs::show(const MessageBox& box) {
    endIfAsked(); // asked in the exchange that brings this box: nobody would answer it
    if (box.buttons == std::vector{Choice::Ok} && isFurther() && onFurther) {
        onFurther(box.text);
        return Choice::Ok;
    }
    Box window(box.escape == MessageBox::Escape::Stays);
    standing_ = &window;
    window.setObjectName("messageBox");
    window.setWindowTitle(titleOf(box.title));
    window.setTextFormat(Qt::PlainText);
    window.setText(QString::fromStdString(box.text).trimmed());
    window.setIcon(box.buttons.size() > 1 ? QMessageBox::Question : QMessageBox::Information);
    for (const Choice choice : box.buttons)
        window.addButton(standardButton(choice))->setObjectName(QString::fromStdString(choiceName(choice)));
    const bool retries =
        std::find(box.buttons.begin(), box.buttons.end(), Choice::Retry) != box.buttons.end();
    const QAbstractButton* abort = nullptr;
    if (retries && canAbort(activities_)) {
        auto* button = window.addButton("Retry and &Abort", QMessageBox::ActionRole);
        button->setObjectName("Abort");
        abort = button;
    }
    const Choice harmless = harmlessChoice(box.buttons);
    if (box.escape == MessageBox::Escape::Retry)
        window.setEscapeButton(standardButton(Choice::Retry));
    else if (box.escape == MessageBox::Escape::Harmless)
        window.setEscapeButton(standardButton(harmless));
    if (!box.consequence.empty())
        window.setInformativeText(QString::fromStdString(box.consequence));
    // Retry is what somebody who has just pushed the plug back in wants; a Yes is never one careless Enter
    // away.
    const bool asksYes = std::find(box.buttons.begin(), box.buttons.end(), Choice::Yes) != box.buttons.end();
    window.setDefaultButton(standardButton(asksYes || box.buttons.empty() ? harmless : box.buttons.front()));
    QTimer watch;
    if (box.unattended)
        answerUnattended(window, watch, *box.unattended);
    {
        const EventLoop::Hold hold(events_);
        window.exec();
    }
    endIfAsked();
    // A link dialog was the action's first error: what fails behind its Retry is told in the band.
    const auto toldBy = [this](Choice choice) {
        if (choice == Choice::Retry)
            (void)isFurther();
        return choice;
    };
    const auto* clicked = window.clickedButton();
    if (abort != nullptr && clicked == abort) {
        (void)activities_->abort();
        return toldBy(Choice::Retry);
    }
    for (const Choice choice : box.buttons)
        if (clicked != nullptr && window.standardButton(window.clickedButton()) == standardButton(choice))
            return toldBy(choice);
    return toldBy(harmless);
}

QStringList nameFilters(const QString& filter) {
    static const QRegularExpression kPatternInName(R"(\s*\([^()]*\)\s*$)");
    const QStringList parts = filter.split('|', Qt::SkipEmptyParts);
    QStringList filters;
    for (int at = 0; at + 1 < parts.size(); at += 2) {
        QStringList patterns = parts[at + 1].split(';', Qt::SkipEmptyParts);
        for (QString& pattern : patterns)
            if (pattern == "*.*")
                pattern = "*"; // a file without a dot is a file too
        QString name = parts[at].trimmed();
        name.remove(kPatternInName);
        filters += name + " (" + patterns.join(' ') + ")";
    }
    return filters;
}

QSize roomOnScreen(const QWidget& window) {
    constexpr int kFrame = 32;
    return window.screen()->availableSize() - QSize(0, kFrame);
}

void fitToScreen(QDialog& dialog) {
    dialog.resize(dialog.sizeHint().boundedTo(roomOnScreen(dialog)));
}

std::optional<std::string> QtDialogs::chooseFile(const FileRequest& request) {
    endIfAsked();
    QFileDialog dialog(QApplication::activeWindow(), titleOf(request.title));
    dialog.setObjectName("fileDialog");
    // Ours in both directions, so that it looks and behaves the same wherever the bench runs.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    const bool save = request.mode == FileRequest::Mode::Save;
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    const QStringList filters = nameFilters(QString::fromStdString(request.filter));
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        dialog.selectNameFilter(filters.value(request.filterIndex - 1, filters.front()));
    }
    QString suffix = QString::fromStdString(request.defaultExtension);
    suffix.remove(QRegularExpression(R"(^\*?\.?)"));
    if (!suffix.isEmpty() && !suffix.contains('*'))
        dialog.setDefaultSuffix(suffix);
    if (!request.name.empty())
        dialog.selectFile(QString::fromStdString(request.name));
    else if (lastFolder)
        if (const QString folder = lastFolder(); !folder.isEmpty() && QFileInfo(folder).isDir())
            dialog.setDirectory(folder);
    fitToScreen(dialog);
    standing_ = &dialog;
    int result = QDialog::Rejected;
    {
        const EventLoop::Hold hold(events_);
        result = dialog.exec();
    }
    endIfAsked();
    const QStringList files = dialog.selectedFiles();
    if (result != QDialog::Accepted || files.isEmpty())
        return std::nullopt;
    if (folderUsed)
        folderUsed(QFileInfo(files.front()).absolutePath());
    return files.front().toStdString();
}

std::string QtClipboard::text() const {
    return QApplication::clipboard()->text().toStdString();
}

void QtClipboard::setText(const std::string& text) {
    QApplication::clipboard()->setText(QString::fromStdString(text));
}

} // namespace vrk::qt
