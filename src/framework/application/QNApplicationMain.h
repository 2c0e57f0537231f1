#pragma once

#include "framework/application/ApplicationClasses.h"

/// A program's main() calls this and returns its result. Stores the arguments, creates the
/// application object, of the class "QNGUIApplication" if no factory is given, and calls its
/// main(). An application object that was looked up by name does not become the current one: the
/// one that the interface creates does. Returns 22 if there is no such class.
int QNApplicationMain(const ApplicationClasses::Factory& factory, int argc, char** argv);
