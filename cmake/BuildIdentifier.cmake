# TONVALE_BUILD_IDENTIFIER and TONVALE_BUILD_TIMESTAMP: the commit that is built, and its time in
# seconds since 1970. Empty outside a repository.

find_package(Git QUIET)
set(TONVALE_BUILD_IDENTIFIER "")
set(TONVALE_BUILD_TIMESTAMP "")
if(GIT_FOUND)
    execute_process(COMMAND "${GIT_EXECUTABLE}" log -1 "--format=%h;%ct"
        WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}"
        OUTPUT_VARIABLE _commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE _failed)
    if(NOT _failed)
        list(GET _commit 0 TONVALE_BUILD_IDENTIFIER)
        list(GET _commit 1 TONVALE_BUILD_TIMESTAMP)
    endif()
    # Each commit is a line of this file.
    execute_process(COMMAND "${GIT_EXECUTABLE}" rev-parse --git-path logs/HEAD
        WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}"
        OUTPUT_VARIABLE _log OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    get_filename_component(_log "${_log}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
    if(_log AND EXISTS "${_log}" AND NOT IS_DIRECTORY "${_log}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${_log}")
    endif()
endif()
