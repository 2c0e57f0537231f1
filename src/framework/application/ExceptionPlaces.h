#pragma once

/// Numbers of the places where the framework catches exceptions; they follow those of
/// platform/base/ExceptionReport.h.
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
    kExceptionInInstallManifest = 114,
    kExceptionInLogViewer = 115,
    kExceptionInUploadProgress = 116,
    kExceptionInUploadCompletion = 117,
    kExceptionInSupportCollector = 118,
    kExceptionInSupportHandler = 119,
    kExceptionInSupportCallback = 120,
    kExceptionInMachineFacts = 121,
    kExceptionInRecommendation = 122,
    kExceptionInVolumeQuery = 123,
};
