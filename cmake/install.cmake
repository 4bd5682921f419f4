# What `cmake --install` puts where (GNUInstallDirs, DESTDIR honoured), the
# pkg-config files and CMake package for other projects, and the Debian
# package `cpack -G DEB` makes of it all.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(INKDOT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/inkdot)
# CUPS looks for filters in ServerBin (/usr/lib/cups, never multiarch) and
# for PPD files and driver sources below its data directories.
set(INKDOT_CUPS_SERVERBIN lib/cups CACHE STRING "CUPS ServerBin, relative to the prefix")
set(INKDOT_CUPS_PPD_DIR ${CMAKE_INSTALL_DATADIR}/ppd/inkdot)
set(INKDOT_CUPS_DRV_DIR ${CMAKE_INSTALL_DATADIR}/cups/drv)

set(INKDOT_INSTALLED_LIBRARIES inkdot inkdot_static)
if(TARGET inkdot_driver)
  list(APPEND INKDOT_INSTALLED_LIBRARIES inkdot_driver)
endif()
# Components, one Debian package each: lib (the shared libraries), dev
# (headers, static library, link names, pkg-config and CMake files), tools
# (the inkdot command) and cups (the filter and its PPD).
install(TARGETS ${INKDOT_INSTALLED_LIBRARIES} EXPORT inkdotTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT lib
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT lib NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/inkdot/inkdot.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/inkdot
  COMPONENT dev)

# The CMake package: find_package(inkdot 0.1 CONFIG REQUIRED) gives
# inkdot::inkdot, inkdot::inkdot_static and (with the tools) inkdot::driver.
install(EXPORT inkdotTargets NAMESPACE inkdot:: DESTINATION ${INKDOT_CMAKE_DIR} COMPONENT dev)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/inkdotConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/inkdotConfig.cmake ${PROJECT_BINARY_DIR}/inkdotConfigVersion.cmake
  DESTINATION ${INKDOT_CMAKE_DIR} COMPONENT dev)

# pkg-config files. Their prefix is the one given to `cmake --install
# --prefix`, known only when installing: the version and directories are
# filled in now, the prefix then.
set(INKDOT_PC_FILES inkdot)
if(TARGET inkdot_driver)
  list(APPEND INKDOT_PC_FILES inkdot-driver)
endif()
foreach(pc ${INKDOT_PC_FILES})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/pc/${pc}.pc.in @ONLY)
  install(CODE "
    file(READ \"${PROJECT_BINARY_DIR}/pc/${pc}.pc.in\" pc)
    string(REPLACE \"%PREFIX%\" \"\${CMAKE_INSTALL_PREFIX}\" pc \"\${pc}\")
    set(pc_file \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/${pc}.pc\")
    message(STATUS \"Installing: \${pc_file}\")
    file(WRITE \"\${pc_file}\" \"\${pc}\")" COMPONENT dev)
endforeach()

if(TARGET inkdot_driver)
  install(FILES ${PROJECT_SOURCE_DIR}/include/inkdot/inkdot_job.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/inkdot
    COMPONENT dev)
endif()
if(TARGET inkdot_cli)
  install(TARGETS inkdot_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/tools/report_plots.py DESTINATION ${CMAKE_INSTALL_DATADIR}/inkdot
    COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/inkdot.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
if(TARGET rastertoinkdot)
  install(TARGETS rastertoinkdot RUNTIME DESTINATION ${INKDOT_CUPS_SERVERBIN}/filter COMPONENT cups)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/rastertoinkdot.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8
    COMPONENT cups)
  # The compiled PPD when ppdc was there to make it; else the driver source,
  # which the scheduler compiles itself when asked for its drivers.
  if(TARGET inkdot_ppd)
    install(FILES ${PROJECT_BINARY_DIR}/tools/cups/ppd/inkdot.ppd DESTINATION ${INKDOT_CUPS_PPD_DIR} COMPONENT cups)
  else()
    install(FILES ${PROJECT_SOURCE_DIR}/tools/cups/inkdot.drv DESTINATION ${INKDOT_CUPS_DRV_DIR} COMPONENT cups)
  endif()
endif()

# The Debian packages, one a component (NAME_VERSION_ARCH.deb). Their
# dependencies on other packages come from dpkg-shlibdeps; libinkdot-dev
# needs the libinkdot0 of its own version. The tools link the engine
# statically, so only the development package needs the libraries.
set(CPACK_PACKAGE_NAME inkdot)
set(CPACK_PACKAGE_VENDOR inkdot)
set(CPACK_PACKAGE_CONTACT "inkdot developers <inkdot@localhost>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL lib dev tools cups)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_LIB_PACKAGE_NAME libinkdot0)
set(CPACK_DEBIAN_LIB_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_LIB_DESCRIPTION "inkdot: colour management and halftoning engine of an inkjet printer driver\n\
libinkdot, the engine's eight operations, and libinkdot-driver, the driver layer\n\
with the built-in resource pack and a C interface for print jobs.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libinkdot-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS lib)
set(CPACK_COMPONENT_DEV_DESCRIPTION "inkdot: development files\n\
Headers inkdot/inkdot.h and inkdot/inkdot_job.h, the static engine, the\n\
pkg-config files inkdot and inkdot-driver and the CMake package inkdot.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME inkdot)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "python3-matplotlib, python3-numpy")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "inkdot: halftone images into inkjet dot planes\n\
The inkdot command: print, chart, pack, info and the print-quality report.")

set(CPACK_DEBIAN_CUPS_PACKAGE_NAME printer-driver-inkdot)
set(CPACK_DEBIAN_CUPS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_CUPS_PACKAGE_RECOMMENDS "cups-filters, ghostscript")
set(CPACK_COMPONENT_CUPS_DESCRIPTION "inkdot: CUPS driver\n\
The CUPS filter rastertoinkdot and the PPD of the inkdot inkjet queue.")
include(CPack)
