# What `cmake --install` and the Debian package put where (Debian conventions).

include(CMakePackageConfigHelpers)

set(VESSA_DIST_DIR ${PROJECT_SOURCE_DIR}/dist)
set(VESSA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vessa)
# Relative to the prefix, so that a staged install keeps the whole tree together.
set(VESSA_SYSTEMD_DIR lib/systemd/system CACHE STRING "Where the systemd unit goes")
set(VESSA_SYSUSERS_DIR lib/sysusers.d CACHE STRING "Where the sysusers.d entry goes")
set(VESSA_TMPFILES_DIR lib/tmpfiles.d CACHE STRING "Where the tmpfiles.d entry goes")

# The library, its headers and what finds them.
install(TARGETS vessa EXPORT vessaTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT library NAMELINK_COMPONENT dev)
install(DIRECTORY include/vessa DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(EXPORT vessaTargets NAMESPACE vessa:: DESTINATION ${VESSA_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${VESSA_DIST_DIR}/vessaConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/vessaConfig.cmake INSTALL_DESTINATION ${VESSA_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vessaConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
configure_file(${VESSA_DIST_DIR}/vessa.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vessa.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vessaConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vessaConfigVersion.cmake
        DESTINATION ${VESSA_CMAKE_DIR} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vessa.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The programs. The Android libraries sit outside the loader's default path.
set_target_properties(vessad vessactl vessa-tune PROPERTIES INSTALL_RPATH ${ANDROID_LIB_DIR})
install(TARGETS vessactl vessa-tune DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS vessad DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT runtime)

# The bus: interface, policy, activation.
install(FILES etc/vendor.vessa_v3_6.hardware.pqs360.IPqs.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces COMPONENT runtime)
install(FILES etc/vendor.vessa_v3_6.hardware.pqs360.conf
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT runtime)

# The service: unit, user, data directory, sample tuning files.
foreach(file vessad.service vendor.vessa_v3_6.hardware.pqs360.service vessa.tmpfiles)
    configure_file(${VESSA_DIST_DIR}/${file}.in ${CMAKE_CURRENT_BINARY_DIR}/dist/${file} @ONLY)
endforeach()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dist/vendor.vessa_v3_6.hardware.pqs360.service
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system-services COMPONENT runtime)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dist/vessad.service
        DESTINATION ${VESSA_SYSTEMD_DIR} COMPONENT runtime)
install(FILES ${VESSA_DIST_DIR}/vessa.sysusers
        DESTINATION ${VESSA_SYSUSERS_DIR} RENAME vessa.conf COMPONENT runtime)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dist/vessa.tmpfiles
        DESTINATION ${VESSA_TMPFILES_DIR} RENAME vessa.conf COMPONENT runtime)
install(FILES etc/multimedia_vessa_zan_default.xml etc/zan-extra.xml etc/tuning.xsd
        DESTINATION ${CMAKE_INSTALL_DATADIR}/vessa COMPONENT runtime)

# Documentation: man pages (compressed, as Debian ships them) and shell completion.
# vessactl's page and completion are generated from its command table.
set(generated ${CMAKE_BINARY_DIR}/generated)
set(man_outputs)
foreach(source ${VESSA_DIST_DIR}/man/vessad.8 ${VESSA_DIST_DIR}/man/vessa-tune.1
               ${generated}/vessactl.1)
    get_filename_component(page ${source} NAME)
    set(out ${CMAKE_CURRENT_BINARY_DIR}/man/${page}.gz)
    add_custom_command(OUTPUT ${out}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/man
        COMMAND sh -c "gzip -9nc \"$1\" > \"$2\"" gzip ${source} ${out}
        DEPENDS ${source} VERBATIM)
    list(APPEND man_outputs ${out})
    string(REGEX REPLACE ".*\\." "" section ${page})
    install(FILES ${out} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT runtime)
endforeach()
add_custom_target(vessa_man ALL DEPENDS ${man_outputs})
add_dependencies(vessa_man vessactl_docs)
install(FILES ${generated}/vessactl.bash-completion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vessactl
        COMPONENT runtime)

# Each Debian package carries the copyright and the changelog under its own name.
set(changelog ${CMAKE_CURRENT_BINARY_DIR}/dist/changelog.gz)
add_custom_command(OUTPUT ${changelog}
    COMMAND sh -c "gzip -9nc \"$1\" > \"$2\"" gzip ${VESSA_DIST_DIR}/debian/changelog ${changelog}
    DEPENDS ${VESSA_DIST_DIR}/debian/changelog VERBATIM)
add_custom_target(vessa_changelog ALL DEPENDS ${changelog})
foreach(component_package runtime:vessa library:libvessa0 dev:libvessa-dev)
    string(REPLACE ":" ";" pair ${component_package})
    list(GET pair 0 component)
    list(GET pair 1 package)
    install(FILES ${VESSA_DIST_DIR}/debian/copyright ${changelog}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

include(cmake/Package.cmake)
