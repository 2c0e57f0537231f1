# The catalogues of resources/translations: compiled for the application's Qt, and as a table for
# what has no Qt. en_XA is no language: it shows which texts are translated, see make-pseudo.

set(_folder "${CMAKE_SOURCE_DIR}/resources/translations")
set(_made "${CMAKE_BINARY_DIR}/translations")
file(MAKE_DIRECTORY "${_made}" "${TONVALE_CONTENTS_DIR}/Resources/translations")
find_program(TONVALE_LRELEASE lrelease HINTS "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS}" REQUIRED)

set(_pseudo "${_made}/tonvale_en_XA.ts")
add_custom_command(OUTPUT "${_pseudo}"
    COMMAND "${_folder}/make-pseudo" "${_folder}/tonvale.ts" "${_pseudo}"
    DEPENDS "${_folder}/make-pseudo" "${_folder}/tonvale.ts"
    VERBATIM)

file(GLOB _catalogues CONFIGURE_DEPENDS "${_folder}/tonvale_*.ts")
list(APPEND _catalogues "${_pseudo}")
foreach(_catalogue IN LISTS _catalogues)
    get_filename_component(_name "${_catalogue}" NAME_WE)
    set(_compiled "${TONVALE_CONTENTS_DIR}/Resources/translations/${_name}.qm")
    add_custom_command(OUTPUT "${_compiled}"
        COMMAND "${TONVALE_LRELEASE}" -silent "${_catalogue}" -qm "${_compiled}"
        DEPENDS "${_catalogue}"
        VERBATIM)
    list(APPEND _all_compiled "${_compiled}")
    string(REPLACE "tonvale_" "" _language "${_name}")
    list(APPEND _named "${_language}=${_catalogue}")
endforeach()
add_custom_target(catalogues DEPENDS ${_all_compiled})

set(TONVALE_PLAIN_TEXT_TABLE "${_made}/PlainTextTable.cpp")
add_custom_command(OUTPUT "${TONVALE_PLAIN_TEXT_TABLE}"
    COMMAND "${_folder}/make-table" "${TONVALE_PLAIN_TEXT_TABLE}" ${_named}
    DEPENDS "${_folder}/make-table" ${_catalogues}
    VERBATIM)
add_custom_target(plain_text_table DEPENDS "${TONVALE_PLAIN_TEXT_TABLE}")
