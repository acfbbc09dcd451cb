# What `cmake --install` installs below the prefix, in the places of the freedesktop.org standards:
#
#   lib/tavo-join/Join.app        the bundle
#   bin/tavo-join                 a link to its program
#   share/applications, share/icons/hicolor, share/metainfo, share/man
set(JOIN_HOMEPAGE "https://www.example.com/join" CACHE STRING "Web page about Join")
set(join_release_date 2026-11-23)

set(join_installed_bundle lib/tavo-join/Join.app)
set(join_built_bundle ${CMAKE_BINARY_DIR}/Join.app)
set(join_configured ${CMAKE_BINARY_DIR}/install)
set(join_icons ${PROJECT_SOURCE_DIR}/resources/icons)

configure_file(${join_icons}/com.tavo.join.svg ${join_built_bundle}/Contents/Resources/Join.svg COPYONLY)

# Installs what the targets in a folder and below build into the bundle, and adds them to join_bundle.
function(join_install_bundle_targets folder)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        set(kind LIBRARY)
        if(type STREQUAL "EXECUTABLE")
            set(kind RUNTIME)
        endif()
        get_target_property(place ${target} ${kind}_OUTPUT_DIRECTORY)
        cmake_path(IS_PREFIX join_built_bundle "${place}" is_in_bundle)
        if(is_in_bundle)
            cmake_path(RELATIVE_PATH place BASE_DIRECTORY ${join_built_bundle})
            install(TARGETS ${target} ${kind} DESTINATION ${join_installed_bundle}/${place})
            add_dependencies(join_bundle ${target})
        endif()
    endforeach()
    get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(subfolder IN LISTS subfolders)
        join_install_bundle_targets(${subfolder})
    endforeach()
endfunction()

add_custom_target(join_bundle)
join_install_bundle_targets(${PROJECT_SOURCE_DIR}/src)
install(FILES ${join_built_bundle}/Contents/Info.plist DESTINATION ${join_installed_bundle}/Contents)
install(FILES ${join_built_bundle}/Contents/Resources/Join.svg DESTINATION ${join_installed_bundle}/Contents/Resources)

file(MAKE_DIRECTORY ${join_configured})
file(CREATE_LINK ../${join_installed_bundle}/Contents/MacOS/Join ${join_configured}/tavo-join SYMBOLIC)
install(FILES ${join_configured}/tavo-join DESTINATION bin)

# The desktop entry names the program by its full path, which depends on the prefix.
install(CODE "
    set(JOIN_ENTRY_TRY_EXEC \${CMAKE_INSTALL_PREFIX}/${join_installed_bundle}/Contents/MacOS/Join)
    set(template [==[${PROJECT_SOURCE_DIR}/resources/desktop/com.tavo.join.desktop.in]==])
    set(entry [==[${join_configured}/com.tavo.join.desktop]==])")
install(CODE [[
    if(JOIN_ENTRY_TRY_EXEC MATCHES "[\"`$\\%=\n]")
        message(FATAL_ERROR "A desktop entry cannot name ${JOIN_ENTRY_TRY_EXEC}: install with another prefix.")
    endif()
    set(JOIN_ENTRY_EXEC ${JOIN_ENTRY_TRY_EXEC})
    if(JOIN_ENTRY_EXEC MATCHES "[^-+._/A-Za-z0-9]")
        set(JOIN_ENTRY_EXEC "\"${JOIN_ENTRY_EXEC}\"")
    endif()
    set(JOIN_ENTRY_ICON com.tavo.join)
    configure_file("${template}" "${entry}" @ONLY)
    file(INSTALL "${entry}" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/applications")]])

foreach(size IN ITEMS 16 24 32 48 64 128 256 512)
    install(FILES ${join_icons}/com.tavo.join-${size}.png RENAME com.tavo.join.png
        DESTINATION share/icons/hicolor/${size}x${size}/apps)
endforeach()
install(FILES ${join_icons}/com.tavo.join.svg DESTINATION share/icons/hicolor/scalable/apps)

configure_file(resources/desktop/com.tavo.join.metainfo.xml.in ${join_configured}/com.tavo.join.metainfo.xml @ONLY)
install(FILES ${join_configured}/com.tavo.join.metainfo.xml DESTINATION share/metainfo)

configure_file(resources/Join.1.in ${join_configured}/tavo-join.1 @ONLY)
install(FILES ${join_configured}/tavo-join.1 DESTINATION share/man/man1)
