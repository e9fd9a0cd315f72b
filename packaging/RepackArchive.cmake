# Packs the .tar.gz once more: its files come in the order of the directory that
# they were in, and belong to whoever has built it.
if(CPACK_GENERATOR STREQUAL "TGZ")
    cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH above)
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        set(time "@$ENV{SOURCE_DATE_EPOCH}")
    else()
        set(time now)
    endif()
    execute_process(
        COMMAND tar --create --sort=name --format=gnu "--mtime=${time}" --owner=root:0 --group=root:0
            "--directory=${above}" -- "${CPACK_PACKAGE_FILE_NAME}"
        COMMAND gzip -9n
        OUTPUT_FILE "${CPACK_PACKAGE_FILES}"
        COMMAND_ERROR_IS_FATAL ANY)
endif()
