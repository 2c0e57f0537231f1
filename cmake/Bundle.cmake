# Where the parts of the relocatable bundle go:
#   Tonvale.app/Contents/{Info.plist,Linux/,Resources/,Helpers/,PlugIns/}

set(TONVALE_BUNDLE_DIR "${CMAKE_BINARY_DIR}/Tonvale.app" CACHE PATH "The bundle that the build fills")
set(TONVALE_CONTENTS_DIR "${TONVALE_BUNDLE_DIR}/Contents")
set(TONVALE_PLUGIN_CONTENTS_DIR "${TONVALE_CONTENTS_DIR}/PlugIns/Tonvale.plugin/Contents")

# Where support reports are sent: HOST or HOST:PORT. Names under ".invalid" stand for no server.
set(TONVALE_SUPPORT_SERVER "support.tonvale.invalid" CACHE STRING "The server for support reports")

# The page that the menu's "Recommend…" opens. Without one there is no such entry.
set(TONVALE_REFER_URL "" CACHE STRING "The page to recommend the application with")

# What people run carries no symbols: the plug-in is compared with the installed one at every start.
# They go beside the bundle; "gdb -s Tonvale.app.symbols/PROGRAM.debug PROGRAM" reads them.
option(TONVALE_STRIP "Move the symbols of the bundle's programs to a folder beside it" OFF)

# tonvale_strip(TARGET): a program or module of the bundle.
function(tonvale_strip target)
    if(NOT TONVALE_STRIP)
        return()
    endif()
    set(file "$<TARGET_FILE:${target}>")
    set(symbols "${TONVALE_BUNDLE_DIR}.symbols/$<TARGET_FILE_NAME:${target}>.debug")
    file(MAKE_DIRECTORY "${TONVALE_BUNDLE_DIR}.symbols")
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "${file}" "${symbols}"
        COMMAND "${CMAKE_OBJCOPY}" --strip-unneeded "--add-gnu-debuglink=${symbols}" "${file}"
        VERBATIM)
endfunction()

# tonvale_bundle_program(TARGET CONTENTS_DIR INFO_TEMPLATE OUTPUT_NAME): the program goes to
# CONTENTS_DIR/Linux, its filled-in property list to CONTENTS_DIR/Info.plist.
function(tonvale_bundle_program target contents info output)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME "${output}"
        RUNTIME_OUTPUT_DIRECTORY "${contents}/Linux")
    configure_file("${info}" "${contents}/Info.plist" @ONLY)
    tonvale_strip(${target})
endfunction()

# The images and sounds of the bundle, beside the scripts that make them.
file(MAKE_DIRECTORY "${TONVALE_CONTENTS_DIR}/Resources")
file(GLOB _resources CONFIGURE_DEPENDS
    "${CMAKE_SOURCE_DIR}/resources/images/*.svg" "${CMAKE_SOURCE_DIR}/resources/sounds/*.ogg")
foreach(_resource IN LISTS _resources)
    get_filename_component(_name "${_resource}" NAME)
    configure_file("${_resource}" "${TONVALE_CONTENTS_DIR}/Resources/${_name}" COPYONLY)
endforeach()
