# Warnings are errors, for both compilers, in every target.
add_compile_options(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
                    -Wformat=2 -Wundef)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
add_compile_options($<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes>)
# What runtime/mutex.hpp's annotations say is checked by clang alone.
add_compile_options($<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)

# g++ 12 takes std::string's own copies for overlapping ones when it optimises (its bug 105651).
add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)

if(TAVRENIX_SANITIZE)
  add_compile_options(-fsanitize=${TAVRENIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TAVRENIX_SANITIZE})
endif()

if(TAVRENIX_HARDEN)
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()

# A folder of the tree as one object library, includes written from the repository root.
# tavrenix_folder(NAME SOURCES file... [USES target...])
function(tavrenix_folder name)
  cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} OBJECT ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${name} PUBLIC Threads::Threads ${arg_USES})
endfunction()
