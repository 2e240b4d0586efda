# Desktop integration files and the Debian package. Included from the top-level CMakeLists.txt.
include(GNUInstallDirs)

if(UNIX AND NOT APPLE)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/korvel.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/korvel.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/korvel-pod.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
endif()

set(CPACK_PACKAGE_NAME korvel)
set(CPACK_PACKAGE_VENDOR "Korvel developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Manager for the POD archives of Monster Truck Madness 2 and 4x4 Evolution")
set(CPACK_PACKAGE_DESCRIPTION
    "Korvel mounts, unmounts and reorders the POD archives a game loads (its POD.INI), lists and extracts \
the files inside an archive, and edits Monster Truck Madness 2's settings and drivers. It comes as a \
desktop application (korvel) and a command-line tool (korvel-cli), and works with games installed under Wine.")
set(CPACK_PACKAGE_CONTACT "Korvel developers <korvel@localhost>")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT) # korvel_VERSION_ARCH.deb
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Added to the computed libraries: the window needs Qt's platform plugins, which no library links.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "shared-mime-info, desktop-file-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "wine")
# Only what is installed to /usr goes into the package; the test-only programs are not installed.
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
