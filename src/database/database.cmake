# The database generator tool and the template databases made with it at build time.
add_executable(helptext-mkdb ${CMAKE_CURRENT_LIST_DIR}/tools/mkdb.cpp)
target_link_libraries(helptext-mkdb PRIVATE helptext_database)
add_executable(helptext-mkjet ${CMAKE_CURRENT_LIST_DIR}/tools/mkjet.cpp)
target_link_libraries(helptext-mkjet PRIVATE helptext_database)

set(HELPTEXT_SCHEMA_DIR ${CMAKE_CURRENT_LIST_DIR}/schema)
set(_helptext_base ${HELPTEXT_SCHEMA_DIR}/helptext.sql)
set(_helptext_mc ${HELPTEXT_SCHEMA_DIR}/helptext_materialchange.sql)
set(_out ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

# The importer's two templates: SQLite files despite the historic names. They hold
# no language: an import creates its language with the language-definition
# database's number, so no template can disagree with the definitions in use.
add_custom_command(
  OUTPUT ${_out}/HelpTextMitMaterialchange.mdb
  COMMAND ${CMAKE_COMMAND} -E rm -f ${_out}/HelpTextMitMaterialchange.mdb
  COMMAND helptext-mkdb ${_out}/HelpTextMitMaterialchange.mdb ${_helptext_base} ${_helptext_mc}
  DEPENDS helptext-mkdb ${_helptext_base} ${_helptext_mc}
  COMMENT "Making the template database with material change"
  VERBATIM)
add_custom_command(
  OUTPUT ${_out}/HelpTextOhneMaterialchange.mdb
  COMMAND ${CMAKE_COMMAND} -E rm -f ${_out}/HelpTextOhneMaterialchange.mdb
  COMMAND helptext-mkdb ${_out}/HelpTextOhneMaterialchange.mdb ${_helptext_base}
  DEPENDS helptext-mkdb ${_helptext_base}
  COMMENT "Making the template database without material change"
  VERBATIM)
add_custom_target(helptext_templates ALL
  DEPENDS ${_out}/HelpTextMitMaterialchange.mdb ${_out}/HelpTextOhneMaterialchange.mdb)

# The database tests run the tool and read the templates it made.
function(_helptext_database_test_dependencies)
  if(TARGET test_database)
    add_dependencies(test_database helptext-mkdb helptext_templates)
  endif()
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL _helptext_database_test_dependencies)

# The Jet 4 page code lives in its own folder of the database layer.
file(GLOB _jet_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/jet/*.cpp ${CMAKE_CURRENT_LIST_DIR}/jet/*.h)
target_sources(helptext_database PRIVATE ${_jet_sources})
