# Installs `tovrin` as a desktop app (program, desktop entry, icons, AppStream data, manual
# page, copyright) and describes the Debian package `./tovrin-dev package` builds with CPack.
# No autostart entry is installed: starting at login is the user's choice in Settings.
include(GNUInstallDirs)
# Installing needs only the program and its documents (`./tovrin-dev package` builds those), not
# every test binary.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY TRUE)
set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/tovrin)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)

# Debian wants the manual page and the changelog compressed, reproducibly (no name, no time).
function(pellwin_gzip source target)
  add_custom_command(OUTPUT ${target}
                     COMMAND gzip -9nc ${source} > ${target}
                     DEPENDS ${source} VERBATIM)
endfunction()
pellwin_gzip(${packaging}/tovrin.1 ${PROJECT_BINARY_DIR}/tovrin.1.gz)
pellwin_gzip(${packaging}/changelog ${PROJECT_BINARY_DIR}/changelog.gz)
add_custom_target(pellwin_package_docs ALL
                  DEPENDS ${PROJECT_BINARY_DIR}/tovrin.1.gz ${PROJECT_BINARY_DIR}/changelog.gz)

install(TARGETS tovrin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${packaging}/com.pellwin.Pellwin.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/com.pellwin.Pellwin.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/icons/com.pellwin.Pellwin.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${packaging}/icons/tovrin-dot-ok.svg ${packaging}/icons/tovrin-dot-strain.svg
              ${packaging}/icons/tovrin-dot-problem.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/status)
install(FILES ${PROJECT_BINARY_DIR}/tovrin.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${packaging}/copyright ${PROJECT_BINARY_DIR}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tovrin)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Tovrin developers <maintainers@tovrin.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "why the computer is slow right now, and which app is behind it")
# CPack puts the summary first and indents every line of this below it.
set(CPACK_PACKAGE_DESCRIPTION "Tovrin watches memory, CPU, disk space, disk activity and heat every few
seconds, folds processes into the apps you know, and says in plain words what
is slowing the computer down, which app is behind it and what to do. A dot in
the panel shows the worst health, and a notification arrives when a problem
lasts. It keeps a month of history on the computer only, and comes with a
disk space map and a quick clean of caches and build files. It never quits or
removes anything on its own.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://tovrin.invalid/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beside the computed libraries: the SVG icon engine (the app icon in the desktop's theme) and,
# on Wayland desktops, the native platform plugin (without it Qt runs through XWayland).
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR OFF)
include(CPack)
