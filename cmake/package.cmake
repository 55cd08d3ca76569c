# The Debian package: `cpack -G DEB` in the build folder (make deb). Its dependencies on libraries
# come from the binaries themselves; the desktop database, the MIME cache and the icon cache are
# refreshed by the triggers of the packages that own them, which watch the folders we install into.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME veltrick)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "timesheet for the jobs you bill, by job, project and client")
set(CPACK_PACKAGE_DESCRIPTION
    "Veltrick times the job rows of a timesheet file against the wall clock in whole minutes and
writes the file every minute, so a crash or a quit with the timer on loses nothing. It adds up
list, day and job totals, carries a job past midnight, keeps preset jobs with hour budgets, takes
clients from a vCard address book, warns when a job runs while nobody is at the computer, shows the
open timesheet as a web page on the local network, prints and exports. veltrick-cli reads, writes
and totals timesheet files from a shell.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Veltrick developers")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's X11 and Wayland platform plugins are loaded at run time, so no library names them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "shared-mime-info, desktop-file-utils, hicolor-icon-theme, xdg-utils")
include(CPack)
