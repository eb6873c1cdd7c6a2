#include "tests/motherboard/MotherboardBench.h"

#include "platform/files/files.h"

#include <deque>
#include <map>
#include <thread>

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// A supply whose readings a test gives, code by code; where it gives none, a straight line.
class FakeRig final : public CalibrationRig {
  public:
    std::map<int, std::deque<double>> readings; ///< the last one repeats
    std::map<int, int> lost;                    ///< at which code how many measurements lose the link
    int abortAt = -1;
    int disturbedAt = -1;
    int recovered = 0;
    int pumps = 0;

    void setCode(int code) override {
        code_ = code;
        if (lost[code] > 0 && lost[code]-- > 0)
            ++losses_;
    }
    double convert() override {
        if (!readings.contains(code_))
            return 0.6 + 0.0165 * code_;
        auto& left = readings[code_];
        const double volts = left.front();
        if (left.size() > 1)
            left.pop_front();
        return volts;
    }
    unsigned losses() const override { return losses_; }
    void recover() override { ++recovered; }
    bool undisturbed(int code) const override { return code != disturbedAt; }
    bool aborted() const override { return abortAt >= 0 && code_ >= abortAt; }
    void letEventsRun() override { ++pumps; }

    CalibrationEnd sweep() {
        points.clear();
        code_ = -1;
        return CalibrationSweep(*this, [this](const CalibrationPoint& point) { points.push_back(point); })
            .run();
    }
    std::vector<CalibrationPoint> points;

  private:
    int code_ = -1;
    unsigned losses_ = 0;
};

TEST(CalibrationSweepTest, TakesACodeOnceTwoReadingsOfAPairAreEqual) {
    FakeRig rig;
    rig.readings[3] = {0.65, 0.66, 0.66, 0.67, 0.64, 0.64}; // equal ones of two pairs do not count
    rig.lost = {{5, 1}, {6, 9}};
    EXPECT_EQ(rig.sweep(), CalibrationEnd::Completed);
    ASSERT_EQ(rig.points.size(), 128U);
    EXPECT_EQ(rig.points[3].readings, 6);
    EXPECT_EQ(rig.points[3].volts, 0.64);
    EXPECT_EQ(rig.points[127].readings, 2);
    // A measurement across a loss is taken again, three times at most.
    EXPECT_TRUE(rig.points[5].read);
    EXPECT_FALSE(rig.points[6].read);
    EXPECT_EQ(rig.recovered, 1 + 2);

    FakeRig noisy;
    for (int reading = 0; reading < 1000; ++reading)
        noisy.readings[2].push_back(reading);
    EXPECT_EQ(noisy.sweep(), CalibrationEnd::Completed);
    EXPECT_EQ(noisy.points[2].readings, 400);
    EXPECT_EQ(noisy.points[2].volts, 399);
    EXPECT_FALSE(noisy.points[2].settled);
    EXPECT_EQ(noisy.pumps, 128 + 20); // while it does not settle Abort can be pressed
    noisy.readings[2].assign(2, 0);
    for (int reading = 0; reading < 1000; ++reading)
        noisy.readings[1].push_back(reading);
    noisy.abortAt = 1;
    EXPECT_EQ(noisy.sweep(), CalibrationEnd::Aborted);
    EXPECT_EQ(noisy.points.back().readings, 20); // and ends it
    rig.disturbedAt = 50;
    EXPECT_EQ(rig.sweep(), CalibrationEnd::Disturbed);
    EXPECT_EQ(rig.points.size(), 50U); // what was measured then is none of the supply's
}

TEST(CalibrationSweepTest, ChoosesTheClosestCodeAndSaysWhatSpeaksAgainstIt) {
    FakeRig rig;
    const auto says = [&rig] {
        (void)rig.sweep();
        std::string bad;
        for (const auto& finding : judgeCalibration(rig.points, chooseCodes(rig.points)))
            if (!finding.good)
                bad += finding.text + "\n";
        return bad;
    };
    EXPECT_EQ(says(), "");
    EXPECT_EQ(chooseCodes(rig.points)[0].code, 0x2D); // 1.3425 V; 2E is 1.3590 V
    rig.readings = {{0x2D, {1.36}}, {0x2E, {1.34}}};  // as far below as above: the lower code
    EXPECT_EQ(says(), "the curve falls at code 2E\n");
    EXPECT_EQ(chooseCodes(rig.points)[0].code, 0x2D);
    rig.readings.clear();
    for (int reading = 0; reading < 400; ++reading)
        rig.readings[9].push_back(0.75 + 0.00001 * reading);
    EXPECT_THAT(says(), HasSubstr("never two equal readings at code 09"));
    rig.readings.clear();
    rig.lost = {{1, 3}, {2, 3}, {3, 3}, {4, 3}, {5, 3}, {7, 3}};
    EXPECT_EQ(says(), "the board did not answer at codes 01, 02, 03, 04 and 2 more\n");
    for (int code = 0; code < 128; ++code)
        rig.readings[code] = {0.6 + 0.012 * code};
    EXPECT_EQ(says(), "no code comes close to 4.5, 5.0 V: the supply gives 1.20 to 4.25 V\n");
    EXPECT_EQ(chooseCodes(rig.points)[6].code, 0x7F);
    for (int code = 0; code < 128; ++code)
        rig.readings[code] = {0.01};
    EXPECT_EQ(says(), "the supply does not move: 0.020 to 0.020 V over all codes\n");
}

class CalibrationTest : public MotherboardBench {
  protected:
    FrmVCCCal& cal() { return *bench.FrmVCCCal; }
    std::filesystem::path file() { return folder.path() / "VRK_Cal_Data.txt"; }
    void open() {
        ASSERT_TRUE(bench.start().done());
        ASSERT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kCalibrate).done());
        ASSERT_TRUE(bench.FrmVCCCal.visible());
        wire.clear();
    }
    std::string result() { return bench.context().results.kept().back().text; }
    /// Which of Run, VREF, Read, Return, Save and Abort can be used.
    std::string usable() {
        std::string all;
        for (const Control* each :
             std::initializer_list<Control*>{&cal().cmdDoVCC_Cal, &cal().txtVrefCal, &cal().cdmRead_Cal_File,
                                             &cal().cmdReturn, &cal().cmdSaveCal, &cal().cmdAbort})
            all += each->enabled() ? '1' : '0';
        return all;
    }
    void expectEnded(const char* status, const char* controls, bool vccOn) {
        EXPECT_EQ(cal().lblCalStatus.caption(), status);
        EXPECT_EQ(usable(), controls);
        EXPECT_EQ(bus.state().vcc > 0, vccOn);
        EXPECT_EQ(cal().ShpVCCon.colour(), vccOn ? Colour::LightRed : Colour::Black);
        EXPECT_EQ(unlocked(), 13);
        EXPECT_FALSE(cal().running());
        EXPECT_TRUE(bench.context().activities.running().empty());
    }
};

TEST_F(CalibrationTest, SweepsSavesAndEveryPanelTakesItsLevelsFromTheFile) {
    open();
    EXPECT_EQ(usable(), "111100");
    std::string during;
    at(1000, [&] { during = usable() + cal().lblCalStatus.caption(); });
    const Milliseconds before = clock.now();
    ASSERT_TRUE(cal().cmdDoVCC_Cal.userClick().done());
    EXPECT_EQ(during, "000001Calibration in Process");
    EXPECT_GE((clock.now() - before).count(), 128 * 20);
    expectEnded("Completed", "111110", false);
    EXPECT_EQ(cal().rtxt1.lineCount(), 129U);
    EXPECT_EQ(cal().rtxt1.line(0x2C), "2C   ,  1.351613");
    EXPECT_EQ(cal().lblCalHex.caption() + " " + cal().lblCalVolts.caption(), "7F 2.712903");
    EXPECT_EQ(cal().lblCalVolts.freshness()->state, Freshness::State::Stale); // VCC has gone since
    EXPECT_TRUE(cal().sound());
    enter(cal().txtVrefCal, "abc");
    cal().cmdSaveCal.userClick();
    EXPECT_EQ(cal().lblCalStatus.caption(), "Cal File Updated");
    const std::string saved = readFile(file());
    EXPECT_EQ(saved, "VRK VCC Calibration 2020-01-01 12:00:05\r\nVREF , 3.3\r\n2.7,2C,1.3516,2.7032\r\n"
                     "3.0,35,1.4968,2.9935\r\n3.3,3E,1.6452,3.2903\r\n3.5,44,1.7452,3.4903\r\n"
                     "4.0,54,2.0065,4.0129\r\n4.5,63,2.2548,4.5097\r\n5.0,72,2.5000,5.0000\r\nEND\r\n");
    EXPECT_EQ(cal().txtVrefCal.text(), "3.3");
    EXPECT_EQ(std::get<std::int64_t>(value("CalRunning").get(kNoIndex)), 0);
    // Another program has put another file there: read by its button, and by each panel when it opens.
    replaceFile(file(), "Board 7\r\nVREF , 3.25\r\n2.75,2B,1.3,2.6" + saved.substr(saved.find("\r\n3.0,")));
    cal().cdmRead_Cal_File.userClick();
    EXPECT_EQ(cal().lblCalStatus.caption(), "Cal File Read");
    EXPECT_EQ(cal().blbTargetV[1].caption() + cal().lblTargetHex[1].caption() +
                  cal().lblTargetV[1].caption() + cal().lblTargetV[9].caption() + cal().txtVrefCal.text(),
              "2.752B1.32.63.25");
    EXPECT_EQ(number("VrefCal"), 3.25);
    EXPECT_EQ(number("ADRef"), 3.3);
    for (const int row : {frmStartup::kI2C, frmStartup::kSPI, frmStartup::kUpDown, frmStartup::kPushButton}) {
        (void)startup().cboVRKSelect.userSelect(row);
        DevicePanel& panel = *bench.devicePanel();
        SCOPED_TRACE(panel.name());
        EXPECT_EQ(panel.CboVCC.row(0).text, "2.75");
        panel.CboVCC.userSelect(0);
        panel.cmdUpdateVCC.userClick();
        EXPECT_EQ(bus.state().code, 0x2B);
        EXPECT_EQ(number("ADRef"), 3.25);
        panel.cmdMMenu.userClick();
    }
}

TEST_F(CalibrationTest, AbortLeavesVccAndNothingToSave) {
    open();
    int at50 = 0;
    const Subscription watch = cal().observeRuns([&](FrmVCCCal::Change change) {
        if (change == FrmVCCCal::Change::Measured && cal().lastRun().points.size() == 50)
            at(0, [&] { at50 += cal().cmdAbort.userClick().done() ? 1 : 0; });
    });
    cal().cmdDoVCC_Cal.userClick();
    EXPECT_EQ(at50, 1);
    EXPECT_EQ(cal().lastRun().points.size(), 50U);
    EXPECT_EQ(cal().lblTargetHex[1].caption() + cal().lblTargetHex[7].caption(), "----");
    expectEnded("Calibration Aborted", "111100", true);
    // Nothing is lost by a second run, and leaving switches off.
    cal().cmdDoVCC_Cal.userClick();
    cal().cmdReturn.userClick();
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_FALSE(bench.FrmVCCCal.visible());
    EXPECT_TRUE(bench.frmStartup.visible());
    EXPECT_FALSE(fileExists(file()));
}

TEST_F(CalibrationTest, VccIsOffBehindEverySweepWhateverTrackSays) {
    open();
    board().ChkTrack.userClick();
    cal().cmdDoVCC_Cal.userClick();
    expectEnded("Completed", "111110", false);
    EXPECT_TRUE(cal().sound());
    // The console tells of what it switches.
    board().OptVCC[0].userClick();
    EXPECT_EQ(cal().ShpVCCon.colour(), Colour::LightRed);
    EXPECT_FALSE(cal().sound());
    // A reference that the readings were not taken with.
    board().chkPData[21].setValue(0);
    board().cmdWrtPipe1.userClick();
    EXPECT_TRUE(cal().sound());
    enter(cal().txtVrefCal, "3.2");
    EXPECT_EQ(cal().findings().at(3).text, "measured with a reference of 3.3 V, but VREF Voltage is 3.2");
    cal().txtVrefCal.userFocus();
    enter(cal().txtVrefCal, "-3.3"); // taken as it is
    cal().txtVrefCal.userLeave();
    EXPECT_EQ(number("ADRef"), -3.3);
    EXPECT_EQ(result(), "VREF Voltage is not above 0");
}

TEST_F(CalibrationTest, LostLinkOtherPanelsAndBadBytesLeaveNothingBehind) {
    open();
    // A lost reply in the midst: the code is measured again.
    at(900, [this] { fault(sim::FaultKind::NoReply, 1, 17); });
    answer(Choice::Retry);
    cal().cmdDoVCC_Cal.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    expectEnded("Completed", "111110", false);
    EXPECT_TRUE(cal().sound());
    // The DAC's select is not taken, of which no box tells: it would be the code before that is measured.
    const Subscription watch = cal().observeRuns([this](FrmVCCCal::Change change) {
        if (change == FrmVCCCal::Change::Measured && cal().lastRun().points.size() == 20)
            fault(sim::FaultKind::WriteFails, 1, static_cast<int>(report::Command::SfrAccess));
    });
    cal().cmdDoVCC_Cal.userClick();
    const auto& points = cal().lastRun().points;
    ASSERT_EQ(points.size(), 128U);
    EXPECT_TRUE(points[20].read);
    EXPECT_GT(points[20].volts, points[19].volts);
    // The board comes back without power: nothing that was measured then counts.
    at(900, [this] { bus.unplug(0); });
    answer(Choice::Retry, [this] { bus.plug(0); });
    cal().cmdDoVCC_Cal.userClick();
    EXPECT_GE(boxes().size(), 1U);
    expectEnded("Calibration Aborted", "111100", false);
    EXPECT_THAT(result(), HasSubstr("Calibration ended at code"));
    // A panel that is opened meanwhile has the supply, and the file's fields.
    at(900, [this] { (void)startup().cboVRKSelect.userSelect(frmStartup::kI2C); });
    cal().cmdDoVCC_Cal.userClick();
    EXPECT_EQ(cal().lblCalStatus.caption(), "Calibration Aborted");
    EXPECT_EQ(bus.state().vcc, 0);
    (void)startup().cboVRKSelect.userSelect(frmStartup::kCalibrate);
    at(900, [this] { (void)board().Combo1.userSelect(0); }); // another channel, with VCC on
    cal().cmdDoVCC_Cal.userClick();
    expectEnded("Calibration Aborted", "111100", false);
    board().txtSPIwr[5].setText("100");
    EXPECT_EQ(cal().cmdDoVCC_Cal.userClick().fault, "Overflow");
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    expectEnded("Calibration Aborted", "111100", false);
}

TEST_F(CalibrationTest, FilesThatAreMissingShortOrCannotBeWritten) {
    open();
    cal().cdmRead_Cal_File.userClick();
    EXPECT_THAT(boxes(), ElementsAre(folder.path().string() +
                                     "\\VRK_Cal_Data2.txt ... VCC Calibration File does not exist [OK]"));
    EXPECT_EQ(cal().blbTargetV[7].caption() + cal().txtVrefCal.text(), "x.x---");
    cal().cmdDoVCC_Cal.userClick();
    EXPECT_TRUE(cal().sound()); // it would be saved as the built-in reference
    // The comma of a date puts all behind it one place off, and what is no reference leaves the scale.
    for (const auto& [content, wanted] :
         {std::pair{"T, 1/2/08\r\nVREF , 3.2\r\n2.7,2D,1.3,2.6\r\nEND\r\n", "T|VREF|3.2|2.7"},
          {"T 1/2/08\r\nVREF , 3.2\r\n2.7,2D,1.3,2.6\r\n3.0,36\r\nEND\r\n", "T 1/2/08|3.2|2.7|2D"},
          {"T\r\nVREF , 3.2\r\n2.7,2D,1.3,2.6\r\nEND\r\n", "T|3.2|2.7|2D"}}) {
        folder.write("VRK_Cal_Data.txt", content);
        cal().cdmRead_Cal_File.userClick();
        EXPECT_EQ(cal().lblCal_header.caption() + "|" + cal().txtVrefCal.text() + "|" +
                      cal().blbTargetV[1].caption() + "|" + cal().lblTargetHex[1].caption(),
                  wanted);
    }
    EXPECT_EQ(cal().blbTargetV[2].caption() + cal().lblTargetHex[2].caption(), "x.x--");
    EXPECT_EQ(cal().findings().at(3).text, "the table no longer shows what was measured");
    cal().txtVrefCal.userFocus();
    cal().txtVrefCal.userLeave();
    EXPECT_EQ(number("ADRef"), 3.2);
    cal().cmdDoVCC_Cal.userClick();
    std::filesystem::remove(file());
    std::filesystem::create_directory(file());
    cal().cmdSaveCal.userClick();
    EXPECT_THAT(cal().lblCalStatus.caption(), HasSubstr("Cal File not written: Cannot "));
    EXPECT_EQ(cal().lblCal_header.caption(), "T"); // still that of the file that was read
}

TEST(CalibrationFileTest, TwoProgramsThatSaveAtOnceLeaveOneWholeFile) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "VRK_Cal_Data.txt";
    const auto save = [&path](const std::string& mark) {
        CalibrationFile file;
        file.header = file.reference = mark;
        for (auto& row : file.rows)
            row = {mark, mark, mark, mark};
        for (int times = 0; times < 40; ++times)
            file.write(path);
    };
    std::thread one(save, "11");
    std::thread other(save, "22222222");
    one.join();
    other.join();
    const auto left = CalibrationFile::read(path, {});
    EXPECT_FALSE(left.header.empty());
    EXPECT_EQ(left.rows.back().vcc, left.header);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

} // namespace
} // namespace vrk
