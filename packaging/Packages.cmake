# The packages: a .deb, and a .tar.gz that runs wherever it is unpacked.
# scripts/package builds both.
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_NAME launcher)
set(CPACK_PACKAGE_VERSION "${LAUNCHER_VERSION}")
set(CPACK_PACKAGE_VENDOR "the developers of launcher")
set(CPACK_PACKAGE_FILE_NAME "launcher-${LAUNCHER_VERSION}-linux-x86_64")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/StagePackage.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/RepackArchive.cmake")

set(deb "${CMAKE_CURRENT_LIST_DIR}/deb")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The developers of launcher <launcher@launcher.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "run a Java application as a service")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"launcher runs a Java application as a long-lived service, inside a JVM in its
own process, and stops it on request. The service is a Java class with a
static method for its start and, to end in order, one for its stop.
.
The launcher can detach from the terminal, redirects the output, keeps a PID
file and a log of its own, and ends with a status that tells what happened.
.
The package brings a systemd unit that runs the services of the machine as
instances, each with a file of settings in /etc/launcher. None is enabled. The
services need a Java runtime of version 17 or newer.")
# What the binary needs is found out; the others make the user and the
# directories of the services.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
string(JOIN ", " CPACK_DEBIAN_PACKAGE_DEPENDS
    "systemd | systemd-standalone-sysusers | systemd-sysusers"
    "systemd | systemd-standalone-tmpfiles | systemd-tmpfiles")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-jre-headless (>= 2:1.17) | java17-runtime-headless")
# The unit keeps the launcher's logs few without it, and it would bring cron and
# a mail server along.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS logrotate)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${deb}/preinst" "${deb}/postinst" "${deb}/prerm" "${deb}/postrm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
