# Packages: a Debian package (`cpack -G DEB` in the build directory), and a zip for Windows
# (`cpack -G ZIP` in that of the preset win64).
#
# The Debian package is one, not a library, a development package and a command apart: nothing else
# depends on the library yet, and all of it is a few megabytes. When there is a second SONAME, the
# library needs a package of its own, so that both can be installed.
set(CPACK_PACKAGE_NAME kestra)
set(CPACK_PACKAGE_VENDOR "The developers of Kestra")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Asks a machine about itself in a SQL-like language")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(CMAKE_SYSTEM_NAME STREQUAL "Windows")
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME kestra-${PROJECT_VERSION}-win64)
  set(CPACK_STRIP_FILES OFF)  # done already, with the debug information kept beside
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KESTRA_MAINTAINER})
  set(CPACK_DEBIAN_PACKAGE_SECTION admin)
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "\
Kestra answers questions about a machine: its processes, files, ini files\n\
and registry, of this machine or of a Windows volume that lies on a disk.\n\
The package has the command, the library with its C interface, a Python\n\
module and what is needed to build against the library.")
  # What is linked is found out; what is loaded when it is needed is named here.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # A program that was built against this version goes on with every later one of the SONAME.
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libedit2, libhivex0")
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3, pkg-config")
  # The run-time linker learns of the library, and forgets it: by a trigger, as Debian wants it. CPack
  # adds scripts of its own that do the same.
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/debian/triggers
    ${CMAKE_SOURCE_DIR}/packaging/debian/prerm)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
endif()
include(CPack)
