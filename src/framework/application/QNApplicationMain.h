#pragma once

#include "framework/application/ApplicationClasses.h"

/// What a program's main() calls, and whose answer it returns. Keeps the arguments, makes the
/// application object, of the class "QNGUIApplication" if no factory is given, and hands over to
/// its main(). An application object that was looked up by name is not the current one: the one
/// that the interface makes becomes that. Answers 22 when there is no such class.
int QNApplicationMain(const ApplicationClasses::Factory& factory, int argc, char** argv);
