# What `cmake --install` puts where (GNUInstallDirs, any prefix, DESTDIR honoured):
#   bin/                      fmhost, vesk (RUNPATH $ORIGIN/../lib/<multiarch>/tpx1)
#   lib/<multiarch>/tpx1/     tpx1.fmx (RUNPATH $ORIGIN), tpx1.fmx.rsrc,
#                             libtpx1platform.so.1 and the libtpx1platform.so link
#   lib/<multiarch>/pkgconfig tpx1platform.pc, for partner applications
#   include/tpx1/             the headers of the calls a partner application makes
#   share/doc/tpx1/           README.md, docs/ and the partner example
#   share/dbus-1/interfaces/  org.vesk.AppleEvent1.xml, the bus interface
# Only what is listed here is installed: tests, benchmarks and fuzz targets never are.

install(TARGETS fmhost vesk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS tpx1platform tpx1fmx LIBRARY DESTINATION ${TPX1_INSTALL_PKGLIBDIR})
install(FILES ${CMAKE_BINARY_DIR}/tpx1.fmx.rsrc DESTINATION ${TPX1_INSTALL_PKGLIBDIR})

# The public headers include one another by file name, so they work from include/tpx1/.
install(FILES
  ${CMAKE_SOURCE_DIR}/platform/AppleEvents.h
  ${CMAKE_SOURCE_DIR}/platform/Processes.h
  ${CMAKE_SOURCE_DIR}/platform/Files.h
  ${CMAKE_SOURCE_DIR}/platform/MacTypes.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tpx1)

# The .pc file names the prefix the files are installed under, which `--prefix` may
# change after configuring: it is written at install time.
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  set(libdir \"${CMAKE_INSTALL_LIBDIR}\")
  set(includedir \"${CMAKE_INSTALL_INCLUDEDIR}\")
  set(version \"${PROJECT_VERSION}\")
  configure_file(\"${CMAKE_SOURCE_DIR}/cmake/tpx1platform.pc.in\" \"${CMAKE_BINARY_DIR}/pc/tpx1platform.pc\" @ONLY)
  file(INSTALL DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\" TYPE FILE
       FILES \"${CMAKE_BINARY_DIR}/pc/tpx1platform.pc\")
")

install(FILES ${CMAKE_SOURCE_DIR}/platform/org.vesk.AppleEvent1.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces)

install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(FILES
  ${CMAKE_SOURCE_DIR}/examples/partner/Makefile
  ${CMAKE_SOURCE_DIR}/examples/partner/nimbo.cpp
  ${CMAKE_SOURCE_DIR}/examples/partner/nimbo.fmh
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/partner)
install(PROGRAMS
  ${CMAKE_SOURCE_DIR}/examples/partner/nimbo.py
  ${CMAKE_SOURCE_DIR}/examples/partner/nimbo.sh
  ${CMAKE_SOURCE_DIR}/examples/partner/try-nimbo.sh
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/partner)
