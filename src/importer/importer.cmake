# The importer reads workbooks' containers (compound files, zip) with libgsf.
pkg_check_modules(GSF REQUIRED IMPORTED_TARGET libgsf-1)
target_link_libraries(helptext_importer PRIVATE PkgConfig::GSF)
