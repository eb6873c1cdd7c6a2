#pragma once

#include "link/Trace.h"
#include "link/reportLayout.h"
#include "platform/controls/Panel.h"
#include "platform/hid/HidHost.h"
#include "platform/runtime/Signal.h"
#include "platform/runtime/text.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vrk {

/// What the link needs of the panel in front. A panel without such a lamp leaves it out.
class ActivePanel {
  public:
    virtual ~ActivePanel() = default;
    virtual Lamp* attachLamp() { return nullptr; }
    virtual Lamp* transferLamp() { return nullptr; }
};

/// Results of an exchange. Panels and scripts see the numbers.
enum LinkStatus : int {
    kLinkNotWritten = 0,  ///< checkStatus() only: the write failed
    kLinkError = 1,       ///< the firmware reports a failed bus transaction
    kLinkReadFailed = 2,  ///< no reply within 6000 ms
    kLinkWriteFailed = 4, ///< the device did not take the report
    kLinkGood = 8
};

/// The way to the board: finds every evaluation board, opens two handles on each, keeps the one report
/// buffer, judges each exchange and runs the dialogs for a lost link. Knows nothing of what a command means.
///
/// An exchange runs to its end without letting events run; the buffer and the handles are safe for that
/// reason alone.
class modHID {
  public:
    static constexpr Milliseconds kReplyTimeout{6000};
    static constexpr Milliseconds kPurgeStep{1};
    /// Behind a time-out the last reply of a discovery may still be on its way; it comes within a few
    /// milliseconds.
    static constexpr Milliseconds kSettle{20};
    /// Four times what the operating system keeps for a handle: a device that has more to say never stops.
    static constexpr int kMostStale = 256;

    modHID(PanelContext& context, hid::HidHost& host, Trace& trace);
    ~modHID();
    modHID(const modHID&) = delete;
    modHID& operator=(const modHID&) = delete;

    /// Every command is built here and every reply lands here, over the top of the command.
    hid::Report reportBuffer{};
    /// The current board's handles: writes go through the first, reads through the second, which alone may be
    /// cancelled when a reply is late.
    hid::Handle hidHandle = 0;
    hid::Handle hidOverlappedHandle = 0;
    /// One pair for each board; a single 0 while there is none.
    std::vector<hid::Handle> hidHandles{0};
    std::vector<hid::Handle> hidOverlappedHandles{0};

    bool BoardConnected = false;
    int msgResult = 0;   ///< of the last link dialog: 1 OK, 2 Cancel, 4 Retry, 6 Yes, 7 No
    int i2cStatus = 0;   ///< of the last reply judged: 8 or 1
    int hidLinkCode = 0; ///< 0 after a reply, 1 after a reply that did not come, 4 after a failed write
    bool linkOk = false; ///< of the services that show no dialog
    /// Even 8-bit slave address of every transaction.
    std::uint8_t i2cAddress = 0;
    /// True while the program itself sets the console's boxes, so that their clicks send nothing.
    bool suppressControlEvents = false;
    ActivePanel* activePanel = nullptr;

    /// Discovery: opens every board, makes instance 0 the current one and has its state read. Also what
    /// Reconnect and Retry do. \throws ProgramEnded when the user gives up, but not during a QuietStart,
    /// which leaves the link without a board.
    void initHIDConnection();
    /// How often the user has answered Retry since the start. A reading that finds it changed has been taken
    /// again, or will be, by Retry's discovery, and ends.
    unsigned retries() const { return retries_; }
    /// How many reports no board has taken since the start. Most of them end in no dialog.
    unsigned refusals() const { return refusals_; }
    void closeHIDHandles() noexcept;
    /// Makes a board of the arrays the current one. \throws Fault "Subscript out of range"
    void selectInstance(int instance);
    int instance() const { return instance_; }

    void fillReportBuffer(std::uint8_t value);
    void setReportID() { reportBuffer[report::kIdByte] = report::kReportId; }
    /// Drains stale replies, at most kMostStale of them. Costs 1 ms when there are none; a board that is gone
    /// ends it at once. The buffer is left as it was where nothing came.
    void purgeInputReports();
    /// Writes the buffer to the current board. A reply that is overdue is drained first, so that it cannot
    /// pass for the answer to this report.
    bool writeReport();
    /// Waits for the reply of an I2C transfer and judges it. \return 8, 1 or 2.
    int awaitInputReport();
    /// Waits for the reply of any other command. A missing one brings the link dialog; the buffer is then as
    /// the dialog left it, which after Retry is the last reply of the discovery. \return true if a reply
    /// came.
    bool readReply();
    /// Judges a write: 8, or 0 after the link dialog. The command is not sent again.
    int checkStatus(bool written);
    /// The dialog for status 2 or 4, and for status 1 unless it is to be quiet.
    void reportLinkError(int status, int quietAddressError);

    /// One I2C transaction without dialogs. \param address even. \param data one element for each byte
    /// wanted. \return 8, 1, 2 or 4; the data are set only by 8. \throws Fault "Subscript out of range" when
    /// the request does not fit the report; nothing is sent then.
    int readI2COnce(std::uint8_t address, std::span<std::uint8_t> data,
                    std::span<const std::uint8_t> registers);
    int writeI2COnce(std::uint8_t address, std::span<const std::uint8_t> data,
                     std::span<const std::uint8_t> registers);
    /// I2C transactions so far, good or not, and the status of the last: what a lamp beside a button goes by.
    unsigned transfers() const { return transfers_; }
    int lastTransfer() const { return lastTransfer_; }
    /// With dialogs, repeated for as long as the user answers Retry. \param quietAddressError not 0: status 1
    /// shows no dialog.
    int readI2C(std::uint8_t address, std::span<std::uint8_t> data, std::span<const std::uint8_t> registers,
                int quietAddressError);
    int writeI2C(std::uint8_t address, std::span<const std::uint8_t> data,
                 std::span<const std::uint8_t> registers, int quietAddressError);

    /// For each byte two hexadecimal digits and a blank.
    std::string bytesToHexString(int start, int length) const;

    /// A report that the board took. Where the bus answers for it, in an I2C transfer, only once that is
    /// known. \param status 8, or of an I2C transfer 1 or 2. What observes must neither exchange nor pump.
    [[nodiscard]] Subscription observeSent(std::function<void(const hid::Report&, int status)> observer) {
        return sent_.connect(std::move(observer));
    }

    /// Nobody may be there: the link dialogs answer Retry by themselves once a board has been back for 10 s.
    void setUnattended(bool unattended) { unattended_ = unattended; }
    bool unattended() const { return unattended_; }

    /// Called after a discovery that found a board: the console lists the instances.
    void setBoardsListed(std::function<void()> handler) { boardsListed_ = std::move(handler); }
    /// Called when the user gives the link up: ends the program.
    void setGiveUp(std::function<void()> handler) { giveUp_ = std::move(handler); }

    /// While it exists, Cancel in the dialog for a missing board does not end the program: from then on every
    /// exchange fails without a word. The start panel loads the consoles under it and then gives its own
    /// warning.
    class QuietStart {
      public:
        explicit QuietStart(modHID& link) : link_(link) { link_.quietStart_ = true; }
        ~QuietStart() { link_.quietStart_ = false; }
        QuietStart(const QuietStart&) = delete;
        QuietStart& operator=(const QuietStart&) = delete;

      private:
        modHID& link_;
    };

    /// What a status line shows of the link.
    enum class Health {
        Unknown,  ///< no discovery yet
        Attached, ///< the last exchange went well
        Silent,   ///< the last reply did not come
        Gone      ///< no board, or it went away under an exchange
    };
    Health health() const { return health_; }
    /// Boards of the last discovery.
    int boardCount() const { return hidHandles.front() == 0 ? 0 : static_cast<int>(hidHandles.size()); }
    /// The health or the instance has changed.
    [[nodiscard]] Subscription observe(std::function<void()> observer) {
        return changed_.connect(std::move(observer));
    }
    /// A discovery found a board.
    [[nodiscard]] Subscription observeAttached(std::function<void()> observer) {
        return attached_.connect(std::move(observer));
    }

    /// A board is there as far as is known: one was found, and nothing has been sent to it in vain since. One
    /// that does not reply counts.
    bool attached() const { return health_ == Health::Attached || health_ == Health::Silent; }

    /// The console has read a board's state whole: whoever shows what the board does follows it now.
    void tellBoardRead() { boardRead_.emit(); }
    [[nodiscard]] Subscription observeBoardRead(std::function<void()> observer) {
        return boardRead_.connect(std::move(observer));
    }

  private:
    /// The reading of the boards' state that a discovery ends with. A link dialog in it must not start
    /// another discovery inside this one: a user may answer Retry any number of times.
    struct Discovery {
        bool reading = false;
        int depth = 0; ///< of the action that reads: another one, which runs meanwhile, is not part of it
        bool again = false; ///< the user has answered Retry
    };

    hid::ReadResult readReport(hid::Report& report, Milliseconds timeout);
    int drain(hid::Report& into, Milliseconds firstStep);
    void drainLate(Milliseconds firstStep);
    void noteNoReply(hid::ReadResult result);
    void tellFailed(const std::string& what) const;
    bool findBoards();
    bool openBoards();
    void readBoards();
    void retry();
    int transferEnded(int status);
    Choice askRetry(const std::string& text, MessageBox::Escape escape = MessageBox::Escape::Stays);
    void setHealth(Health health);
    bool boardListed() const;
    bool failsQuietly() const { return quietStart_ && !BoardConnected; }

    PanelContext& context_;
    hid::HidHost& host_;
    Trace& trace_;
    int instance_ = 0;
    bool quietStart_ = false;
    bool unattended_ = false;
    Discovery discovery_;
    unsigned retries_ = 0;
    unsigned refusals_ = 0;
    int overdue_ = 0;          ///< replies that did not come in time and may still come
    std::uint8_t request_ = 0; ///< command of the last report written
    hid::Report transfer_{};   ///< the last I2C transfer, as its reply lands over it
    int drained_ = 0;          ///< stale reports since the readings of a discovery began
    bool flooded_ = false;     ///< the user has been told that the device never stops sending
    unsigned transfers_ = 0;
    int lastTransfer_ = 0;
    Health health_ = Health::Unknown;
    std::function<void()> boardsListed_;
    std::function<void()> giveUp_;
    Signal<> changed_;
    Signal<> attached_;
    Signal<> boardRead_;
    Signal<const hid::Report&, int> sent_;
};

/// Cuts a text at each delimiter into `fields`, which is blanked first; stops when the fields are full. The
/// delimiter is appended to the text. \return the index of the last field stored, 0 if the text is empty.
int splitFields(std::string& text, std::span<std::string> fields, char delimiter);

} // namespace vrk
