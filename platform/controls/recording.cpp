#include "platform/controls/recording.h"

#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <cerrno>

namespace vrk {

void chooseRecording(const PanelContext& context, TextBox& path) {
    FileRequest request;
    request.mode = FileRequest::Mode::Save;
    request.title = "Select File For Recording";
    request.filter = "All Files (*.*)|*.*|KV880x Trace Files(*.txt)|*.txt";
    request.defaultExtension = "*.txt";
    const auto chosen = context.dialogs.chooseFile(request);
    if (chosen && !chosen->empty())
        path.setText(*chosen);
}

std::string recordingText(const PanelContext& context, const TextLog& log) {
    const WallTime now = context.clock().wallTime();
    const auto two = [](int value) { return (value < 10 ? "0" : "") + decimalText(value); };
    std::string content = "Trace File Data Acquisition " + decimalText(now.year) + "-" + two(now.month) +
                          "-" + two(now.day) + " " + two(now.hour) + ":" + two(now.minute) + "\r\n";
    content += log.text();
    // "END" has a line of its own, and no empty line before it where the text ended in a break.
    if (log.size() > 0 && !log.line(log.lineCount() - 1).empty())
        content += "\r\n";
    content += "END\r\n";
    return content;
}

bool saveRecording(const PanelContext& context, const TextLog& log, const std::string& path, bool append) {
    const std::string content = recordingText(context, log);
    try {
        if (path.empty())
            throw fileFault("write", "", ENOENT);
        const auto file = context.workingFolder / path;
        if (append)
            appendFile(file, content);
        else
            replaceFile(file, content);
        return true;
    } catch (const Fault& fault) {
        context.say(fault.what());
        return false;
    }
}

} // namespace vrk
