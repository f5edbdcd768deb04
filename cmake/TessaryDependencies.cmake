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

# tessary_headers(NAME PATH...): a header-only library of /usr/include, by itself: the cross build
# must never see the rest of that folder.
function(tessary_headers name)
  set(prefix ${CMAKE_BINARY_DIR}/headers/${name})
  foreach(path IN LISTS ARGN)
    if(NOT EXISTS /usr/include/${path})
      message(FATAL_ERROR "/usr/include/${path} is missing: run scripts/setup.sh")
    endif()
    cmake_path(GET path PARENT_PATH folder)
    file(COPY /usr/include/${path} DESTINATION ${prefix}/${folder})
  endforeach()
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${prefix})
endfunction()

tessary_headers(tessary_spdlog spdlog fmt)
target_compile_definitions(tessary_spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
