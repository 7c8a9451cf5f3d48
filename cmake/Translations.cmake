# The catalogues of the native texts: po/<language>.po compiled into <build>/locale, where the program
# run from the build tree finds them, and installed under share/locale.
find_program(MSGFMT_PROGRAM msgfmt REQUIRED)
file(GLOB TUNELARK_PO_FILES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/po/*.po)
set(catalogues "")
foreach(po IN LISTS TUNELARK_PO_FILES)
  get_filename_component(language ${po} NAME_WE)
  set(mo ${CMAKE_BINARY_DIR}/locale/${language}/LC_MESSAGES/tunelark.mo)
  add_custom_command(OUTPUT ${mo}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/locale/${language}/LC_MESSAGES
    COMMAND ${MSGFMT_PROGRAM} --check --output-file=${mo} ${po}
    DEPENDS ${po} VERBATIM)
  install(FILES ${mo} DESTINATION share/locale/${language}/LC_MESSAGES)
  list(APPEND catalogues ${mo})
endforeach()
add_custom_target(tunelark_catalogues ALL DEPENDS ${catalogues})

# The manual pages.
file(GLOB TUNELARK_MAN_PAGES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/man/*.1)
install(FILES ${TUNELARK_MAN_PAGES} DESTINATION share/man/man1)
