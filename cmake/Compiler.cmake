# Language level, warnings, sanitizers and the compiler cache, the same for every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_compile_options(-Wthread-safety) # see platform/base/ThreadSafety.h
endif()

# Qt's signals, slots and emit are ordinary names here.
add_compile_definitions(QT_NO_KEYWORDS)

set(TONVALE_SANITIZE "" CACHE STRING "address (with undefined behaviour), thread, or empty")
set_property(CACHE TONVALE_SANITIZE PROPERTY STRINGS "" address thread)
if(TONVALE_SANITIZE STREQUAL "address")
    set(_sanitize -fsanitize=address,undefined -fno-sanitize-recover=undefined)
elseif(TONVALE_SANITIZE STREQUAL "thread")
    # GCC has no instrumentation for atomic_thread_fence and would warn about Qt's headers.
    set(_sanitize -fsanitize=thread $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
elseif(TONVALE_SANITIZE)
    message(FATAL_ERROR "TONVALE_SANITIZE is neither address nor thread: ${TONVALE_SANITIZE}")
endif()
if(TONVALE_SANITIZE)
    add_compile_options(${_sanitize} -O1 -fno-omit-frame-pointer)
    add_link_options(${_sanitize})
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE_PROGRAM}")
endif()
