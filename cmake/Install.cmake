# What `cmake --install` puts where.
include(CMakePackageConfigHelpers)
include(cmake/PublicNames.cmake)

set(TAVRENIX_BASH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  CACHE STRING "Where bash looks for completions")
set(TAVRENIX_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
  CACHE STRING "Where zsh looks for completions")

# Programs. The command is the superuser's; a simulation is anybody's.
install(TARGETS tavrenix DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(TARGETS tavrenix-lab tavrenix-lab-watch tavrenix-lab-generate)

# The library, and what programs that use it are built with.
file(GLOB c_headers CONFIGURE_DEPENDS include/tavrenix/*.h)
tavrenix_limit_names(tavrenix_shared ${c_headers})
set_target_properties(tavrenix_shared PROPERTIES EXPORT_NAME tavrenix)
install(TARGETS tavrenix_shared EXPORT tavrenix INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tavrenix DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tavrenix)
install(EXPORT tavrenix NAMESPACE tavrenix:: FILE tavrenix-config.cmake DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavrenix-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavrenix-config-version.cmake DESTINATION ${package_folder})

# The prefix of tavrenix.pc is told from where the file lies, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/tavrenix.pc.in tavrenix.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavrenix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# For people and their shells.
install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 FILES_MATCHING PATTERN *.8)
install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 FILES_MATCHING PATTERN *.3)
# One file for both shells and both programs, found by its name.
foreach(program tavrenix tavrenix-lab)
  install(FILES completions/tavrenix DESTINATION ${TAVRENIX_BASH_COMPLETIONS} RENAME ${program})
  install(FILES completions/tavrenix DESTINATION ${TAVRENIX_ZSH_COMPLETIONS} RENAME _${program})
endforeach()
install(DIRECTORY samples DESTINATION ${CMAKE_INSTALL_DATADIR}/tavrenix)
install(FILES README.md SECURITY.md TYPE DOC)
install(DIRECTORY docs/ TYPE DOC FILES_MATCHING PATTERN *.md PATTERN man EXCLUDE)
install(DIRECTORY examples TYPE DOC USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN *.c PATTERN *.py)
