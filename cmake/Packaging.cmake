# The desktop's files (application entry, icon, AppStream data) and the Debian package made by cpack.

# AppStream wants a web address for the screenshot; set it to where resources/desktop/main-window.png,
# which is installed beside the program's page, is published. Its size goes into the data as it is.
set(TUNELARK_SCREENSHOT_URL "https://example.org/tunelark/screenshots/main-window.png"
    CACHE STRING "Web address of the main window's screenshot named in the AppStream data")
set(TUNELARK_SCREENSHOT_WIDTH 1200)
set(TUNELARK_SCREENSHOT_HEIGHT 600)
configure_file(${CMAKE_SOURCE_DIR}/resources/desktop/org.tunelark.Tunelark.metainfo.xml.in
               ${CMAKE_BINARY_DIR}/desktop/org.tunelark.Tunelark.metainfo.xml @ONLY)
install(FILES resources/desktop/org.tunelark.Tunelark.desktop DESTINATION share/applications)
install(FILES resources/desktop/org.tunelark.Tunelark.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES ${CMAKE_BINARY_DIR}/desktop/org.tunelark.Tunelark.metainfo.xml DESTINATION share/metainfo)
install(FILES resources/desktop/main-window.png DESTINATION share/tunelark/screenshots)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tunelark)
set(CPACK_PACKAGE_VENDOR "The Tunelark developers")
set(CPACK_PACKAGE_CONTACT "The Tunelark developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "music player for MP3 files with synchronised lyrics")
set(CPACK_PACKAGE_DESCRIPTION "Tunelark plays a list of MP3 files with their LRC lyric files, in one of three play modes
and at eight speeds that keep the pitch, and shows the current lyric line in its main window and in a
small floating window that stays above other windows. Lyric files may be in any of 46 text encodings.
It answers media keys and the desktop's sound menu.")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# The libraries come from dpkg-shlibdeps; GStreamer's elements (playbin, scaletempo, the MP3 decoder,
# the PulseAudio sink) are plugins it cannot see.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good, gstreamer1.0-pulseaudio")
# On a Wayland desktop the program runs through XWayland (the lyrics window needs X11's keep-above).
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xwayland")
include(CPack)
