# Run by cpack before it packs: adds what Debian's policy asks for.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)

file(COPY ${CMAKE_CURRENT_LIST_DIR}/changelog ${CMAKE_CURRENT_LIST_DIR}/copyright
     DESTINATION ${usr}/share/doc/qordex)
if(NOT CPACK_DEBIAN_PACKAGE_SHLIBDEPS)  # the program is static
  configure_file(${CMAKE_CURRENT_LIST_DIR}/lintian-overrides ${usr}/share/lintian/overrides/qordex
                 COPYONLY)
endif()
execute_process(COMMAND gzip -9n ${usr}/share/doc/qordex/changelog ${usr}/share/man/man1/qordex.1
                COMMAND_ERROR_IS_FATAL ANY)
# The files come with the permissions of the checkout and of the user's umask.
execute_process(COMMAND chmod -R u=rwX,go=rX ${usr} COMMAND_ERROR_IS_FATAL ANY)
