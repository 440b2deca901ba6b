# Installs the programs as a desktop application (menu entry, icons,
# AppStream data) and lets CPack build a Debian package of them:
#   cmake --build build --target veklari veklari-cli && cd build && cpack -G DEB
include(GNUInstallDirs)

set(desktop_dir ${PROJECT_SOURCE_DIR}/resources/desktop)
set(app_id fi.veklari.Veklari)
set(VEKLARI_PACKAGE_MAINTAINER "Veklari <veklari@example.org>"
    CACHE STRING "Maintainer of the Debian package: name <e-mail>")

# Installing and packaging take what is built and build nothing themselves: packaging would
# otherwise build every test and benchmark first.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY TRUE)

# The directories that install creates, whatever the umask of the one who builds.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(FILES ${desktop_dir}/${app_id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
foreach(size 16 24 32 48 64 128 256)
    install(FILES ${desktop_dir}/icons/veklari-${size}.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
        RENAME veklari.png)
endforeach()
install(FILES ${desktop_dir}/icons/veklari.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

string(TIMESTAMP VEKLARI_RELEASE_DATE "%Y-%m-%d" UTC)
configure_file(${desktop_dir}/${app_id}.metainfo.xml.in
    ${CMAKE_CURRENT_BINARY_DIR}/${app_id}.metainfo.xml @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${app_id}.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# Debian wants the copyright and a compressed changelog beside every package.
set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/veklari)
install(FILES ${desktop_dir}/copyright DESTINATION ${doc_dir})
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/changelog
    "veklari (${PROJECT_VERSION}) stable; urgency=medium\n\n"
    "  * Version ${PROJECT_VERSION}.\n\n"
    " -- ${VEKLARI_PACKAGE_MAINTAINER}  ${changelog_date}\n")
# -n leaves the name and time out of the header, so the file is the same every build.
execute_process(COMMAND gzip -9nf ${CMAKE_CURRENT_BINARY_DIR}/changelog)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz DESTINATION ${doc_dir})

set(CPACK_PACKAGE_NAME veklari)
set(CPACK_PACKAGE_VENDOR Veklari)
set(CPACK_PACKAGE_CONTACT ${VEKLARI_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "invoicing for a one-person Finnish business")
set(CPACK_PACKAGE_DESCRIPTION
    "Veklari keeps customers, products, bank accounts and invoices in an SQLite\n"
    "file or a PostgreSQL database and writes invoices, interest invoices,\n"
    "credit notes, payment reminders, receipts and delivery notes, printed with\n"
    "the Finnish bank transfer form, bank barcode and payment QR code, as PDF\n"
    "files or as Finvoice e-invoices. veklari-cli writes the same files and\n"
    "reports without a display.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_PACKAGE_INSTALL_DIRECTORY veklari)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries the programs link come from dpkg-shlibdeps; Qt's plug-ins are loaded at run
# time: the window system and the SQLite driver are needed, PostgreSQL and the fonts of the
# built-in layouts are not.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, libqt6sql6-sqlite")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "libqt6sql6-psql, fonts-liberation2, qt6-translations-l10n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
