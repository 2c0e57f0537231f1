#include "framework/application/QNApplicationMain.h"

#include "framework/application/QNApplication.h"

namespace {

constexpr int noSuchClass = 22;

} // namespace

int QNApplicationMain(const ApplicationClasses::Factory& factory, int argc, char** argv) {
    const auto make = factory ? factory : ApplicationClasses::find("QNGUIApplication");
    if (!make)
        return noSuchClass;
    QNApplication::setArguments(argumentTexts(argc, argv));
    const std::unique_ptr<QNApplication> application = make();
    if (!factory)
        QNApplication::setCurrent(nullptr);
    return application->main(argc, argv);
}
