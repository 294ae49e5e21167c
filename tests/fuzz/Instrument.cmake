# Compiles everything that follows for libFuzzer: with feedback on coverage, the sanitizers and the assertions of the
# standard library. Included before the libraries, which have to be watched as well as the targets.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "ORV_BUILD_FUZZ needs clang, which brings libFuzzer: configure with "
                      "-DCMAKE_CXX_COMPILER=clang++, or use scripts/fuzz")
endif()

# Conversions of doubles to integers out of range are undefined, but not among the checks of `undefined`.
set(ORV_FUZZ_SANITIZERS address,undefined,float-cast-overflow)
add_compile_options(-fsanitize=fuzzer-no-link,${ORV_FUZZ_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_compile_definitions(_GLIBCXX_ASSERTIONS)
