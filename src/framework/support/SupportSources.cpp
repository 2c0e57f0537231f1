#include "framework/support/SupportSources.h"

#include "framework/support/QNSupportUtils.h"

SupportSources SupportSources::ofTheSystem() {
    return {[] { return QNSupportUtils::allProcessNames(); }, &QNSupportUtils::systemProfile,
            [] { return QNSupportUtils::systemLogPath(); }, &QNSupportUtils::systemLogForProcesses,
            &QNSupportUtils::sampleProcess};
}
