#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QListView;
class QPushButton;

namespace vrk {

class ChannelBlock;
class PageUi;
class Readout;
class StoreBlock;
class WiperPanel;

namespace qt {
class AgeLabel;
class GroupWidget;
class KeyLineEdit;
class LampWidget;
class LevelBar;
class ThumbSlider;
} // namespace qt

/// One channel: what was read, as large as the place allows, and everything that reads and sets the wiper.
/// Upright it stands beside others; one channel alone is laid wide, the reading at the left.
class ChannelStrip final : public QWidget {
  public:
    ChannelStrip(PageUi& page, WiperPanel& panel, int channel);
    void setWide(bool wide);
    bool wide() const { return wide_; }
    /// True if the keyboard is on one of its fields.
    bool hasKeyboard() const;
    void focusEntry();
    QWidget* entry() const;
    /// Its fields in reading order.
    std::vector<QWidget*> tabOrder() const;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void makeRead(PageUi& page, ChannelBlock& block);
    void makeWrite(PageUi& page, ChannelBlock& block);
    QPushButton* stepButton(const QString& sign, int by, ChannelBlock& block);
    void makeStores(PageUi& page, StoreBlock& block);
    void watchOutcome(PageUi& page, ChannelBlock& block);
    void showReading(const ChannelBlock& block);
    void layOutRead();
    void layOutWrite();

    int channel_;
    bool wide_ = true;
    bool failed_ = false;
    QWidget* readBody_;
    QWidget* writeBody_;
    qt::GroupWidget* readHalf_;
    qt::GroupWidget* writeHalf_;
    QWidget* divider_;

    // Read
    QLabel* name_ = nullptr;
    QLabel* source_ = nullptr;
    QLabel* sourceWord_ = nullptr;
    Readout* readout_ = nullptr;
    qt::LevelBar* bar_ = nullptr;
    QWidget* scale_ = nullptr;
    qt::AgeLabel* age_ = nullptr;
    QPushButton* read_ = nullptr;
    qt::LampWidget* readLamp_ = nullptr;
    qt::LampWidget* headLamp_ = nullptr; ///< the same, beside the age of a wide strip
    QCheckBox* autoRead_ = nullptr;
    QPushButton* readVolts_ = nullptr;
    QLabel* factorWord_ = nullptr;
    qt::KeyLineEdit* factor_ = nullptr;

    // Write
    QLabel* writeWord_ = nullptr;
    QLabel* targetWord_ = nullptr;
    QLabel* target_ = nullptr;
    QPushButton* down_ = nullptr;
    qt::ThumbSlider* slider_ = nullptr;
    QPushButton* up_ = nullptr;
    QLabel* decimalWord_ = nullptr;
    qt::KeyLineEdit* decimal_ = nullptr;
    QLabel* hexWord_ = nullptr;
    qt::KeyLineEdit* hex_ = nullptr;
    QPushButton* write_ = nullptr;
    qt::LampWidget* writeLamp_ = nullptr;
    QLabel* differs_ = nullptr;
    QListView* list_ = nullptr;
    QLabel* hint_ = nullptr;
    QLabel* storesWord_ = nullptr;
    QLabel* stores_ = nullptr;
};

} // namespace vrk
