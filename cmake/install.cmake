# What an installed Ostrum consists of, in three components: library; tools, with their pages and
# completions; dev, which is everything else.
include(CMakePackageConfigHelpers)

install(TARGETS ostrum EXPORT ostrum-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  COMPONENT library NAMELINK_COMPONENT dev)
install(TARGETS ${OSTRUM_TOOLS} EXPORT ostrum-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES include/ostrum.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/ostrum DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

configure_file(cmake/ostrum.pc.in ostrum.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ostrum.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ostrum)
install(EXPORT ostrum-targets NAMESPACE ostrum:: DESTINATION ${config_dir})
configure_package_config_file(cmake/ostrum-config.cmake.in ostrum-config.cmake
  INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(ostrum-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ostrum-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/ostrum-config-version.cmake cmake/ostrum-modules.cmake DESTINATION ${config_dir})

# Manual pages, and what shells know of the tools.
foreach(section 1 3 5)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.${section})
  set(component tools)
  if(section EQUAL 3)
    set(component dev)
  endif()
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endforeach()
foreach(tool toll pkob ostrum)
  install(FILES tools/completion/${tool}.bash RENAME ${tool}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  install(FILES tools/completion/_${tool} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    COMPONENT tools)
endforeach()
