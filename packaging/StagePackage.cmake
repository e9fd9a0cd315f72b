# Runs between the installation into the staging directory and the packing.

# Modes that do not come from the umask of whoever has the sources.
execute_process(COMMAND chmod -R u=rwX,go=rX "${CPACK_TEMPORARY_DIRECTORY}"
    COMMAND_ERROR_IS_FATAL ANY)

if(CPACK_GENERATOR STREQUAL "DEB")
    set(control "${CPACK_TOPLEVEL_DIRECTORY}/control")
    execute_process(
        COMMAND "${CMAKE_CURRENT_LIST_DIR}/deb/stage" "${CPACK_TEMPORARY_DIRECTORY}" "${control}"
            "${CPACK_PACKAGE_VERSION}" "${CPACK_DEBIAN_PACKAGE_MAINTAINER}"
        COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${control}/conffiles")
endif()
