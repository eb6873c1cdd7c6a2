#include "views/replayDifference.h"

#include "platform/runtime/text.h"

#include <QMessageBox>

#include <algorithm>

namespace vrk {

namespace {

constexpr std::size_t kBytesALine = 16;

/// Up to 16 bytes from `from`; those that are not in the other report stand out.
QString bytesLine(const hid::Report& report, const hid::Report* other, std::size_t from) {
    QString line;
    for (std::size_t byte = from; byte < std::min(from + kBytesALine, report.size()); ++byte) {
        const QString text = QString::fromStdString(byteToHex2(report.at(byte)));
        const bool differs = other != nullptr && other->at(byte) != report.at(byte);
        line += differs ? " <b><u>" + text + "</u></b>" : " " + text;
    }
    return line;
}

QString bytesTable(const hid::ReplayHost::Difference& difference) {
    const hid::Report* recorded = difference.recorded ? &*difference.recorded : nullptr;
    QString table = "<pre>";
    for (std::size_t from = 0; from < difference.sent.size(); from += kBytesALine) {
        const QString number = QString::fromStdString(byteToHex2(static_cast<std::uint8_t>(from)));
        if (recorded != nullptr)
            table +=
                number + "  recorded " + bytesLine(*recorded, &difference.sent, from) + "\n    sent     ";
        else
            table += number + "  sent     ";
        table += bytesLine(difference.sent, recorded, from) + "\n";
    }
    return table + "</pre>";
}

} // namespace

void showReplayDifference(const hid::ReplayHost::Difference& difference) {
    const QString whole = QString::fromStdString(difference.text);
    auto* box = new QMessageBox(QMessageBox::Information, "Replay",
                                "The replay has ended. " + whole.section('\n', 0, 0), QMessageBox::Ok);
    box->setObjectName("replayDifference");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(bytesTable(difference));
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->open();
}

} // namespace vrk
