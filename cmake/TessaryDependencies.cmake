# What comes from Debian's packages; scripts/setup.sh installs them.

if(TESSARY_TESTS)
  # From source, so that every preset tests with the flags it builds with.
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  target_compile_options(gtest PRIVATE -Wno-restrict)  # a false alarm of GCC 12
  if(NOT TARGET GTest::gmock_main)
    add_library(GTest::gmock_main ALIAS gmock_main)
  endif()
endif()
