#pragma once

#include <pthread.h>

namespace QN::async {

/// How the pool starts its threads: pthread_create(3) with default attributes, or what a test puts
/// in its place to have it fail. Answers 0 or an error number.
using ThreadStarter = int (*)(pthread_t* thread, void* (*body)(void*), void* argument);

int startThread(pthread_t* thread, void* (*body)(void*), void* argument);

/// Installs `starter` (null: the real one again) and answers the previous one.
ThreadStarter replaceThreadStarter(ThreadStarter starter) noexcept;

} // namespace QN::async
