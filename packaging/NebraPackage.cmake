# The Debian package, made by CPack from the install rules of the whole project
# (scripts/package.sh builds it; `cpack -G DEB` in a build folder does too).

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME ${NEBRA_PACKAGE_NAME})
set(CPACK_PACKAGE_VENDOR "Quorvix")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${NEBRA_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "organiser for microplate-reader assays")
# Lines kept under 80 characters: Debian shows the description as written.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "The Organiser (NMain5) is the hub window of the Nebra suite for"
    "microplate-reader assays. It shows a tree of the suite's data folders, lists"
    "each folder's read configurations, plate layouts, assay protocols, results"
    "and reports, previews them and starts the suite's other programs on them."
    ""
    "The package also holds nebra-secadmin, which administers the users, rights"
    "and tamper-evident audit trail of the suite's optional security sessions,"
    "and example assays to start from.")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${NEBRA_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION "science")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://www.quorvix.example/")
set(CPACK_DEBIAN_COMPRESSION_TYPE "xz")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Libraries are found by dpkg-shlibdeps; these are the run-time pieces that are
# not linked: Qt's SQLite driver (the security database) and platform plug-ins
# (the window), and xdg-open, which opens reports.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, qt6-qpa-plugins, xdg-utils")

include(CPack)
