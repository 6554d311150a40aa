# Debian packages of the installed components (`make package`, or `cpack -G DEB` in a build
# directory configured with CMAKE_INSTALL_PREFIX=/usr):
#   libtavobjectmodel1     Runtime      the shared libraries (the ETS project reader included)
#   libtavobjectmodel-dev  Development  headers, linker names, CMake package and pkg-config file
#   tavknx                 Tool         the command-line tool and its data files
#
# The packages install where the build was configured to install (the tool has its data
# directory built in, the pkg-config file its prefix), so build them with the prefix /usr:
# GNUInstallDirs then gives the multiarch library directory.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavobjectmodel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "TavObjectModel developers")
set(CPACK_PACKAGE_CONTACT "TavObjectModel developers <tavobjectmodel@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
# The Release build carries debugging information (-g); the packaged binaries are stripped,
# with the build's own strip (the cross one when cross-building).
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL Runtime Development)
if(TAV_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL Tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# Cross-built, the packages are for the target's architecture, not the build machine's.
if(CMAKE_CROSSCOMPILING)
  if(NOT TAV_DEB_ARCHITECTURE)
    find_program(TAV_DPKG_ARCHITECTURE dpkg-architecture)
    if(TAV_DPKG_ARCHITECTURE AND CMAKE_LIBRARY_ARCHITECTURE)
      execute_process(COMMAND ${TAV_DPKG_ARCHITECTURE} -t ${CMAKE_LIBRARY_ARCHITECTURE} -qDEB_HOST_ARCH
        OUTPUT_VARIABLE _tav_deb_arch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
    set(TAV_DEB_ARCHITECTURE "${_tav_deb_arch}" CACHE STRING "Debian architecture of the packages")
  endif()
  if(NOT TAV_DEB_ARCHITECTURE)
    message(WARNING "Cross-building without a Debian architecture for the packages: "
                    "install dpkg-dev or set TAV_DEB_ARCHITECTURE")
  endif()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${TAV_DEB_ARCHITECTURE})
endif()

set(_tav_boost "${Boost_VERSION_MAJOR}.${Boost_VERSION_MINOR}")
set(_tav_version "${CPACK_PACKAGE_VERSION}")

# Depends on other Debian packages: dpkg-shlibdeps reads them off the binaries where the
# libraries they load belong to installed packages, that is in a native build. A cross build
# finds its libraries in a sysroot that dpkg knows nothing of, so it names them here; these
# lists follow what the targets link (tests/packaging/check-debs.sh holds them to the
# binaries' NEEDED entries).
set(TAV_DEB_LOG4CPLUS_PACKAGE liblog4cplus-2.0.5 CACHE STRING
  "Debian package of the log4cplus shared library (for cross-built packages)")
set(TAV_DEB_EIBCLIENT_PACKAGE knxd-tools CACHE STRING
  "Debian package of knxd's client library (for cross-built packages)")
set(TAV_DEB_MOSQUITTO_PACKAGE libmosquitto1 CACHE STRING
  "Debian package of the MQTT client library libmosquitto (for cross-built packages)")
set(TAV_DEB_LIBZIP_PACKAGE libzip4 CACHE STRING
  "Debian package of the libzip shared library (for cross-built packages)")
set(TAV_DEB_LIBCRYPTO_PACKAGE libssl3 CACHE STRING
  "Debian package of OpenSSL's libcrypto (for cross-built packages)")
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
  set(_tav_base_depends "libc6, libgcc-s1, libstdc++6")
  set(_tav_runtime_depends "${_tav_base_depends}, libboost-thread${_tav_boost}.0, libboost-chrono${_tav_boost}.0, libboost-timer${_tav_boost}.0, libboost-date-time${_tav_boost}.0, libboost-filesystem${_tav_boost}.0, libboost-system${_tav_boost}.0, ${TAV_DEB_LOG4CPLUS_PACKAGE}, ${TAV_DEB_LIBZIP_PACKAGE}, ${TAV_DEB_LIBCRYPTO_PACKAGE}")
  set(_tav_tool_depends "${_tav_base_depends}, libboost-filesystem${_tav_boost}.0, libboost-program-options${_tav_boost}.0, ${TAV_DEB_LOG4CPLUS_PACKAGE}, ${TAV_DEB_EIBCLIENT_PACKAGE}, ${TAV_DEB_MOSQUITTO_PACKAGE}, ")
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(_tav_runtime_depends "")
  set(_tav_tool_depends "")
  # dpkg-shlibdeps finds the project's own libraries in the build tree (and leaves them to the
  # explicit dependency on the runtime package below).
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake
    CONTENT "set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS \"$<TARGET_FILE_DIR:tavobjectmodel>;$<TARGET_FILE_DIR:tavplatform>;$<TARGET_FILE_DIR:tavproject>\")\n")
  set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtavobjectmodel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${_tav_runtime_depends}")
# A shlibs file, so that packages built against these libraries get their dependency from
# dpkg-shlibdeps; it also triggers ldconfig on install and removal.
# (Only the runtime package holds shared objects.)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Each description's first line is the package's synopsis.
set(_tav_about "The object-model layer of a KNX home-automation controller: conversion between KNX\ngroup values and the controller's values, and requests to its device stack.")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "KNX object-model library for home-automation controllers\n${_tav_about}\n.\nThis package holds the shared libraries libtavobjectmodel, libtavplatform and\nlibtavproject (the reader of ETS project files).")

# The headers include Boost and log4cplus headers, and the CMake package finds Boost's
# components and log4cplus (through pkg-config) again: the versions the libraries were built with.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtavobjectmodel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${_tav_version}), libboost${_tav_boost}-dev, libboost-thread${_tav_boost}-dev, libboost-date-time${_tav_boost}-dev, libboost-timer${_tav_boost}-dev, libboost-filesystem${_tav_boost}-dev, libboost-system${_tav_boost}-dev, liblog4cplus-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "KNX object-model library for home-automation controllers (development files)\n${_tav_about}\n.\nThis package holds the headers, the CMake package (find_package(TavObjectModel))\nand the pkg-config file tavobjectmodel.pc; the ETS project reader is the\nCMake target TavObjectModel::tavproject.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tavknx)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS
  "${_tav_tool_depends}${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${_tav_version})")
# The live-bus commands talk to a knxd.
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS knxd)
set(CPACK_DEBIAN_TOOL_DESCRIPTION
  "Command-line tool for KNX group values and telegrams\ntavknx decodes and encodes KNX group values, reads group address maps and ETS\nprojects, and monitors and sends telegrams on a live bus through knxd.")

include(CPack)
