# What "cmake --install" puts where, and the Debian packages that CPack makes of it.
#
# Programs and libraries stand in a folder of their own, side by side as in the build folder, so
# that they find each other wherever the prefix is; bin/ has links to the programs. Components, each
# a package: plugin, host, service.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(home lib/sonolet)

# As Debian's packages have manuals and changes: compressed, the same bytes at each build.
find_program(GZIP gzip REQUIRED)
function(sonolet_install_compressed source folder name component)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/compressed/${component}/${name}.gz)
    get_filename_component(where ${file} DIRECTORY)
    file(MAKE_DIRECTORY ${where})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    execute_process(COMMAND ${GZIP} -9nc ${source}
        OUTPUT_FILE ${file} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${file} DESTINATION ${folder} COMPONENT ${component})
endfunction()

function(sonolet_install_program target component)
    if(NOT TARGET ${target})
        return()
    endif()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
    install(TARGETS ${target} RUNTIME DESTINATION ${home}/bin COMPONENT ${component})
    set(link ${CMAKE_CURRENT_BINARY_DIR}/links/${target})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/links)
    file(CREATE_LINK ../${home}/bin/${target} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    sonolet_install_compressed(${CMAKE_CURRENT_SOURCE_DIR}/docs/man/${target}.1
        ${CMAKE_INSTALL_MANDIR}/man1 ${target}.1 ${component})
endfunction()

function(sonolet_install_library target component folder rpath)
    if(TARGET ${target})
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "${rpath}")
        install(TARGETS ${target} LIBRARY DESTINATION ${home}/${folder} COMPONENT ${component}
            NAMELINK_SKIP)
    endif()
endfunction()

sonolet_install_library(Sonolet plugin lib "$ORIGIN")
sonolet_install_library(Sonolet-layer plugin lib "$ORIGIN")
install(FILES pages/spotify.d.ts DESTINATION ${CMAKE_INSTALL_DATADIR}/sonolet COMPONENT plugin)
install(FILES docs/script-interface.md docs/integration.md docs/watching.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT plugin)
foreach(kind IN ITEMS pkgconfig/sonolet.pc cmake/Sonolet/SonoletConfig.cmake)
    get_filename_component(file ${kind} NAME)
    get_filename_component(folder ${kind} DIRECTORY)
    # Both are the same on every machine: they say where they are themselves.
    configure_file(cmake/${file}.in ${CMAKE_CURRENT_BINARY_DIR}/${file} @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
        COMPONENT plugin)
endforeach()
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/SonoletConfigVersion.cmake
    COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/SonoletConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_DATADIR}/cmake/Sonolet COMPONENT plugin)

sonolet_install_library(kellog host lib "$ORIGIN")
sonolet_install_library(sonolet_web host lib/browser "$ORIGIN/..")
sonolet_install_program(sonolet-host host)
sonolet_install_program(sonolet-browser host)
sonolet_install_program(sonolet-trace host)
sonolet_install_program(sonolet-replay host)
if(SONOLET_BUILD_HOST)
    install(DIRECTORY pages DESTINATION ${CMAKE_INSTALL_DATADIR}/sonolet COMPONENT host
        PATTERN "tsconfig.json" EXCLUDE
        PATTERN "spotify.d.ts" EXCLUDE)
    if(SONOLET_BUILD_BROWSER)
        install(FILES host/browser/sonolet-player.desktop
            DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT host)
        install(FILES host/browser/sonolet-player.svg
            DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT host)
    endif()
endif()

sonolet_install_library(sonolet_wpe wpe lib/wpe "$ORIGIN/..")
sonolet_install_program(sonolet-cog wpe)

sonolet_install_library(spotify12 service lib "$ORIGIN")
foreach(tool IN ITEMS sonolet-demo sonolet-fault sonolet-index sonolet-playlist sonolet-user)
    sonolet_install_program(${tool} service)
endforeach()

# Who answers for the packages: whoever gives them to others puts an address of their own.
set(SONOLET_MAINTAINER "Sonolet maintainers <maintainers@sonolet.invalid>" CACHE STRING
    "name and address of the packages' maintainer")
configure_file(cmake/changelog.in ${CMAKE_CURRENT_BINARY_DIR}/changelog @ONLY)

# The licence and the changes, where Debian's packages have them.
foreach(part IN ITEMS "plugin sonolet-plugin" "host sonolet-host" "wpe sonolet-wpe"
        "service libspotify12-local")
    separate_arguments(part)
    list(GET part 0 component)
    list(GET part 1 package)
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component}
        RENAME copyright)
    set(doc ${CMAKE_INSTALL_DATADIR}/doc/${package})
    sonolet_install_compressed(${CMAKE_CURRENT_BINARY_DIR}/changelog ${doc} changelog ${component})
    sonolet_install_compressed(${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md ${doc} CHANGELOG.md
        ${component})
endforeach()

# ---- Packages ------------------------------------------------------------------------------------

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sonolet)
set(CPACK_PACKAGE_CONTACT "${SONOLET_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL plugin)
if(SONOLET_BUILD_HOST)
    list(APPEND CPACK_COMPONENTS_ALL host)
endif()
if(SONOLET_BUILD_WPE)
    list(APPEND CPACK_COMPONENTS_ALL wpe)
endif()
if(SONOLET_BUILD_SERVICE)
    list(APPEND CPACK_COMPONENTS_ALL service)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} ${CMAKE_BINARY_DIR}/Src/import)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME sonolet-plugin)
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION "music service plug-in for the browsers of media devices
Gives page script one global, Spotify: session, catalogue, playlists, search
and playback over the service's client library. With the declarations of the
script interface for TypeScript.")
set(CPACK_DEBIAN_HOST_PACKAGE_NAME sonolet-host)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS
    "sonolet-plugin, gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
# The real library may stand in for it.
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS
    "libspotify12-local, fonts-inter, fonts-noto-core, fonts-noto-cjk | fonts-droid-fallback")
set(CPACK_COMPONENT_HOST_DESCRIPTION "development host for pages that use the Sonolet plug-in
Runs page scripts and shows web pages with the plug-in on a desktop machine,
without the device. With a player, a conformance page and examples.")
set(CPACK_DEBIAN_WPE_PACKAGE_NAME sonolet-wpe)
set(CPACK_DEBIAN_WPE_PACKAGE_DEPENDS "sonolet-host, sonolet-plugin, cog")
set(CPACK_DEBIAN_WPE_PACKAGE_RECOMMENDS libspotify12-local)
set(CPACK_COMPONENT_WPE_DESCRIPTION "Sonolet plug-in for browsers over WPE WebKit
An extension that WPE's web processes load, and sonolet-cog, which starts Cog
with it: pages see the plug-in as on a device.")
set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME libspotify12-local)
set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
set(CPACK_DEBIAN_SERVICE_PACKAGE_RECOMMENDS "gstreamer1.0-libav, glib-networking")
set(CPACK_COMPONENT_SERVICE_DESCRIPTION "local music service over a folder of music
The music service's client library (API 12) for the Sonolet plug-in, over the
user's own files, and the programs for its accounts and playlists.")
include(CPack)
