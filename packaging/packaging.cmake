# Installation like a desktop application, and the Debian package (CPack):
#   cmake --install build --prefix P     cpack -G DEB (in build/), or scripts/package.sh
# P/bin: both variants and the tools; P/share/helptext: the importer's template
# databases (found there by an installed program), the page templates and the
# database schemas; the desktop entries, icons, AppStream metadata, manual pages
# and the README.
include(GNUInstallDirs)
set(_pkg ${CMAKE_SOURCE_DIR}/packaging)
set(_bin ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

install(TARGETS helptext-editor helptext-importer helptext-mkdb helptext-mkjet
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${_bin}/HelpTextMitMaterialchange.mdb ${_bin}/HelpTextOhneMaterialchange.mdb
  DESTINATION ${CMAKE_INSTALL_DATADIR}/helptext)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/samples/templates/ DESTINATION ${CMAKE_INSTALL_DATADIR}/helptext/templates
  FILES_MATCHING PATTERN "Source_*.html")
install(DIRECTORY ${CMAKE_SOURCE_DIR}/src/database/schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/helptext/schema
  FILES_MATCHING PATTERN "*.sql" PATTERN "empty.mdb")

install(FILES ${_pkg}/helptext-editor.desktop ${_pkg}/helptext-importer.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${_pkg}/org.helptext.editor.metainfo.xml ${_pkg}/org.helptext.importer.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${_pkg}/icons/helptext.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
foreach(_size 16 24 32 48 64 128 256)
  install(FILES ${_pkg}/icons/helptext-${_size}.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${_size}x${_size}/apps RENAME helptext.png)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Manual pages, made from each program's --help at build time.
set(_man_dir ${CMAKE_BINARY_DIR}/man)
set(_pages)
foreach(_program helptext-editor helptext-importer helptext-mkdb helptext-mkjet)
  add_custom_command(OUTPUT ${_man_dir}/${_program}.1
    COMMAND ${CMAKE_COMMAND} -E make_directory ${_man_dir}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${_program}> -DNAME=${_program}
      -DVERSION=${PROJECT_VERSION} -DOUT=${_man_dir}/${_program}.1 -P ${_pkg}/ManPage.cmake
    DEPENDS ${_program} ${_pkg}/ManPage.cmake
    COMMENT "Writing the manual page of ${_program} from its --help"
    VERBATIM)
  list(APPEND _pages ${_man_dir}/${_program}.1)
endforeach()
add_custom_target(helptext_manpages ALL DEPENDS ${_pages})
install(FILES ${_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# What an installation needs built; cpack builds only this, not the tests and
# benchmarks ("all").
add_custom_target(helptext_installable)
add_dependencies(helptext_installable helptext-editor helptext-importer helptext-mkdb helptext-mkjet
  helptext_templates helptext_manpages)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};helptext;ALL;/")

# The Debian package. Library dependencies come from dpkg-shlibdeps; Qt's
# plugins (SQLite driver, display platforms) and the fonts are not linked and
# are named here.
set(CPACK_PACKAGE_NAME helptext)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "helptext maintainers <helptext@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "multilingual help texts of packaging machines' operator panels")
set(CPACK_PACKAGE_DESCRIPTION
  "An editor and an importer for the help texts behind the alarms, warnings and material changes of packaging machines, kept in Access or SQLite help-text databases, and the HTML help pages made from them.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, qt6-qpa-plugins, fonts-dejavu-core, fonts-liberation")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hicolor-icon-theme")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
include(CPack)
