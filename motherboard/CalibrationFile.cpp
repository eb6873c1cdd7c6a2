#include "motherboard/CalibrationFile.h"

#include "platform/files/SequentialInput.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"

namespace vrk {

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
    for (Row& row : before.rows)
        for (std::string* field : {&row.target, &row.hex, &row.volts, &row.vcc})
            take(*field);
    return before;
}

} // namespace vrk
