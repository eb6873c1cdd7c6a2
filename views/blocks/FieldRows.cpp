#include "views/blocks/FieldRows.h"

#include "platform/controls/controls.h"
#include "platform/files/RegisterMapFile.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

QString shown(const RegisterField& field, int word) {
    const int value = field.valueIn(word);
    const FieldChoice* choice = field.choiceOf(value);
    return words(choice != nullptr ? choice->name : hexText(value, (field.bitWidth + 3) / 4) + " hex");
}

QString bitsOf(const RegisterField& field) {
    const int last = field.bitOffset + field.bitWidth - 1;
    return field.bitWidth == 1 ? QString("bit %1").arg(last)
                               : QString("bits %1 to %2").arg(last).arg(field.bitOffset);
}

} // namespace

FieldRows::FieldRows(PageUi& page, Byte byte) : byte_(std::move(byte)) {
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(dp(kUnit / 2));
    rebuild();
    for (Control* control :
         std::initializer_list<Control*>{&byte_.product, &byte_.address, byte_.readAddress})
        if (control != nullptr)
            page.ui().watch(*control, [this] { follow(); });
    for (Control* control : std::initializer_list<Control*>{&byte_.toWrite, &byte_.asRead})
        page.ui().watch(*control, [this] { show(); });
}

namespace {
std::optional<int> numberIn(const TextBox& box) {
    const std::string& text = box.text();
    if (text.empty() || text.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
        return std::nullopt; // "NA"
    return hexToInt(text);
}

const PartRegister* commandedBy(const RegisterMap& map, int PartRegister::*command,
                                std::optional<int> number) {
    const auto found = std::find_if(map.registers.begin(), map.registers.end(),
                                    [&](const PartRegister& one) { return one.*command == number; });
    return found == map.registers.end() ? nullptr : &*found;
}
} // namespace

const PartRegister* FieldRows::writtenRegister() const {
    const std::optional<int> number = numberIn(byte_.address);
    if (!map_ || !number)
        return nullptr;
    return map_->bus == PartBus::SPI ? commandedBy(*map_, &PartRegister::writeCommand, number)
                                     : map_->at(*number);
}

const PartRegister* FieldRows::readRegister() const {
    if (byte_.readAddress == nullptr)
        return writtenRegister();
    const std::optional<int> number = numberIn(*byte_.readAddress);
    return map_ && number ? commandedBy(*map_, &PartRegister::readCommand, number) : nullptr;
}

void FieldRows::follow() {
    const std::string other = byte_.readAddress != nullptr ? byte_.readAddress->text() : "";
    if (product_ == byte_.product.caption() && addresses_ == byte_.address.text() + "/" + other)
        return;
    addresses_ = byte_.address.text() + "/" + other;
    rebuild();
}

void FieldRows::rebuild() {
    if (product_ != byte_.product.caption()) {
        product_ = byte_.product.caption();
        try {
            map_ = shippedRegisterMap(product_);
        } catch (const Fault&) {
            map_.reset(); // a map that somebody has spoilt hides its names, and nothing else
        }
    }
    refreshes_.clear();
    while (QLayoutItem* item = layout()->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const PartRegister* const source = readRegister();
    const PartRegister* const target = writtenRegister();
    const PartRegister* const reg = target != nullptr ? target : source;
    setShown(*this, reg != nullptr && !reg->fields.empty());
    if (reg == nullptr)
        return;
    for (const RegisterField& field : reg->fields) {
        auto* read = new ToneLabel;
        read->setObjectName(words("read." + reg->name + "." + field.name));
        read->setAccessibleName(words(field.name) + ", as read");
        QWidget* written = nullptr;
        if (target == nullptr) {
            written = new QWidget; // the part's map knows no such command to write
        } else if (field.choices.empty()) {
            auto* value = quietText({});
            written = value;
            refreshes_.emplace_back(
                [this, value, &field] { value->setText(shown(field, hexToInt(byte_.toWrite.text()))); });
        } else {
            auto* choices = new QComboBox;
            for (const FieldChoice& choice : field.choices)
                choices->addItem(words(choice.name), choice.value);
            choices->setAccessibleName(words(field.name) + ", to write");
            written = choices;
            connect(choices, &QComboBox::activated, this,
                    [this, choices, &field](int row) { choose(field, choices->itemData(row).toInt()); });
            refreshes_.emplace_back([this, choices, &field] {
                choices->setCurrentIndex(choices->findData(field.valueIn(hexToInt(byte_.toWrite.text()))));
                choices->setEnabled(byte_.toWrite.responsive());
            });
        }
        written->setObjectName(words("field." + reg->name + "." + field.name));
        refreshes_.emplace_back([this, read, &field, same = source == reg] {
            const auto& worth = byte_.asRead.freshness();
            const Freshness::State state = worth && same ? worth->state : Freshness::State::Never;
            read->setText(state == Freshness::State::Never ? QString(kNeverRead)
                                                           : shown(field, hexToInt(byte_.readText())));
            read->setTone(state == Freshness::State::Fresh ? Tone::Plain : Tone::Stale);
        });
        auto* line = qt::block(row({columnLabel(words(field.name), written), written, stretch, read}));
        line->setToolTip(bitsOf(field));
        layout()->addWidget(line);
    }
    orderTabs();
    show();
}

/// Made behind all else of the window, they would come last on the Tab key's way.
void FieldRows::orderTabs() {
    QWidget* before = previousInFocusChain();
    while (before != this && (before->focusPolicy() & Qt::TabFocus) == 0)
        before = before->previousInFocusChain();
    for (QComboBox* choices : findChildren<QComboBox*>())
        if (before != this && before->window() == choices->window()) {
            setTabOrder(before, choices);
            before = choices;
        }
}

void FieldRows::show() {
    for (const auto& refresh : refreshes_)
        refresh();
}

void FieldRows::choose(const RegisterField& field, int value) {
    const int byte = field.put(hexToInt(byte_.toWrite.text()), value);
    TextBox& box = byte_.toWrite;
    // As a hand would: the byte is typed over the one that stands there.
    if (box.userType(hexText(byte, 2), [&box] { (void)box.userEnter(); }).refused())
        show();
}

} // namespace vrk
