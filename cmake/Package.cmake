# The Debian package, which `cpack` makes in the build folder from the installed files.
set(JOIN_PACKAGE_MAINTAINER "Join maintainers <join@example.com>" CACHE STRING "Maintainer of the package")

execute_process(COMMAND env LC_ALL=C date --utc --date=${join_release_date} "+%a, %d %b %Y"
    OUTPUT_VARIABLE release_day OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
foreach(file IN ITEMS copyright changelog)
    configure_file(resources/desktop/${file}.in ${join_configured}/${file} @ONLY)
    install(FILES ${join_configured}/${file} DESTINATION share/doc/tavo-join)
endforeach()
install(FILES resources/policy.conf DESTINATION share/doc/tavo-join/examples)
install(FILES resources/desktop/lintian-overrides DESTINATION share/lintian/overrides RENAME tavo-join)

# Programs are stripped, and texts compressed as Debian's policy asks (sections 12.1 and 12.7).
set(CPACK_STRIP_FILES ON)
file(WRITE ${join_configured}/compress.cmake [[
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share)
execute_process(COMMAND gzip -9n ${share}/man/man1/tavo-join.1 ${share}/doc/tavo-join/changelog
    COMMAND_ERROR_IS_FATAL ANY)
]])
set(CPACK_PRE_BUILD_SCRIPTS ${join_configured}/compress.cmake)

# The desktop entry names the program's place on the user's computer, so the prefix is the one there.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavo-join)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "launcher of remote-support and meeting sessions")
set(CPACK_PACKAGE_DESCRIPTION
"Join is the small launcher through which this computer joins a remote-support
or meeting session. A web page opens it with a link that carries the session's
key; without one, it asks for the key.
.
It asks the service about the session, fetches and installs the agent that
joins it into the user's own folders, starts the agent, and quits.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${JOIN_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${JOIN_HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

# The libraries are found from the programs; these are the programs that Join runs, and the certificates it trusts.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
string(JOIN ", " CPACK_DEBIAN_PACKAGE_DEPENDS 7zip ca-certificates desktop-file-utils xdg-utils zip)
string(JOIN ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS hicolor-icon-theme qt6-wayland)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS network-manager)

include(CPack)
