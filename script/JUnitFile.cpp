#include "script/JUnitFile.h"

#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "script/ScriptReports.h"

namespace vrk {

void JUnitFile::write() {
    replaceFile(path_, junitReport(results_));
}

void JUnitFile::tryWrite() {
    try {
        write();
        failed_ = false;
    } catch (const Fault& fault) {
        if (!failed_ && trouble_)
            trouble_(fault.what());
        failed_ = true;
    }
}

} // namespace vrk
