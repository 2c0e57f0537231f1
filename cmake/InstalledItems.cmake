# What is installed for all users: the one list, of which the bundle's manifest, the application's
# controller and TNInstaller are made.

set(TONVALE_LOCAL_LIBRARY "/Library" CACHE STRING
    "The folder for what all users share; the environment variable of that name moves it")
set(TONVALE_LOCAL_APPLICATIONS "/opt" CACHE STRING
    "The folder of all users' applications; the environment variable of that name moves it")
set(TONVALE_PLUGIN_IN_BUNDLE "Contents/PlugIns/Tonvale.plugin")
set(TONVALE_PLUGIN_IN_LIBRARY "Audio/Plug-Ins/HAL/Tonvale.plugin")
set(TONVALE_INSTALLED_ITEMS
    "TONVALE_PLUGIN_IN_BUNDLE=\"${TONVALE_PLUGIN_IN_BUNDLE}\""
    "TONVALE_PLUGIN_IN_LIBRARY=\"${TONVALE_PLUGIN_IN_LIBRARY}\"")

configure_file("${CMAKE_SOURCE_DIR}/resources/BOM.plist.in"
    "${TONVALE_CONTENTS_DIR}/Resources/BOM.plist" @ONLY)
