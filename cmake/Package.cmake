# The Debian package: `cpack` (or `cpack -G DEB`) in the build folder makes
# tpx1_<version>_<arch>.deb from the install rules, installed under /usr. Its Depends
# come from dpkg-shlibdeps; the platform library it carries is found in the package's own
# private folder. Binaries are stripped, so no build path travels in debug information.
set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR "")
set(CPACK_PACKAGE_NAME tpx1)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "TPX1 maintainers <tpx1@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "TOPOLUX plug-in for FileMaker, with the fmhost test host and the vesk tool")
set(CPACK_PACKAGE_DESCRIPTION "tpx1.fmx is a FileMaker plug-in of the classic external-function API:
66 TPX1 functions for messaging with the TOPOLUX and NIMBO partner applications
over D-Bus, globals, paths, files and map object lists. fmhost loads it and runs
FileMaker-style calculations and scripts; vesk lists, sends to and stands in for
partner applications. The headers, libtpx1platform and tpx1platform.pc let
partners be written in C++.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# fmhost starts a private bus with dbus-daemon when there is no session bus.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS dbus-daemon)
include(CPack)
