#include "motherboard/CalibrationFile.h"

#include "motherboard/calibrationDamage.h"
#include "platform/files/SequentialInput.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vrk {

namespace {
constexpr const char* kTitle = "VRK VCC Calibration ";
constexpr const char* kReference = "VREF";
constexpr const char* kEnd = "END";

std::string digits(int value, std::size_t count) {
    std::string text = decimalText(value);
    return std::string(count - std::min(count, text.size()), '0') + text;
}
} // namespace

std::string CalibrationFile::headerAt(const WallTime& now) {
    return kTitle + digits(now.year, 4) + "-" + digits(now.month, 2) + "-" + digits(now.day, 2) + " " +
           digits(now.hour, 2) + ":" + digits(now.minute, 2) + ":" + digits(now.second, 2);
}

std::optional<double> CalibrationFile::volts(const std::string& reference) {
    if (!isNumeric(reference) || !(leadingNumber(reference) > 0) || std::isinf(leadingNumber(reference)))
        return std::nullopt;
    return leadingNumber(reference);
}

bool isSupplyCode(const std::string& hex) {
    const bool digits = hex.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
    return digits && !hex.empty() && hex.size() <= 2 && hexToByte(hex) <= 0x7F;
}

std::string calibrationDamage(const CalibrationFile& file) {
    for (const CalibrationFile::Row& row : file.rows)
        if (!isNumeric(row.target) || !isSupplyCode(row.hex))
            return "level '" + row.target + "' has the code '" + row.hex + "'";
    return {};
}

CalibrationFile CalibrationFile::read(const std::filesystem::path& path, CalibrationFile before) {
    const std::string content = readFile(path);
    SequentialInput input(content);
    const auto take = [&input](std::string& field) {
        if (const auto text = input.next())
            field = trimmed(*text);
    };
    take(before.header);
    std::string name; // "VREF", of no further use
    take(name);
    take(before.reference);
    for (Row& row : before.rows) {
        std::string target = row.target;
        take(target);
        if (target == kEnd) // a file with fewer rows
            break;
        row.target = target;
        for (std::string* field : {&row.hex, &row.volts, &row.vcc})
            take(*field);
    }
    return before;
}

std::string CalibrationFile::text() const {
    constexpr const char* kLineEnd = "\r\n";
    std::string text =
        sequentialField(header) + kLineEnd + kReference + " , " + sequentialField(reference) + kLineEnd;
    for (const Row& row : rows)
        text += sequentialField(row.target) + "," + sequentialField(row.hex) + "," +
                sequentialField(row.volts) + "," + sequentialField(row.vcc) + kLineEnd;
    return text + kEnd + kLineEnd;
}

void CalibrationFile::write(const std::filesystem::path& path) const {
    replaceFile(path, text());
}

} // namespace vrk
