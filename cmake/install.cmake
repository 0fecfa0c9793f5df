# Installs Tolva where Debian puts a chess engine, and packs the same files
# into a .deb with `cpack -G DEB`. Nothing else is installed: no test or
# benchmark binary, no library, no header.

install(TARGETS tolva RUNTIME DESTINATION games)
install(FILES doc/tolva.6 DESTINATION share/man/man6)
# xboard reads the plugin files at start-up and adds new engines to its list;
# the logo beside them is shown above the engine's clock.
install(FILES doc/tolva.eng DESTINATION share/games/plugins/xboard)
install(FILES doc/tolva.png DESTINATION share/games/plugins/logos)
install(FILES README.md doc/tolva.ini DESTINATION share/doc/tolva)

set(TOLVA_PACKAGE_MAINTAINER "Tolva developers <tolva@example.org>" CACHE STRING
    "Maintainer field of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tolva)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for xboard and the console")
set(CPACK_PACKAGE_DESCRIPTION
    "Tolva is a chess engine that speaks the xboard protocol (version 2) on standard
input and output. It searches with iterative deepening and principal-variation
alpha-beta on one or several threads, plays from opening books in the PolyGlot
format and reads Gaviota endgame tablebases of up to five men. xboard finds it
in its engine list after installation; it can also be played at the console.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TOLVA_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# dpkg-shlibdeps (from dpkg-dev) computes Depends from what the binary links.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xboard | polyglot, gaviotatb")
include(CPack)
