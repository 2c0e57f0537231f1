#include "platform/authorization/AuthorizationReason.h"

#include "platform/text/Texts.h"

namespace platform {

QString authorizationReason(PrivilegedTool::Answer answer) {
    using Answer = PrivilegedTool::Answer;
    switch (answer) {
    case Answer::granted:
    case Answer::cancelled:
        return {};
    case Answer::noPkexec:
        return Texts::tr("The program that asks for an administrator's password is "
                         "missing. Please install the package \"pkexec\".");
    case Answer::noPolkit:
        return Texts::tr(
            "The service that checks an administrator's password does not answer. Please make sure "
            "that the package \"polkitd\" is installed.");
    case Answer::noAgent:
        return Texts::tr(
            "No program in this session can ask for an administrator's password. Please install "
            "one, for example the package \"mate-polkit\", and log in again.");
    case Answer::notAuthorized:
        return Texts::tr("You are not authorized to change what all users of this "
                         "computer share.");
    case Answer::failed:
        return Texts::tr("The tool that does this as an administrator cannot run.");
    }
    return {};
}

} // namespace platform
