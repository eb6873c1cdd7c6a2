#include "views/pages/homeCards.h"

#include "panels/i2c/i2cParts.h"
#include "panels/spi/spiParts.h"
#include "platform/qt/theme.h"
#include "shell/frmStartup.h"
#include "views/pages.h"
#include "views/pages/boxes.h"
#include "views/workspace/Page.h"

#include <QGridLayout>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <memory>

namespace vrk {

using namespace qt;

namespace {

constexpr int kCardsALine = 4;
constexpr int kOpenWidth = 72;
constexpr int kUpperHeight = 136; ///< the families have more to say than the procedures
constexpr int kLowerHeight = 120;

struct CardWords {
    const char* page;  ///< name in the table of pages
    const char* about; ///< parts, or what the procedure does
    const char* note;  ///< beside Open where no part decides
};
constexpr CardWords kCards[] = {
    {"I2C", "", ""},
    {"SPI", "", ""},
    {"Up/Down", "UPDN100, one or two", ""},
    {"Push Button", "PB64", ""},
    {"Instructions", "Q4410 on I2C, Q4420 on SPI", ""},
    {"Script", "replay, compare, report", "opens from I2C, SPI"},
    {"Run-in", "endurance of a stored position", "opens beside Up/Down"},
    {"Calibration", "Calibrate Device VCC Supply: seven levels", "take the part out first"},
};

/// "KV4071 · KV4074 · parameter file": from the menu's own table, so that the two cannot differ.
template <class Parts>
QString partNames(const Parts& parts) {
    QString text;
    for (const auto& part : parts)
        text += QString::fromLatin1(part.name.data(), static_cast<qsizetype>(part.name.size())) + " · ";
    return text + "parameter file";
}

QString aboutCard(const CardWords& words) {
    if (*words.about != '\0')
        return words.about;
    return QString(words.page) == "SPI" ? partNames(kSpiParts) : partNames(kI2cParts);
}

class SignWidget final : public QWidget {
  public:
    explicit SignWidget(Sign sign) : sign_(sign) { setFixedSize(dp(20), dp(20)); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawSign(painter, sign_, QRectF(rect()),
                 isEnabled() ? palette().color(QPalette::Highlight)
                             : palette().color(QPalette::Disabled, QPalette::WindowText));
    }

  private:
    Sign sign_;
};

struct Card {
    const PageRow* row = nullptr;
    QString about;
    QString note;
    BoxFrame* box = nullptr;
    LampWidget* lamp = nullptr;
    QLabel* words = nullptr;
    QPushButton* open = nullptr;
    bool fits = false;
};

/// The device in the socket is one of those that the card names.
bool names(const QString& about, const QString& part) {
    return std::any_of(part.cbegin(), part.cend(), [](QChar c) { return c.isLetter(); }) &&
           about.contains(part, Qt::CaseInsensitive);
}

Card makeCard(PageUi& page, frmStartup& p, const PageRow& row, const CardWords& words) {
    Card card{.row = &row, .about = aboutCard(words), .note = words.note};
    auto* sign = new SignWidget(row.sign);
    auto* name = heading(row.name, kNameScale);
    auto* about = quietText(card.about);
    about->setWordWrap(true);
    about->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    about->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    card.lamp = new LampWidget;
    card.lamp->setColour(Colour::LightGreen);
    card.lamp->setName("Part in the socket");
    card.words = elidedText(card.note);
    card.words->setObjectName("card.words." + QString(row.name));
    card.words->setForegroundRole(QPalette::PlaceholderText);
    card.open = new QPushButton("Open");
    card.open->setAutoDefault(false);
    card.open->setObjectName("open." + QString(row.name));
    card.open->setAccessibleName("Open " + QString(row.name));
    card.open->setMinimumWidth(dp(kOpenWidth));
    keepWithoutMnemonic(*card.open);
    QObject::connect(card.open, &QPushButton::clicked, &page, [&page, &p, &row] {
        if (row.startRow != 0)
            (void)p.cboVRKSelect.userSelect(row.startRow);
        else
            page.openPage(row.name);
    });
    auto* last = qt::row({card.lamp, card.words, card.open});
    last->setStretch(1, 1);
    card.box =
        new BoxFrame(column({qt::row({sign, name, stretch}), about, stretch, last}), BoxFrame::Ground::Base);
    card.box->setObjectName("card." + QString(row.name));
    card.box->setAccessibleName(row.name);
    card.lamp->hide();
    return card;
}

/// Which family the part in the socket belongs to, in words and by the accent.
void showSocket(std::vector<Card>& cards, const SocketView* socket) {
    if (socket == nullptr)
        return;
    const QString part = socket->state().part;
    for (Card& card : cards) {
        if (QString(card.row->group) != "Parts")
            continue;
        card.fits = names(card.about, part);
        setShown(*card.lamp, card.fits);
        card.words->setText(card.fits        ? "socket holds " + part
                            : part.isEmpty() ? QString("the socket is empty")
                                             : QString("other part in the socket"));
        card.box->setMarked(card.fits);
        makeAccent(*card.open, card.fits);
    }
}

} // namespace

HomePart makeHomeCards(PageUi& page, frmStartup& p) {
    const auto cards = std::make_shared<std::vector<Card>>();
    for (const PageRow& row : pageRows())
        for (const CardWords& words : kCards)
            if (QString(row.name) == words.page)
                cards->push_back(makeCard(page, p, row, words));
    auto* grid = new QGridLayout;
    grid->setSpacing(kUnit);
    int at = 0;
    for (const Card& card : *cards) {
        card.box->setMinimumHeight(dp(at < kCardsALine ? kUpperHeight : kLowerHeight));
        grid->addWidget(card.box, at / kCardsALine, at % kCardsALine);
        grid->setColumnStretch(at % kCardsALine, 1);
        ++at;
    }
    const auto show = [cards, socket = page.context().socket, &events = page.panel().context().events] {
        if (!events.held()) // the bus is at work on another thread
            showSocket(*cards, socket.get());
    };
    show();
    page.onWrite("Open the family of the part in the socket", [cards] {
        for (const Card& card : *cards)
            if (card.fits)
                return card.open->click();
    });
    for (const Card& card : *cards)
        if (card.fits || card.row == cards->front().row)
            page.setFirstFocus(card.open);
    return {block(grid), [show](const LinkWords&) { show(); }};
}

} // namespace vrk
