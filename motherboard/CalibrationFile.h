#pragma once

#include <array>
#include <filesystem>
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

    /// Fields are trimmed; a file that ends early leaves the rest as it was given in.
    /// \throws Fault if the file cannot be read.
    static CalibrationFile read(const std::filesystem::path& path, CalibrationFile before);
};

} // namespace vrk
