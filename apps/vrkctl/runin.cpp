#include "apps/vrkctl/RunInJob.h"

namespace vrk {

ExitCode runRunIn(const Options& options, const RunInOptions& runIn) {
    return RunInJob(options, runIn, false).run();
}

ExitCode resumeRunIn(const Options& options, const RunInOptions& runIn) {
    return RunInJob(options, runIn, true).run();
}

} // namespace vrk
