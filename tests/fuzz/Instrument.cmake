# Compiles everything that follows with feedback on coverage for libFuzzer. Included before the libraries, which have to be
# watched as well as the targets. Programs that are no fuzz targets run as without it.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "ORV_BUILD_FUZZ needs clang, which brings libFuzzer: use the preset asan, or scripts/fuzz")
endif()

add_compile_options(-fsanitize=fuzzer-no-link)
