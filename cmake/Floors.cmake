# The floors of the house, enforced. Every library publishes an include folder of its own that
# holds one link, FOLDER -> the source folder, so "platform/loop/RunLoop.h" is found only by a target
# that links a library of src/platform/loop. A file that reaches up a floor does not build.
#
#   tonvale_library(NAME FOLDER platform/loop SOURCES a.cpp b.cpp LINKS other libraries
#                   [PCH plain|qt|widgets|pipewire])
function(tonvale_library name)
    cmake_parse_arguments(ARG "" "FOLDER;PCH" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    tonvale_publish_includes(${name} ${ARG_FOLDER})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS})
    if(ARG_PCH)
        target_precompile_headers(${name} REUSE_FROM precompiled_${ARG_PCH})
    endif()
endfunction()

function(tonvale_publish_includes name folder)
    set(root "${CMAKE_BINARY_DIR}/include/${name}")
    file(REMOVE_RECURSE "${root}") # where an older layout of the tree has left its link
    get_filename_component(link_folder "${root}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${link_folder}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${root}/${folder}" SYMBOLIC)
    target_include_directories(${name} PUBLIC "${root}")
endfunction()

# Precompiled headers are made once for all libraries of a kind: what most of them include.
function(tonvale_precompile kind)
    cmake_parse_arguments(ARG "" "" "LINKS;HEADERS" ${ARGN})
    set(source "${CMAKE_BINARY_DIR}/precompiled/${kind}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "\n")
    add_library(precompiled_${kind} OBJECT "${source}")
    target_link_libraries(precompiled_${kind} PRIVATE ${ARG_LINKS})
    target_precompile_headers(precompiled_${kind} PRIVATE ${ARG_HEADERS})
endfunction()
