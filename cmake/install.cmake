# Installation as a plug-in and Debian packages.
#
#   <libdir>/ui32/ui32.so         the plug-in, loaded by path (no SONAME chain)
#   <includedir>/ui32.h           the C interface
#   <libdir>/pkgconfig/ui32.pc    Cflags for the header; variable plugindir
#
# `cpack -G DEB` (tools/package.sh) packages the same tree for the
# architecture of the build: amd64 for host builds, armhf for the armhf
# cross build.
include(GNUInstallDirs)

set(UI32_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/ui32)

install(TARGETS ui32 LIBRARY DESTINATION ${UI32_PLUGIN_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/ui32.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The pkg-config file names absolute paths under the prefix given at install
# time (`cmake --install --prefix`, or /usr inside the package).  It is
# configured twice: now for the directories, at install time for the prefix.
set(prefix "@prefix@")
configure_file(${CMAKE_CURRENT_LIST_DIR}/ui32.pc.in ${CMAKE_BINARY_DIR}/ui32.pc.in @ONLY)
unset(prefix)
install(CODE "
    set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${CMAKE_BINARY_DIR}/ui32.pc.in\" \"${CMAKE_BINARY_DIR}/ui32.pc\" @ONLY)
")
install(FILES ${CMAKE_BINARY_DIR}/ui32.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# ---------------------------------------------------------------------------
# Debian packages
# ---------------------------------------------------------------------------
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(arm|ARM)")
    set(UI32_DEB_ARCHITECTURE armhf)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86)$")
    set(UI32_DEB_ARCHITECTURE i386)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(UI32_DEB_ARCHITECTURE arm64)
else()
    set(UI32_DEB_ARCHITECTURE amd64)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ui32)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "ui32 maintainers <ui32@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "drawing back-end plug-in for remote-desktop thin clients")
set(CPACK_PACKAGE_DESCRIPTION
    "ui32.so draws RDP orders and bitmaps and RFB tiles into a client's 32-bit frame buffer and marks the 32x32 tiles it changed. Clients dlopen it from the pkg-config variable plugindir.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${UI32_DEB_ARCHITECTURE})
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
include(CPack)
