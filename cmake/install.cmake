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
install(TARGETS ${INKDOT_INSTALLED_LIBRARIES} EXPORT inkdotTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/inkdot/inkdot.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/inkdot)

# The CMake package: find_package(inkdot 0.1 CONFIG REQUIRED) gives
# inkdot::inkdot, inkdot::inkdot_static and (with the tools) inkdot::driver.
install(EXPORT inkdotTargets NAMESPACE inkdot:: DESTINATION ${INKDOT_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/inkdotConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/inkdotConfig.cmake ${PROJECT_BINARY_DIR}/inkdotConfigVersion.cmake
  DESTINATION ${INKDOT_CMAKE_DIR})

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
    file(WRITE \"\${pc_file}\" \"\${pc}\")")
endforeach()

if(TARGET inkdot_driver)
  install(FILES ${PROJECT_SOURCE_DIR}/include/inkdot/inkdot_job.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/inkdot)
endif()
if(TARGET inkdot_cli)
  install(TARGETS inkdot_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/tools/report_plots.py DESTINATION ${CMAKE_INSTALL_DATADIR}/inkdot)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/inkdot.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
if(TARGET rastertoinkdot)
  install(TARGETS rastertoinkdot RUNTIME DESTINATION ${INKDOT_CUPS_SERVERBIN}/filter)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/rastertoinkdot.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
  # The compiled PPD when ppdc was there to make it; else the driver source,
  # which the scheduler compiles itself when asked for its drivers.
  if(TARGET inkdot_ppd)
    install(FILES ${PROJECT_BINARY_DIR}/tools/cups/ppd/inkdot.ppd DESTINATION ${INKDOT_CUPS_PPD_DIR})
  else()
    install(FILES ${PROJECT_SOURCE_DIR}/tools/cups/inkdot.drv DESTINATION ${INKDOT_CUPS_DRV_DIR})
  endif()
endif()

# One Debian package, inkdot_VERSION_ARCH.deb; its dependencies come from
# dpkg-shlibdeps and it registers its libraries' shlibs for ldconfig.
set(CPACK_PACKAGE_NAME inkdot)
set(CPACK_PACKAGE_VENDOR inkdot)
set(CPACK_PACKAGE_CONTACT "inkdot developers <inkdot@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "colour management and halftoning engine of an inkjet printer driver")
set(CPACK_PACKAGE_DESCRIPTION "The libinkdot engine and its driver layer (libinkdot-driver, with a C interface\n\
and the built-in resource pack), their headers, pkg-config files and CMake package,\n\
the inkdot command, and the CUPS filter rastertoinkdot with its PPD.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The report's plots and the PDF leg of a print job come from other packages.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3-matplotlib, python3-numpy, cups-filters")
include(CPack)
