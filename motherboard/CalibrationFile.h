#pragma once

#include "platform/runtime/Clock.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>

namespace vrk {

/// The supply calibration of one motherboard: for each target the code whose measured VCC came closest.
struct CalibrationFile {
    static constexpr const char* kName = "VRK_Cal_Data.txt";
    static constexpr int kTargets = 7;

    struct Row {
        std::string target; ///< volts, "2.7"
        std::string hex;    ///< code, two hexadecimal digits
        std::string volts;  ///< measured at the pin, half of VCC
        std::string vcc;    ///< twice that
    };

    std::string header;    ///< first line: title, date and time
    std::string reference; ///< converter reference, volts
    std::array<Row, kTargets> rows;

    /// The first line of a file that is written now. Without a comma, at which a reader would cut it.
    static std::string headerAt(const WallTime& now);
    /// The reference as a number. Nothing if it is none above 0, which would take the converter's scale away.
    static std::optional<double> volts(const std::string& reference);

    /// Fields are trimmed; a file that ends early leaves the rest as it was given in.
    /// \throws Fault if the file cannot be read.
    static CalibrationFile read(const std::filesystem::path& path, CalibrationFile before);
    /// Lines end in CR LF.
    std::string text() const;
    /// Replaces the file whole or not at all. \throws Fault; the old file is then untouched.
    void write(const std::filesystem::path& path) const;
};

} // namespace vrk
