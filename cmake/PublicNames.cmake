# The symbol map of the shared library, made from what the public headers mark with OB_EXPORT, so that nothing else
# leaves it. `./run check exports` compares the outcome with what the compiler sees in the headers.

# tavrenix_public_names(RESULT header...): the names as a list.
function(tavrenix_public_names result)
  foreach(header IN LISTS ARGN)
    file(READ ${header} text)
    string(REPLACE ";" "@" text "${text}")
    string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
    string(REGEX REPLACE "\n *#[^\n]*" "" text "${text}")
    string(REGEX REPLACE "[ \n]+" " " text "${text}")
    string(REGEX MATCHALL "OB_EXPORT [^@(]*[(@]" declarations "${text}")
    foreach(declaration IN LISTS declarations)
      string(REGEX REPLACE ".*[ *]([A-Za-z0-9_]+) ?[(@]$" "\\1" name "${declaration}")
      list(APPEND names ${name})
    endforeach()
  endforeach()
  list(SORT names)
  set(${result} ${names} PARENT_SCOPE)
endfunction()

# tavrenix_limit_names(TARGET header...): the shared library shows the headers' names and no other.
function(tavrenix_limit_names target)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARGN})
  tavrenix_public_names(names ${ARGN})
  list(TRANSFORM names REPLACE "(.+)" "    \\1@")
  string(JOIN "\n" names ${names})
  string(REPLACE "@" ";" names "${names}")
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "TAVRENIX_0 {\n  global:\n@names@\n  local:\n    *;\n};\n" @ONLY)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,--no-undefined-version)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()
