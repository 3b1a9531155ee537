# What `cmake --install` puts where.
include(CMakePackageConfigHelpers)
include(cmake/PublicNames.cmake)

set(TAVRENIX_BASH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  CACHE STRING "Where bash looks for completions")
set(TAVRENIX_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
  CACHE STRING "Where zsh looks for completions")

# Programs. The command is for the superuser, a simulation is for any user.
install(TARGETS tavrenix tavrenix-monitor tavrenix-maintain DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(TARGETS tavrenix-lab tavrenix-lab-watch tavrenix-lab-monitor tavrenix-lab-maintain tavrenix-lab-generate)

# The library, and what programs that use it are built with.
file(GLOB c_headers CONFIGURE_DEPENDS include/tavrenix/*.h)
tavrenix_limit_names(tavrenix_shared ${c_headers})
set_target_properties(tavrenix_shared PROPERTIES EXPORT_NAME tavrenix)
tavrenix_limit_names(tavrenix_lab_library ${c_headers})
install(TARGETS tavrenix_lab_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tavrenix-lab NAMELINK_SKIP)
install(TARGETS tavrenix_shared EXPORT tavrenix INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tavrenix DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tavrenix)
install(EXPORT tavrenix NAMESPACE tavrenix:: FILE tavrenix-config.cmake DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavrenix-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavrenix-config-version.cmake DESTINATION ${package_folder})

# tavrenix.pc names its prefix relative to itself, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/tavrenix.pc.in tavrenix.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavrenix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# For people and their shells.
install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 FILES_MATCHING PATTERN *.8)
install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 FILES_MATCHING PATTERN *.3)
# One file for both shells and for a program with its simulation, found by the program's name.
function(tavrenix_install_completions file)
  foreach(program IN LISTS ARGN)
    install(FILES completions/${file} DESTINATION ${TAVRENIX_BASH_COMPLETIONS} RENAME ${program})
    install(FILES completions/${file} DESTINATION ${TAVRENIX_ZSH_COMPLETIONS} RENAME _${program})
  endforeach()
endfunction()
tavrenix_install_completions(tavrenix tavrenix tavrenix-lab)
tavrenix_install_completions(tavrenix-monitor tavrenix-monitor tavrenix-lab-monitor)
tavrenix_install_completions(tavrenix-maintain tavrenix-maintain tavrenix-lab-maintain)
install(FILES monitor/tavrenix-monitor.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/tavrenix)
# For many machines: services that are off until they are enabled, and what their Prometheus and Grafana read.
install(DIRECTORY fleet/systemd/ DESTINATION lib/systemd/system)
install(DIRECTORY fleet/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tavrenix/fleet FILES_MATCHING PATTERN *.yml PATTERN *.json
        PATTERN systemd EXCLUDE)
install(DIRECTORY samples DESTINATION ${CMAKE_INSTALL_DATADIR}/tavrenix)
install(FILES README.md SECURITY.md TYPE DOC)
install(DIRECTORY docs/ TYPE DOC FILES_MATCHING PATTERN *.md PATTERN man EXCLUDE)
install(DIRECTORY examples TYPE DOC USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN *.c PATTERN *.py)
