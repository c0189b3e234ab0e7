# Installation as a plug-in.
#
#   <libdir>/ui32/ui32.so         the plug-in, loaded by path (no SONAME chain)
#   <includedir>/ui32.h           the C interface
#   <libdir>/pkgconfig/ui32.pc    Cflags for the header; variable plugindir
#
# tools/package.sh installs the same tree with prefix /usr and libdir
# lib/<multiarch triplet> and splits it into the Debian packages.
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
