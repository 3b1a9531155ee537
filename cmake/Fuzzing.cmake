# What the fuzzing programs ask of everything that they are made of.
foreach(language C CXX)
  if(NOT CMAKE_${language}_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TAVRENIX_FUZZ needs clang, whose libFuzzer it uses, and the ${language} compiler is "
      "${CMAKE_${language}_COMPILER_ID}: use ./run fuzz, or give "
      "-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ in a new build folder.")
  endif()
endforeach()

set(TAVRENIX_SANITIZE address,undefined)
add_compile_options(-fsanitize=fuzzer-no-link)
# The library's own checks of indexes and of what is empty.
add_compile_definitions(_GLIBCXX_ASSERTIONS)
