# The database generator tool and the template databases made with it at build time.
add_executable(helptext-mkdb ${CMAKE_CURRENT_LIST_DIR}/tools/mkdb.cpp)
target_link_libraries(helptext-mkdb PRIVATE helptext_database)
add_executable(helptext-mkjet ${CMAKE_CURRENT_LIST_DIR}/tools/mkjet.cpp)
target_link_libraries(helptext-mkjet PRIVATE helptext_database)

set(HELPTEXT_SCHEMA_DIR ${CMAKE_CURRENT_LIST_DIR}/schema)
set(_helptext_base ${HELPTEXT_SCHEMA_DIR}/helptext.sql)
set(_helptext_mc ${HELPTEXT_SCHEMA_DIR}/helptext_materialchange.sql)
set(_out ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

# The importer's two templates: Access (Jet 4) files, as the operator panel reads
# them, made from the Access-made empty file by the program's own builder out of
# the SQLite schema, with its keys. They hold no language: an import creates its
# language with the language-definition database's number, so no template can
# disagree with the definitions in use.
set(_helptext_empty ${HELPTEXT_SCHEMA_DIR}/empty.mdb)
foreach(_variant Mit Ohne)
  set(_template ${_out}/HelpText${_variant}Materialchange.mdb)
  set(_source ${CMAKE_CURRENT_BINARY_DIR}/HelpText${_variant}Materialchange.sqlite)
  set(_scripts ${_helptext_base})
  if(_variant STREQUAL "Mit")
    list(APPEND _scripts ${_helptext_mc})
  endif()
  add_custom_command(
    OUTPUT ${_template}
    COMMAND ${CMAKE_COMMAND} -E rm -f ${_template} ${_source}
    COMMAND helptext-mkdb ${_source} ${_scripts}
    COMMAND helptext-mkjet ${_template} ${_helptext_empty} ${_source}
    COMMAND ${CMAKE_COMMAND} -E rm -f ${_source}
    DEPENDS helptext-mkdb helptext-mkjet ${_scripts} ${_helptext_empty}
    COMMENT "Making the Access template database HelpText${_variant}Materialchange.mdb"
    VERBATIM)
endforeach()
add_custom_target(helptext_templates ALL
  DEPENDS ${_out}/HelpTextMitMaterialchange.mdb ${_out}/HelpTextOhneMaterialchange.mdb)

# The database tests run the tool and read the templates it made.
function(_helptext_database_test_dependencies)
  if(TARGET test_database)
    add_dependencies(test_database helptext-mkdb helptext-mkjet helptext_templates)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL _helptext_database_test_dependencies)

# The Jet 4 page code lives in its own folder of the database layer.
file(GLOB _jet_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/jet/*.cpp ${CMAKE_CURRENT_LIST_DIR}/jet/*.h)
target_sources(helptext_database PRIVATE ${_jet_sources})
