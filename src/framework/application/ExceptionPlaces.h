#pragma once

/// Numbers that tell the places apart where the application object catches exceptions; those of
/// platform/processes/ExceptionReport.h end below.
enum QNExceptionPlace : unsigned {
    kExceptionInOptions = 100,
    kExceptionInWillFinishLaunching = 101,
    kExceptionInWillFinishLaunchingNotification = 102,
    kExceptionInDidFinishLaunching = 103,
    kExceptionInDidFinishLaunchingNotification = 104,
    kExceptionInWillTerminateNotification = 105,
    kExceptionInWillTerminate = 106,
    kExceptionInTerminate = 107,
    kExceptionInEventLoop = 108,
    kExceptionInSignalObserver = 109,
    kExceptionInSignals = 110,
    kExceptionInEventHandler = 111,
    kExceptionInInterface = 112,
    kExceptionInLaunchStep = 113,
};
