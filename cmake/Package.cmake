# The Debian packages (scripts/package): cpack in the package preset's build makes
# vessa (the service and its tools), libvessa0 (the client library) and libvessa-dev.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vessa)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "vessa developers <dev@vessa.example.org>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime library dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The Android libraries live in a private directory that dpkg-shlibdeps does not
# search, and the programs need the library of the package next to them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${ANDROID_LIB_DIR} ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME vessa)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION sound)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "audio effect parameter service\n"
    "vessa owns the settings of an audio post-processing effect: on/off, sound\n"
    "profiles, per-output settings, equaliser presets and the tuning of each output\n"
    "port. The daemon vessad serves them on the system bus; vessactl changes them.")
# dbus-daemon for the bus, kill for the unit's reload.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "dbus, procps, libvessa0 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/dist/debian/postinst
    ${PROJECT_SOURCE_DIR}/dist/debian/prerm
    ${PROJECT_SOURCE_DIR}/dist/debian/postrm)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvessa0)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "client library of the vessa audio effect parameter service\n"
    "Typed calls to vessad over D-Bus, decoded updates and errors as values.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/dist/debian/triggers)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvessa-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "development files of the vessa client library\n"
    "Headers under vessa/, pkg-config file and CMake package for libvessa.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvessa0 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
include(CPack)
